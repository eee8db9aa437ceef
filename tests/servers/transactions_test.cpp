// Transactions, temporary tables and schema rowsets of a database server.
#include <gtest/gtest.h>

#include <kaputil/automation/array.hpp>
#include <kaputil/automation/locale.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "server.hpp"
#include "support/shown.hpp"

namespace kap::ado {
namespace {

using test::fieldOf;
using test::raisedBy;
using test::shown;

class ServerTransactions : public test::ServerTest {
protected:
    void SetUp() override {
        ServerTest::SetUp();
        if (!IsSkipped()) {
            run("CREATE TABLE t (a int PRIMARY KEY, b varchar(10) DEFAULT 'x', c numeric(8,3) NOT "
                "NULL DEFAULT 0)");
        }
    }
    LocaleScope locale_{"it-IT"};
    [[nodiscard]] std::string rows() const { return value("SELECT count(*) FROM t"); }
};

class ServerSchema : public ServerTransactions {
protected:
    [[nodiscard]] Ref<Recordset> schema(SchemaEnum kind, const std::vector<Variant>& wanted) const {
        return connection_->OpenSchema(kind, Variant(Array::ofVariants(wanted)));
    }
    // One column of all rows, with '|' behind each.
    static std::string column(const Ref<Recordset>& rows, const char16_t* name) {
        std::string all;
        for (; !rows->Eof(); rows->MoveNext()) {
            all += shown(fieldOf(rows, name)) + "|";
        }
        return all;
    }
};

TEST_F(ServerTransactions, RollBackAndCommit) {
    EXPECT_EQ(connection_->BeginTrans(), 1);
    run("INSERT INTO t (a) VALUES (1)");
    connection_->RollbackTrans();
    EXPECT_EQ(rows(), "Decimal 0");
    connection_->BeginTrans();
    run("INSERT INTO t (a) VALUES (1)");
    connection_->CommitTrans();
    EXPECT_EQ(rows(), "Decimal 1");
}

TEST_F(ServerTransactions, AreSeenByOthersOnlyOnceTheyAreCommitted) {
    const auto other = database_->open();
    connection_->BeginTrans();
    run("INSERT INTO t (a) VALUES (1)");
    EXPECT_EQ(shown(test::valueOf(other, u"SELECT count(*) FROM t")), "Decimal 0");
    connection_->CommitTrans();
    EXPECT_EQ(shown(test::valueOf(other, u"SELECT count(*) FROM t")), "Decimal 1");
}

TEST_F(ServerTransactions, NestByCounting) {
    EXPECT_EQ(connection_->BeginTrans(), 1);
    EXPECT_EQ(connection_->BeginTrans(), 2);
    run("INSERT INTO t (a) VALUES (1)");
    connection_->CommitTrans();
    connection_->RollbackTrans();
    EXPECT_EQ(rows(), "Decimal 0");
}

TEST_F(ServerTransactions, EndingOneThatWasNotBegunIsAnError) {
    EXPECT_NE(raisedBy([&] {
                  connection_->CommitTrans();
                  return 0;
              }),
              0);
    EXPECT_NE(raisedBy([&] {
                  connection_->RollbackTrans();
                  return 0;
              }),
              0);
}

TEST_F(ServerTransactions, AClosedConnectionUndoesWhatItLeftOpen) {
    {
        const auto other = database_->open();
        other->BeginTrans();
        other->Execute(u"INSERT INTO t (a) VALUES (1)");
    }
    EXPECT_EQ(rows(), "Decimal 0");
}

TEST_F(ServerTransactions, TemporaryTablesStayOnTheirConnection) {
    run("CREATE TEMPORARY TABLE appoggio (a int); INSERT INTO appoggio VALUES (1)");
    EXPECT_EQ(value("SELECT count(*) FROM appoggio"), "Decimal 1");
    const auto other = database_->open();
    EXPECT_EQ(raisedBy([&] { return other->Execute(u"SELECT * FROM appoggio"); }),
              errors::kUnknownObject);
}

TEST_F(ServerSchema, ListsColumnsInTheTablesOrder) {
    const auto found =
        schema(SchemaEnum::adSchemaColumns, {Variant(), Variant(), Variant(u"T"), Variant()});
    EXPECT_EQ(column(found, u"COLUMN_NAME"), "String a|String b|String c|");
    found->MoveFirst();
    EXPECT_EQ(column(found, u"DATA_TYPE"), "Long 3|Long 129|Long 131|");
    found->MoveFirst();
    EXPECT_EQ(column(found, u"IS_NULLABLE"), "Boolean Falso|Boolean Vero|Boolean Falso|");
    found->MoveFirst();
    EXPECT_EQ(column(found, u"CHARACTER_MAXIMUM_LENGTH"), "Null|Long 10|Null|");
    found->MoveFirst();
    EXPECT_EQ(column(found, u"NUMERIC_SCALE"), "Null|Null|Integer 3|");
}

TEST_F(ServerSchema, DoesNotTakeSignsInNamesForPatterns) {
    run("CREATE TABLE a_b (x int); CREATE TABLE axb (y int)");
    EXPECT_EQ(column(schema(SchemaEnum::adSchemaColumns, {Variant(), Variant(), Variant(u"a_b")}),
                     u"COLUMN_NAME"),
              "String x|");
}

TEST_F(ServerSchema, ListsTablesKeysAndIndexes) {
    run("CREATE UNIQUE INDEX i_b ON t (b, c DESC)");
    EXPECT_EQ(column(schema(SchemaEnum::adSchemaTables,
                            {Variant(), Variant(u"public"), Variant(), Variant(u"TABLE")}),
                     u"TABLE_NAME"),
              "String t|");
    EXPECT_EQ(column(schema(SchemaEnum::adSchemaPrimaryKeys, {Variant(), Variant(), Variant(u"t")}),
                     u"COLUMN_NAME"),
              "String a|");
    const auto indexes = schema(SchemaEnum::adSchemaIndexes,
                                {Variant(), Variant(), Variant(u"i_b"), Variant(), Variant(u"t")});
    EXPECT_EQ(column(indexes, u"COLUMN_NAME"), "String b|String c|");
    indexes->MoveFirst();
    EXPECT_EQ(shown(fieldOf(indexes, u"UNIQUE")), "Boolean Vero");
    EXPECT_EQ(shown(fieldOf(indexes, u"PRIMARY_KEY")), "Boolean Falso");
}

TEST_F(ServerSchema, ListsTheServersTypes) {
    EXPECT_NE(
        column(schema(SchemaEnum::adSchemaProviderTypes, {}), u"TYPE_NAME").find("String int4"),
        std::string::npos);
}

TEST_F(ServerTransactions, SeeWhatTheirIsolationLevelLetsThemSee) {
    const auto other = database_->open();
    connection_->setIsolationLevel(IsolationLevelEnum::adXactRepeatableRead);
    connection_->BeginTrans();
    EXPECT_EQ(rows(), "Decimal 0");
    other->Execute(u"INSERT INTO t (a) VALUES (1)");
    EXPECT_EQ(rows(), "Decimal 0");
    connection_->CommitTrans();
    EXPECT_EQ(rows(), "Decimal 1");
    connection_->setIsolationLevel(IsolationLevelEnum::adXactReadCommitted);
    connection_->BeginTrans();
    EXPECT_EQ(rows(), "Decimal 1");
    other->Execute(u"INSERT INTO t (a) VALUES (2)");
    EXPECT_EQ(rows(), "Decimal 2");
    connection_->CommitTrans();
    EXPECT_EQ(value("SHOW transaction_isolation"), "String read committed");
}

TEST_F(ServerTransactions, ALevelChosenWithinATransactionHoldsFromTheNextOne) {
    connection_->BeginTrans();
    connection_->setIsolationLevel(IsolationLevelEnum::adXactSerializable);
    EXPECT_EQ(connection_->BeginTrans(), 2);
    EXPECT_EQ(value("SHOW transaction_isolation"), "String read committed");
    connection_->RollbackTrans();
    connection_->BeginTrans();
    EXPECT_EQ(value("SHOW transaction_isolation"), "String serializable");
    connection_->RollbackTrans();
}

TEST_F(ServerTransactions, ALevelThatTheServerDoesNotHaveIsRefused) {
    connection_->setIsolationLevel(IsolationLevelEnum::adXactChaos);
    EXPECT_EQ(raisedBy([&] { return connection_->BeginTrans(); }), errors::kFeatureNotAvailable);
    connection_->setIsolationLevel(IsolationLevelEnum::adXactUnspecified);
    EXPECT_EQ(connection_->BeginTrans(), 1);
    connection_->RollbackTrans();
}

}  // namespace
}  // namespace kap::ado
