#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>

#include "dispatch_client.hpp"

// Connections and recordsets of another maker: this client has its own copy of the data-access
// objects, of which the module under test sees nothing but dispatch interfaces.
namespace kap::test {
namespace {

class ForeignObjects : public testing::Test {
protected:
    ForeignObjects() {
        inner_->Open(u"Provider=KapLocal;Data Source=:memory:");
        inner_->Execute(
            u"CREATE TABLE Clienti (Codice int PRIMARY KEY, Nome varchar(40), AggID timestamp) "
            u"INSERT INTO Clienti (Codice, Nome) VALUES (12, 'Ferramenta Rossi')");
        *connection_.out() = platform::automation::dispatchOf(inner_);
        functions_ = module_.create(kGeneralFunctions);
    }
    void TearDown() override {
        functions_ = {};
        EXPECT_TRUE(module_.isIdle()) << "objects are left";
    }

    [[nodiscard]] String nameOfCustomer() const {
        return inner_->Execute(u"SELECT Nome FROM Clienti")
            ->Fields()
            ->Item(0)
            ->Value()
            .as<String>();
    }

    Apartment apartment_;
    Module module_;
    Ref<ado::Connection> inner_ = make<ado::Connection>();
    Pointer<IDispatch> connection_;
    Pointer<IDispatch> functions_;
};

constexpr const wchar_t* kQuery = L"SELECT * FROM Clienti WHERE Codice = 12";

TEST_F(ForeignObjects, ARecordIsReadAndSaved) {
    Value connection(connection_);
    Value record;
    EXPECT_TRUE(
        call(functions_, L"DB_Read", Value::to(connection), kQuery, Value::to(record)).isTrue());
    const auto form = module_.create(kPropertyString);
    call(form, L"Scrivi", L"", Value::to(record));
    call(form, L"Scrivi", L"Nome", L"Rossi & Figli");
    EXPECT_EQ(L"Rossi & Figli", call(form, L"Leggi", L"Nome").text());
    EXPECT_TRUE(call(functions_, L"DB_Update", Value::to(connection), kQuery, call(form, L"Leggi"))
                    .isTrue());
    EXPECT_EQ(u"Rossi & Figli", nameOfCustomer().view());
    // What was read before is of an older version now.
    EXPECT_FALSE(
        call(functions_, L"DB_Update", Value::to(connection), kQuery, Value::to(record)).isTrue());
    EXPECT_EQ(connection_.get(), connection.object().get()) << "the variable is the client's";
}

TEST_F(ForeignObjects, RecordsetsAreOpenedAndFilled) {
    Value connection(connection_);
    const auto rows = call(functions_, L"OpenRecordset", kQuery, Value::to(connection)).object();
    ASSERT_TRUE(rows);
    EXPECT_EQ(1, call(rows, L"RecordCount").number());
    const auto field = call(call(rows, L"Fields").object(), L"Item", L"Nome").object();
    EXPECT_EQ(L"Ferramenta Rossi", call(field, L"Value").text());
}

TEST_F(ForeignObjects, AConnectionIsNotOpenedAgain) {
    Value connection(connection_);
    call(functions_, L"ControllaConnessione", Value::to(connection));
    EXPECT_EQ(connection_.get(), connection.object().get());
}

TEST_F(ForeignObjects, AConnectionIsKeptByTheConfiguration) {
    const auto configuration = module_.create(kConfiguration);
    Value none;
    EXPECT_EQ(S_OK, invoke(configuration.get(), idOf(configuration.get(), L"ActiveConnection"),
                           DISPATCH_PROPERTYPUTREF, values(connection_), none));
    EXPECT_EQ(VT_DISPATCH, call(configuration, L"ActiveConnection").type());
}

TEST_F(ForeignObjects, RecordsetsArePositioned) {
    inner_->Execute(u"INSERT INTO Clienti (Codice, Nome) VALUES (13, 'Bianchi')");
    const auto inner = make<ado::Recordset>();
    inner->setCursorLocation(ado::CursorLocationEnum::adUseClient);
    inner->Open(u"SELECT * FROM Clienti ORDER BY Codice", Variant(inner_));
    Pointer<IDispatch> rows;
    *rows.out() = platform::automation::dispatchOf(inner);
    Value variable(rows);
    call(functions_, L"kapGoTo", Value::to(variable), L"last");
    EXPECT_EQ(13, inner->Fields()->Item(u"Codice")->Value().as<std::int32_t>());
    call(functions_, L"kapGoTo", Value::to(variable), 1);
    EXPECT_EQ(12, inner->Fields()->Item(u"Codice")->Value().as<std::int32_t>());
}

TEST_F(ForeignObjects, TheirErrorsReachTheClient) {
    Value connection(connection_);
    const Failure failure =
        failureOf(functions_, L"OpenRecordset", L"SELECT * FROM Nessuna", Value::to(connection));
    EXPECT_EQ(-2147217865, failure.code);
    EXPECT_EQ(L"Invalid object name 'Nessuna'.", failure.description);
}

}  // namespace
}  // namespace kap::test
