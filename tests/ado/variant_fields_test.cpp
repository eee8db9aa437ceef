#include <cstdint>
#include <string>
#include <vector>

#include <kaputil/ado/command.hpp>
#include <kaputil/automation/decimal.hpp>

#include "ado/recordset_fixture.hpp"

// Columns of sql_variant, whose values have types of their own.
namespace kap::ado {
namespace {

using test::fieldOf;
using test::openLive;
using test::shown;
using test::valueOf;

class VariantFields : public ::testing::Test {
protected:
    VariantFields() : connection_(test::openMemory()) {
        connection_->Execute(
            u"CREATE TABLE Opzioni (Id int NOT NULL PRIMARY KEY, Valore sql_variant);"
            u"INSERT INTO Opzioni VALUES (1, 5);"
            u"INSERT INTO Opzioni VALUES (2, convert(decimal(8, 2), 12.5));"
            u"INSERT INTO Opzioni VALUES (3, 'Rossi');"
            u"INSERT INTO Opzioni VALUES (4, convert(datetime, '20240131 10:30'));"
            u"INSERT INTO Opzioni VALUES (5, NULL);"
            u"INSERT INTO Opzioni VALUES (6, convert(money, 1.25));"
            u"INSERT INTO Opzioni VALUES (7, 0x0A1B)");
    }

    [[nodiscard]] Ref<Recordset> all() const {
        return openLive(connection_, u"SELECT * FROM Opzioni ORDER BY Id",
                        CursorLocationEnum::adUseClient);
    }
    [[nodiscard]] std::string typeAt(const char16_t* id) const {
        return shown(
            valueOf(connection_, String(u"SELECT convert(varchar(20), sql_variant_property(Valore, "
                                        u"'BaseType')) FROM Opzioni WHERE Id = ") +
                                     id));
    }

    LocaleScope locale_{"it-IT"};
    Ref<Connection> connection_;
};

TEST_F(VariantFields, ShowEachValueInItsOwnType) {
    const auto rows = all();
    EXPECT_EQ(rows->Fields()->Item(u"Valore")->Type(), DataTypeEnum::adVariant);
    const std::vector<std::string> expected{"Long 5", "Decimal 12,5", "String Rossi"};
    for (const std::string& each : expected) {
        EXPECT_EQ(shown(fieldOf(rows, u"Valore")), each);
        rows->MoveNext();
    }
    EXPECT_EQ(fieldOf(rows, u"Valore").type(), VarType::Date);
    EXPECT_EQ(rows->Fields()->Item(u"Valore")->ActualSize(), 16);
    rows->MoveNext();
    EXPECT_EQ(shown(fieldOf(rows, u"Valore")), "Null");
    rows->MoveNext();
    EXPECT_EQ(fieldOf(rows, u"Valore").type(), VarType::Currency);
    rows->MoveNext();
    EXPECT_EQ(rows->Fields()->Item(u"Valore")->ActualSize(), 2);
}

TEST_F(VariantFields, TakeValuesWithTheirTypes) {
    const auto rows = all();
    rows->Fields()->Item(u"Valore")->setValue(u"testo");
    rows->Update();
    EXPECT_EQ(typeAt(u"1"), "String nvarchar");
    rows->Fields()->Item(u"Valore")->setValue(2.5);
    rows->Update();
    EXPECT_EQ(typeAt(u"1"), "String float");
    rows->Fields()->Item(u"Valore")->setValue(true);
    rows->Update();
    EXPECT_EQ(typeAt(u"1"), "String bit");
    rows->Fields()->Item(u"Valore")->setValue(*Decimal::parse("1234567890123456789.25"));
    rows->Update();
    EXPECT_EQ(typeAt(u"1"), "String numeric");
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT Valore FROM Opzioni WHERE Id = 1")),
              "Decimal 1234567890123456789,25");
    rows->AddNew();
    rows->Fields()->Item(u"Id")->setValue(8);
    rows->Fields()->Item(u"Valore")->setValue(std::int16_t{7});
    rows->Update();
    EXPECT_EQ(typeAt(u"8"), "String smallint");
}

TEST_F(VariantFields, AnotherUsersChangeOfTheTypeAloneIsSeen) {
    const auto rows = openLive(connection_, u"SELECT Id, Valore FROM Opzioni WHERE Id = 1",
                               CursorLocationEnum::adUseClient);
    connection_->Execute(u"UPDATE Opzioni SET Valore = convert(bigint, 5) WHERE Id = 1");
    rows->Fields()->Item(u"Valore")->setValue(6);
    EXPECT_EQ(test::raisedBy([&] {
                  rows->Update();
                  return 0;
              }),
              errors::kConcurrency);
}

TEST_F(VariantFields, AreFilteredAndSortedByWhatTheyShow) {
    const auto rows = all();
    rows->setFilter(u"Valore = 'rossi'");
    EXPECT_EQ(rows->RecordCount(), 1);
    rows->setFilter(u"Valore > 1.25");
    EXPECT_EQ(shown(fieldOf(rows, u"Valore")), "Long 5");
    rows->setFilter(u"");
    rows->setSort(u"Valore");
    EXPECT_EQ(shown(fieldOf(rows, u"Valore")), "Null");
    rows->MoveNext();
    EXPECT_EQ(fieldOf(rows, u"Valore").type(), VarType::Currency);
    rows->MoveNext();
    EXPECT_EQ(shown(fieldOf(rows, u"Valore")), "Long 5");
}

TEST_F(VariantFields, AreParametersOfTheTypeOfTheirValue) {
    const auto command = make<Command>();
    command->setActiveConnection(Variant(connection_));
    command->setCommandText(u"UPDATE Opzioni SET Valore = ? WHERE Id = 1");
    command->Parameters()->Append(command->CreateParameter(
        u"v", DataTypeEnum::adVariant, ParameterDirectionEnum::adParamInput, 0, Variant(3.5)));
    command->Execute();
    EXPECT_EQ(typeAt(u"1"), "String float");
}

}  // namespace
}  // namespace kap::ado
