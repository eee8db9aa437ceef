// Another maker's connection: objects that the library does not know, in front of its own.
#include <gtest/gtest.h>

#include <algorithm>

#include <kaputil/ado/command.hpp>
#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/array.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "drivers/driver_registry.hpp"
#include "drivers/late_bound/late_bound_driver.hpp"
#include "drivers/late_bound/query_table.hpp"
#include "drivers/late_bound/statement_text.hpp"
#include "support/foreign_connection.hpp"
#include "support/late_bound.hpp"

namespace kap::ado {
namespace {

// Shows an object of the library as one that has nothing but members.
class Stranger final : public Object {
public:
    explicit Stranger(Ref<Object> inner) : inner_(std::move(inner)) {}

    [[nodiscard]] String className() const override { return u"Stranger"; }
    [[nodiscard]] std::optional<std::int32_t> memberId(std::u16string_view name) const override {
        return inner_->memberId(name);
    }
    using Object::invoke;
    Variant invoke(std::int32_t member, InvokeKind kind, const Arguments& arguments) override {
        Variant result = inner_->invoke(member, kind, arguments);
        if (result.isObject() && result.as<Ref<Object>>()) {
            return make<Stranger>(result.as<Ref<Object>>());
        }
        return result;
    }

private:
    Ref<Object> inner_;
};

class LateBound : public testing::Test {
protected:
    LateBound() {
        inner_->Open(u"Provider=KapLocal;Data Source=:memory:");
        inner_->Execute(
            u"CREATE TABLE Clienti (Codice int IDENTITY PRIMARY KEY, Nome varchar(40), Fido money, "
            u"Nato datetime, Peso float, Attivo bit, Foto varbinary(10), AggID timestamp)"
            u"INSERT INTO Clienti (Nome, Fido, Nato, Peso, Attivo, Foto) "
            u"VALUES ('L''Aquila', 12.5, '2003-12-25 18:05:00', 1.25, 1, 0x01FF)"
            u"INSERT INTO Clienti (Nome) VALUES ('Bari')");
    }

    [[nodiscard]] Ref<Recordset> open(const String& query) const {
        auto rows = make<Recordset>();
        rows->setCursorLocation(CursorLocationEnum::adUseClient);
        rows->Open(query, foreign_, CursorTypeEnum::adOpenStatic, LockTypeEnum::adLockOptimistic);
        return rows;
    }

    [[nodiscard]] Variant one(const String& query) const {
        return inner_->Execute(query)->Fields()->Item(0)->Value();
    }

    Ref<Connection> inner_ = make<Connection>();
    Variant foreign_ = Ref<Object>(make<Stranger>(inner_));
};

TEST_F(LateBound, IsRecognisedByItsMembers) {
    EXPECT_TRUE(isConnection(foreign_));
    EXPECT_FALSE(isConnection(Ref<Object>(make<Stranger>(make<Recordset>()))));
    EXPECT_FALSE(isConnection(Ref<Object>()));
    EXPECT_FALSE(isConnection(u"Provider=KapLocal"));
}

TEST_F(LateBound, ValuesOfEveryTypeAreRead) {
    const auto rows = open(u"SELECT * FROM Clienti ORDER BY Codice");
    ASSERT_EQ(2, rows->RecordCount());
    const auto value = [&](const char16_t* name) { return rows->Fields()->Item(name)->Value(); };
    EXPECT_EQ(1, value(u"Codice").as<std::int32_t>());
    EXPECT_EQ(u"L'Aquila", value(u"Nome").as<String>().view());
    EXPECT_EQ(125000, value(u"Fido").as<Currency>().scaled);
    EXPECT_EQ(1.25, value(u"Peso").as<double>());
    EXPECT_TRUE(value(u"Attivo").as<bool>());
    EXPECT_EQ((std::vector<std::uint8_t>{1, 255}), value(u"Foto").as<Array>().bytes());
    rows->MoveNext();
    EXPECT_TRUE(value(u"Fido").isNull());
}

TEST_F(LateBound, ARowIsUpdatedByItsKeyAndReadAgain) {
    const auto rows = open(u"SELECT * FROM Clienti WHERE Codice = 1");
    const Variant before = rows->Fields()->Item(u"AggID")->Value();
    rows->Fields()->Item(u"Nome")->setValue(u"Citt\u00e0 d'arte");
    rows->Fields()->Item(u"Fido")->setValue(Variant::null());
    rows->Update();
    EXPECT_EQ(u"Citt\u00e0 d'arte",
              one(u"SELECT Nome FROM Clienti WHERE Codice = 1").as<String>().view());
    EXPECT_TRUE(one(u"SELECT Fido FROM Clienti WHERE Codice = 1").isNull());
    EXPECT_NE(before.as<Array>().bytes(),
              rows->Fields()->Item(u"AggID")->Value().as<Array>().bytes());
}

TEST_F(LateBound, ARowThatSomebodyElseChangedIsRefused) {
    const auto rows = open(u"SELECT * FROM Clienti WHERE Codice = 1");
    inner_->Execute(u"UPDATE Clienti SET Nome = 'Altro' WHERE Codice = 1");
    rows->Fields()->Item(u"Nome")->setValue(u"Mio");
    try {
        rows->Update();
        FAIL();
    } catch (const AutomationError& error) {
        EXPECT_EQ(errors::kConcurrency, error.number());
    }
    EXPECT_EQ(u"Altro", one(u"SELECT Nome FROM Clienti WHERE Codice = 1").as<String>().view());
}

TEST_F(LateBound, RowsAreInsertedAndDeleted) {
    const auto rows = open(u"SELECT Nome, Peso, Nato FROM Clienti");
    rows->AddNew();
    rows->Fields()->Item(u"Nome")->setValue(u"Rossi");
    rows->Fields()->Item(u"Nato")->setValue(Date{2.5});
    rows->Update();
    EXPECT_EQ(2.5, one(u"SELECT Nato FROM Clienti WHERE Nome = 'Rossi'").as<Date>().days);

    const auto last = open(u"SELECT * FROM Clienti WHERE Nome = 'Rossi'");
    last->Delete();
    EXPECT_EQ(0, one(u"SELECT COUNT(*) FROM Clienti WHERE Nome = 'Rossi'").as<std::int32_t>());
}

TEST_F(LateBound, ColumnsWithOtherNamesAreWrittenUnderTheirOwn) {
    const auto rows = open(u"SELECT Codice, Nome AS Ragione, Peso * 2 AS Doppio FROM Clienti");
    rows->Fields()->Item(u"Ragione")->setValue(u"Verdi");
    rows->Update();
    EXPECT_EQ(u"Verdi", one(u"SELECT Nome FROM Clienti WHERE Codice = 1").as<String>().view());
}

TEST_F(LateBound, ErrorsKeepNumberAndText) {
    try {
        static_cast<void>(open(u"SELECT * FROM Nessuna"));
        FAIL();
    } catch (const AutomationError& error) {
        EXPECT_EQ(errors::kUnknownObject, error.number());
        EXPECT_EQ(u"Invalid object name 'Nessuna'.", error.description().view());
    }
}

TEST_F(LateBound, AClosedOneIsRefused) {
    inner_->Close();
    try {
        static_cast<void>(connectionOf(foreign_));
        FAIL();
    } catch (const AutomationError& error) {
        EXPECT_EQ(errors::kInvalidConnection, error.number());
    }
}

TEST_F(LateBound, ARecordsetGivesBackTheClientsOwnObject) {
    const auto rows = open(u"SELECT * FROM Clienti");
    EXPECT_EQ(foreign_.as<Ref<Object>>(), rows->ActiveConnection().as<Ref<Object>>());
}

TEST_F(LateBound, TransactionsAreTheClientsOwn) {
    const auto connection = connectionOf(foreign_);
    connection->BeginTrans();
    connection->Execute(u"UPDATE Clienti SET Nome = 'Provvisorio'");
    connection->RollbackTrans();
    EXPECT_EQ(u"L'Aquila", one(u"SELECT Nome FROM Clienti WHERE Codice = 1").as<String>().view());
}

TEST_F(LateBound, SeveralAnswersComeOneAfterTheOther) {
    const auto connection = connectionOf(foreign_);
    std::vector<Ref<Recordset>> answers;
    connection->executeAll(u"SELECT 1 AS A SELECT 2 AS B, 3 AS C", answers);
    ASSERT_EQ(2U, answers.size());
    EXPECT_EQ(2, answers[1]->Fields()->Count());
}

TEST_F(LateBound, EveryErrorAndMessageOfAFailedScriptIsTold) {
    const auto connection = connectionOf(foreign_);
    EXPECT_THROW(
        connection->Execute(u"PRINT 'prima' RAISERROR ('uno', 16, 1) RAISERROR ('due', 16, 1)"),
        AutomationError);
    const auto errors = connection->Errors();
    ASSERT_EQ(3, errors->Count());
    EXPECT_EQ(u"prima", errors->Item(0)->Description().view());
    EXPECT_EQ(0, errors->Item(0)->Number());
    EXPECT_EQ(u"uno", errors->Item(1)->Description().view());
    EXPECT_EQ(50000, errors->Item(1)->NativeError());
    EXPECT_EQ(u"due", errors->Item(2)->Description().view());
}

TEST_F(LateBound, ACommandGivesBackTheClientsOwnObject) {
    const auto command = make<Command>();
    command->setActiveConnection(foreign_);
    EXPECT_EQ(foreign_.as<Ref<Object>>(), command->ActiveConnection().as<Ref<Object>>());
    EXPECT_FALSE(make<Command>()->ActiveConnection().as<Ref<Object>>());
}

class ForeignTimeLimits : public testing::Test {
protected:
    ForeignTimeLimits() {
        inner_->Open(u"Provider=KapLocal;Data Source=:memory:");
        inner_->setCommandTimeout(9);
    }

    Ref<Connection> inner_ = make<Connection>();
    Ref<test::ForeignConnection> foreign_ = make<test::ForeignConnection>(inner_);
};

TEST_F(ForeignTimeLimits, OfACommandHoldForItsRunOnly) {
    const auto command = make<Command>();
    command->setActiveConnection(Variant(foreign_));
    command->setCommandText(u"SELECT 1");
    command->setCommandTimeout(4);
    static_cast<void>(command->Execute());
    command->setCommandText(u"SELECT * FROM Nessuna");
    EXPECT_THROW(static_cast<void>(command->Execute()), AutomationError);
    ASSERT_EQ(2U, foreign_->sent().size());
    EXPECT_EQ(4, foreign_->sent()[0].timeout);
    EXPECT_EQ(4, foreign_->sent()[1].timeout);
    EXPECT_EQ(9, inner_->CommandTimeout());
}

TEST_F(ForeignTimeLimits, OfTheConnectionHoldForRecordsets) {
    const auto rows = make<Recordset>();
    rows->Open(u"SELECT 1", Variant(foreign_));
    ASSERT_FALSE(foreign_->sent().empty());
    EXPECT_EQ(9, foreign_->sent()[0].timeout);
}

// Another maker's error: nothing but a sentence.
class PlainError final : public Object {
public:
    explicit PlainError(String text) : text_(std::move(text)) {}
    [[nodiscard]] String className() const override { return u"PlainError"; }
    [[nodiscard]] std::optional<std::int32_t> memberId(std::u16string_view name) const override {
        return name == u"Description" ? std::optional(1) : std::nullopt;
    }
    using Object::invoke;
    Variant invoke(std::int32_t /*member*/, InvokeKind /*kind*/,
                   const Arguments& /*arguments*/) override {
        return text_;
    }

private:
    String text_;
};

// A connection that refuses every script, and keeps its errors in any form.
class Refusing final : public Object {
public:
    explicit Refusing(std::optional<Variant> errors) : errors_(std::move(errors)) {}
    [[nodiscard]] String className() const override { return u"Refusing"; }
    [[nodiscard]] std::optional<std::int32_t> memberId(std::u16string_view name) const override {
        const std::u16string_view names[] = {u"Execute", u"BeginTrans", u"ConnectionString",
                                             u"State", u"Errors"};
        const auto found = std::ranges::find(names, name);
        if (found == std::end(names) || (name == u"Errors" && !errors_)) {
            return std::nullopt;
        }
        return static_cast<std::int32_t>(found - std::begin(names)) + 1;
    }
    using Object::invoke;
    Variant invoke(std::int32_t member, InvokeKind /*kind*/,
                   const Arguments& /*arguments*/) override {
        switch (member) {
            case 4:
                return std::int32_t{1};
            case 5:
                return *errors_;
            default:
                throw AutomationError(-2147467259, u"Rifiutato", u"Altri");
        }
    }

private:
    std::optional<Variant> errors_;
};

std::vector<std::u16string> toldBy(std::optional<Variant> errors) {
    const auto connection = Connection::through(make<Refusing>(std::move(errors)));
    try {
        connection->Execute(u"SELECT 1");
        ADD_FAILURE();
    } catch (const AutomationError& error) {
        EXPECT_EQ(-2147467259, error.number());
        EXPECT_EQ(u"Rifiutato", error.description().view());
        EXPECT_EQ(u"Altri", error.source().view());
    }
    std::vector<std::u16string> texts;
    for (std::int32_t i = 0; i < connection->Errors()->Count(); ++i) {
        texts.emplace_back(connection->Errors()->Item(i)->Description().view());
    }
    return texts;
}

TEST(ForeignErrors, AreReadFromAnyFormOfCollection) {
    EXPECT_EQ((std::vector<std::u16string>{u"uno", u"due"}),
              toldBy(Array::ofVariants(
                  {Ref<Object>(make<PlainError>(u"uno")), Ref<Object>(make<PlainError>(u"due"))})));
}

TEST(ForeignErrors, AreWhatWasRaisedWhereNoneCanBeRead) {
    const std::vector<std::u16string> raised = {u"Rifiutato"};
    EXPECT_EQ(raised, toldBy(std::nullopt));
    EXPECT_EQ(raised, toldBy(Variant()));
    EXPECT_EQ(raised, toldBy(Variant(u"testo")));
    EXPECT_EQ(raised, toldBy(Variant(Ref<Object>())));
    EXPECT_EQ(raised, toldBy(Variant(Ref<Object>(make<PlainError>(u"non raccolta")))));
}

// The closed recordset of a statement without rows; what follows it is an error.
class FailingBehind final : public Object {
public:
    explicit FailingBehind(std::int32_t number) : number_(number) {}
    [[nodiscard]] String className() const override { return u"FailingBehind"; }
    [[nodiscard]] std::optional<std::int32_t> memberId(std::u16string_view name) const override {
        return name == u"State" ? 1 : 2;
    }
    using Object::invoke;
    Variant invoke(std::int32_t member, InvokeKind /*kind*/,
                   const Arguments& /*arguments*/) override {
        if (member == 1) {
            return std::int32_t{0};
        }
        throw AutomationError(number_, u"Dopo", u"Altri");
    }

private:
    std::int32_t number_;
};

// Answers every script with such a recordset.
class AnsweringOnce final : public Object {
public:
    explicit AnsweringOnce(std::int32_t number) : number_(number) {}
    [[nodiscard]] String className() const override { return u"AnsweringOnce"; }
    [[nodiscard]] std::optional<std::int32_t> memberId(std::u16string_view name) const override {
        return name == u"CommandTimeout" || name == u"Errors" ? std::nullopt : std::optional(1);
    }
    using Object::invoke;
    Variant invoke(std::int32_t /*member*/, InvokeKind /*kind*/,
                   const Arguments& /*arguments*/) override {
        return Ref<Object>(make<FailingBehind>(number_));
    }

private:
    std::int32_t number_;
};

std::int32_t raisedBehind(std::int32_t number) {
    try {
        Connection::through(make<AnsweringOnce>(number))->Execute(u"DELETE A SELECT 1/0");
        return 0;
    } catch (const AutomationError& error) {
        return error.number();
    }
}

TEST(LaterAnswers, RaiseTheirFailure) {
    EXPECT_EQ(-2147217900, raisedBehind(-2147217900));
}

TEST(LaterAnswers, EndWhereTheMakerKnowsOfOneOnly) {
    EXPECT_EQ(0, raisedBehind(errors::kFeatureNotAvailable));
    EXPECT_EQ(0, raisedBehind(kap::errors::kMemberNotFound));
    EXPECT_EQ(0, raisedBehind(-2147467263));
}

// Keeps the string it is opened with, and how long opening may take.
class OpenedBy final : public Object {
public:
    OpenedBy(String& text, std::int32_t& timeout) : text_(text), timeout_(timeout) {}
    [[nodiscard]] String className() const override { return u"OpenedBy"; }
    [[nodiscard]] std::optional<std::int32_t> memberId(std::u16string_view name) const override {
        return name == u"Open" ? kOpen : kTimeout;
    }
    using Object::invoke;
    Variant invoke(std::int32_t member, InvokeKind /*kind*/, const Arguments& arguments) override {
        if (member == kOpen) {
            text_ = arguments.positional[0].as<String>();
        } else {
            timeout_ = arguments.positional[0].as<std::int32_t>();
        }
        return {};
    }

private:
    static constexpr std::int32_t kOpen = 1;
    static constexpr std::int32_t kTimeout = 2;

    String& text_;
    std::int32_t& timeout_;
};

TEST(LateBoundDriver, OpensStringsThatNoOtherDriverAnswersFor) {
    String text;
    std::int32_t timeout = 0;
    const late_bound::LateBoundDriver driver(
        [&] { return Ref<Object>(make<OpenedBy>(text, timeout)); });
    setDriverForOthers(&driver);
    const auto connection = make<Connection>();
    connection->setConnectionTimeout(7);
    connection->Open(u"Provider=Altro;Data Source=srv\\a;Password='x\"y'");
    setDriverForOthers(nullptr);
    EXPECT_EQ(u"Provider=\"Altro\";Data Source=\"srv\\a\";Password=\"x\"\"y\"", text.view());
    EXPECT_EQ(7, timeout);
}

TEST(QueryTable, IsTheOneThatAQueryReads) {
    const auto found =
        late_bound::tableOfQuery("SELECT TOP 1 Codice, Nome AS N, 1 + 1 FROM dbo.[Clienti] c");
    ASSERT_TRUE(found);
    EXPECT_EQ("Clienti", found->last);
    EXPECT_EQ((std::vector<std::string>{"Codice", "Nome", ""}), *found->columns);
    EXPECT_FALSE(late_bound::tableOfQuery("SELECT * FROM Clienti")->columns);
}

TEST(QueryTable, IsNoneWhereRowsAreNoTables) {
    for (const char* query :
         {"SELECT * FROM A JOIN B ON A.x = B.x", "SELECT COUNT(*) FROM A GROUP BY x",
          "SELECT DISTINCT x FROM A", "SELECT 1", "SELECT * FROM A UNION SELECT * FROM B",
          "UPDATE A SET x = 1", "this is no query"}) {
        EXPECT_FALSE(late_bound::tableOfQuery(query)) << query;
    }
}

TEST(StatementText, LeavesOutWhatCannotBeCompared) {
    RowPlan::Columns columns;
    columns.values = {{"Testo", DataTypeEnum::adLongVarChar}};
    columns.criteria = {{"Testo", DataTypeEnum::adLongVarChar},
                        {"Codice", DataTypeEnum::adInteger},
                        {"Fine]", DataTypeEnum::adVarChar}};
    const RowChange change{
        std::make_shared<const RowPlan>(RowPlan::Kind::Update, "Note", std::move(columns)),
        {std::string("nuovo")},
        {std::string("vecchio"), std::int64_t{7}, Value()}};
    EXPECT_EQ("UPDATE Note SET [Testo] = N'nuovo' WHERE [Codice] = 7 AND [Fine]]] IS NULL",
              late_bound::writingText(change));
}

}  // namespace
}  // namespace kap::ado
