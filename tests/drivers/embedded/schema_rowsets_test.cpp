#include <gtest/gtest.h>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/array.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/locale.hpp>

#include "support/database.hpp"
#include "support/shown.hpp"

namespace kap::ado::embedded {
namespace {

using kap::test::fieldOf;
using kap::test::shown;

class SchemaRowsetsTest : public ::testing::Test {
protected:
    SchemaRowsetsTest()
        : database_(kap::test::memoryDatabase()), connection_(kap::test::open(database_)) {
        connection_->Execute(
            u"CREATE TABLE Righe (Anno int NOT NULL, Numero int NOT NULL, Testo nvarchar(40) "
            u"DEFAULT 'x', Prezzo money, Sconto decimal(5,2), Nota text, AggID timestamp, "
            u"CONSTRAINT PK_Righe PRIMARY KEY (Numero, Anno), CONSTRAINT UQ_Testo UNIQUE "
            u"(Testo));"
            u"CREATE TABLE Clienti (Codice int IDENTITY PRIMARY KEY, Nome varchar(30) NOT NULL)");
    }

    [[nodiscard]] Ref<Recordset> schema(SchemaEnum kind,
                                        std::vector<Variant> restrictions = {}) const {
        return connection_->OpenSchema(kind, restrictions.empty()
                                                 ? Variant::missing()
                                                 : Variant(Array::ofVariants(restrictions)));
    }
    // One column of every row.
    [[nodiscard]] static std::string column(const Ref<Recordset>& rows, const char16_t* name) {
        std::string all;
        for (; !rows->Eof(); rows->MoveNext()) {
            const Variant value = fieldOf(rows, name);
            all += (value.isNull() ? "-" : convert::toString(value).utf8()) + " ";
        }
        if (rows->RecordCount() > 0) {
            rows->MoveFirst();
        }
        return all;
    }

    LocaleScope locale_{"en-US"};
    std::string database_;
    Ref<kap::ado::Connection> connection_;
};

TEST_F(SchemaRowsetsTest, TellsTheTables) {
    connection_->Execute(u"CREATE TABLE #Appoggio (A int)");
    const auto rows = schema(SchemaEnum::adSchemaTables);
    EXPECT_EQ(column(rows, u"TABLE_NAME"), "Clienti Righe ");
    EXPECT_EQ(column(rows, u"TABLE_TYPE"), "TABLE TABLE ");
    EXPECT_EQ(column(rows, u"TABLE_SCHEMA"), "dbo dbo ");
    EXPECT_EQ(rows->Fields()->Item(2)->Type(), DataTypeEnum::adWChar);
    EXPECT_EQ(rows->Fields()->Count(), 9);
}

TEST_F(SchemaRowsetsTest, TellsOnlyWhatIsAskedFor) {
    const auto named = [&](const char16_t* table) {
        return column(schema(SchemaEnum::adSchemaTables, {Variant(), Variant(), table, u"TABLE"}),
                      u"TABLE_NAME");
    };
    EXPECT_EQ(named(u"righe"), "Righe ");
    EXPECT_EQ(named(u"Manca"), "");
    EXPECT_EQ(column(schema(SchemaEnum::adSchemaTables, {Variant(), u"sys"}), u"TABLE_NAME"), "");
    EXPECT_EQ(column(schema(SchemaEnum::adSchemaTables, {Variant(), Variant(), Variant(), u"VIEW"}),
                     u"TABLE_NAME"),
              "");
}

TEST_F(SchemaRowsetsTest, TellsTheColumnsOfATableInTheirOrder) {
    const auto rows = schema(SchemaEnum::adSchemaColumns, {Variant(), Variant(), u"RIGHE"});
    EXPECT_EQ(column(rows, u"TABLE_NAME"), "Righe Righe Righe Righe Righe Righe Righe ");
    EXPECT_EQ(column(rows, u"COLUMN_NAME"), "Anno Numero Testo Prezzo Sconto Nota AggID ");
    EXPECT_EQ(column(rows, u"ORDINAL_POSITION"), "1 2 3 4 5 6 7 ");
    EXPECT_EQ(column(rows, u"DATA_TYPE"), "3 3 130 6 131 129 128 ");
    EXPECT_EQ(column(rows, u"CHARACTER_MAXIMUM_LENGTH"), "- - 40 - - 2147483647 8 ");
    EXPECT_EQ(column(rows, u"CHARACTER_OCTET_LENGTH"), "- - 80 - - 2147483647 8 ");
    EXPECT_EQ(column(rows, u"NUMERIC_PRECISION"), "10 10 - 19 5 - - ");
    EXPECT_EQ(column(rows, u"NUMERIC_SCALE"), "- - - - 2 - - ");
    EXPECT_EQ(column(rows, u"IS_NULLABLE"), "False False True True True True False ");
    EXPECT_EQ(column(rows, u"COLUMN_HASDEFAULT"), "False False True False False False False ");
}

TEST_F(SchemaRowsetsTest, TellsOneColumn) {
    const auto rows =
        schema(SchemaEnum::adSchemaColumns, {Variant(), Variant(), u"Clienti", u"nome"});
    EXPECT_EQ(column(rows, u"COLUMN_NAME"), "Nome ");
}

TEST_F(SchemaRowsetsTest, TellsThePrimaryKeysInTheirOrder) {
    const auto rows = schema(SchemaEnum::adSchemaPrimaryKeys, {Variant(), Variant(), u"Righe"});
    EXPECT_EQ(column(rows, u"COLUMN_NAME"), "Numero Anno ");
    EXPECT_EQ(column(rows, u"ORDINAL"), "1 2 ");
    EXPECT_EQ(column(rows, u"PK_NAME"), "PK_Righe PK_Righe ");
    EXPECT_EQ(column(schema(SchemaEnum::adSchemaPrimaryKeys), u"TABLE_NAME"),
              "Clienti Righe Righe ");
}

TEST_F(SchemaRowsetsTest, TellsTheIndexes) {
    const auto rows =
        schema(SchemaEnum::adSchemaIndexes, {Variant(), Variant(), Variant(), Variant(), u"Righe"});
    EXPECT_EQ(column(rows, u"INDEX_NAME"), "PK_Righe PK_Righe UQ_Testo ");
    EXPECT_EQ(column(rows, u"COLUMN_NAME"), "Numero Anno Testo ");
    EXPECT_EQ(column(rows, u"PRIMARY_KEY"), "True True False ");
    EXPECT_EQ(column(rows, u"UNIQUE"), "True True True ");
    EXPECT_EQ(column(rows, u"ORDINAL_POSITION"), "1 2 1 ");
}

TEST_F(SchemaRowsetsTest, TellsTheTypesThatColumnsCanHave) {
    const auto rows = schema(SchemaEnum::adSchemaProviderTypes);
    rows->Find(u"TYPE_NAME = 'varchar'");
    EXPECT_EQ(shown(fieldOf(rows, u"DATA_TYPE")), "Long 129");
    EXPECT_EQ(shown(fieldOf(rows, u"COLUMN_SIZE")), "Long 8000");
    EXPECT_EQ(shown(fieldOf(rows, u"LITERAL_PREFIX")), "String '");
    EXPECT_EQ(shown(fieldOf(rows, u"CREATE_PARAMS")), "String max length");
    rows->MoveFirst();
    rows->Find(u"TYPE_NAME = 'int'");
    EXPECT_EQ(shown(fieldOf(rows, u"COLUMN_SIZE")), "Long 10");
    EXPECT_EQ(shown(fieldOf(rows, u"LITERAL_PREFIX")), "Null");
    EXPECT_EQ(shown(fieldOf(rows, u"UNSIGNED_ATTRIBUTE")), "Boolean False");
    EXPECT_EQ(column(schema(SchemaEnum::adSchemaProviderTypes, {3}), u"TYPE_NAME"), "int ");
}

TEST_F(SchemaRowsetsTest, SeesWhatAnotherConnectionMade) {
    EXPECT_EQ(column(schema(SchemaEnum::adSchemaTables), u"TABLE_NAME"), "Clienti Righe ");
    const auto other = kap::test::open(database_);
    other->Execute(u"CREATE TABLE Altra (A int, B bit); DROP TABLE Righe");
    EXPECT_EQ(column(schema(SchemaEnum::adSchemaColumns), u"COLUMN_NAME"), "A B Codice Nome ");
}

TEST_F(SchemaRowsetsTest, SeesATableThatWasMadeMeanwhile) {
    EXPECT_EQ(column(schema(SchemaEnum::adSchemaTables), u"TABLE_NAME"), "Clienti Righe ");
    connection_->Execute(u"CREATE TABLE Altra (A int)");
    EXPECT_EQ(column(schema(SchemaEnum::adSchemaColumns, {Variant(), Variant(), u"Altra"}),
                     u"COLUMN_NAME"),
              "A ");
    connection_->Execute(u"DROP TABLE Altra");
    EXPECT_EQ(column(schema(SchemaEnum::adSchemaTables), u"TABLE_NAME"), "Clienti Righe ");
}

}  // namespace
}  // namespace kap::ado::embedded
