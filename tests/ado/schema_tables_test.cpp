#include "ado/recordset_fixture.hpp"

// Recordsets over tables of schemas.
namespace kap::ado {
namespace {

using test::fieldOf;
using test::openLive;
using test::shown;
using test::valueOf;

class SchemaTables : public RecordsetTest {
protected:
    SchemaTables() {
        connection_->Execute(u"CREATE SCHEMA vendite");
        connection_->Execute(
            u"CREATE TABLE vendite.Clienti (Codice int IDENTITY PRIMARY KEY, Nome varchar(20))");
        connection_->Execute(u"INSERT vendite.Clienti VALUES ('uno')");
    }
};

TEST_F(SchemaTables, WritesRowsOfTheTableThatWasRead) {
    const auto rows = openLive(connection_, u"SELECT Codice, Nome FROM vendite.Clienti");
    rows->Fields()->Item(u"Nome")->setValue(u"due");
    rows->Update();
    rows->AddNew();
    rows->Fields()->Item(u"Nome")->setValue(u"tre");
    rows->Update();
    EXPECT_EQ(shown(fieldOf(rows, u"Codice")), "Long 2");
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT Nome FROM vendite.Clienti WHERE Codice = 1")),
              "String due");
    rows->Delete();
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT count(*) FROM vendite.Clienti")), "Long 1");
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT Nome FROM Clienti WHERE Codice = 1")),
              "String Rossi");
}

TEST_F(SchemaTables, StandInTheSchemaRowsets) {
    const auto tables = connection_->OpenSchema(SchemaEnum::adSchemaTables);
    std::string found;
    for (; !tables->Eof(); tables->MoveNext()) {
        found += shown(fieldOf(tables, u"TABLE_SCHEMA")) + "." +
                 shown(fieldOf(tables, u"TABLE_NAME")) + "\n";
    }
    EXPECT_NE(found.find("String vendite.String Clienti\n"), std::string::npos);
    EXPECT_NE(found.find("String dbo.String Clienti\n"), std::string::npos);
}

}  // namespace
}  // namespace kap::ado
