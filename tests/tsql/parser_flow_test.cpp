#include <gtest/gtest.h>

#include "tree_text.hpp"
#include "tsql/parser.hpp"
#include "tsql/server_error.hpp"

namespace kap::tsql {
namespace {

using testing::parsed;

int errorOf(const std::string& sql, const ParseOptions& options = {}) {
    try {
        (void)parseScript(sql, options);
    } catch (const ServerError& error) {
        return error.number();
    }
    return 0;
}

TEST(ParserFlow, ReadsDeclarations) {
    EXPECT_EQ(parsed("DECLARE @a int, @b AS varchar(5) = 'x'"),
              "(declare (@a int) (@b varchar(5) 'x'))");
    EXPECT_EQ(parsed("DECLARE @t TABLE (a int)"), "(declare (create @t (a int)))");
}

TEST(ParserFlow, EndsAStatementWhereAWordBeginsAnother) {
    EXPECT_EQ(parsed("SET @a = 1 SET @b = @a + 1 SELECT @b"),
              "(assign @a 1)\n(assign @b (+ @a 1))\n(select @b)");
}

TEST(ParserFlow, ReadsCompoundAssignmentsAsOperations) {
    EXPECT_EQ(parsed("SET @a *= 2"), "(assign @a (* @a 2))");
    EXPECT_EQ(parsed("UPDATE t SET a += 1, @x = b = 2"), "(update t (set a (+ a 1)) (set @x b 2))");
}

TEST(ParserFlow, BindsElseToTheNearestIf) {
    EXPECT_EQ(parsed("IF 1 = 1 IF 2 = 2 PRINT 1 ELSE PRINT 2; ELSE PRINT 3"),
              "(if (= 1 1) (if (= 2 2) (print 1) (print 2)) (print 3))");
}

TEST(ParserFlow, ReadsBlocksLoopsAndJumps) {
    EXPECT_EQ(parsed("WHILE 1 = 1 BEGIN BREAK CONTINUE END a: GOTO a RETURN 5"),
              "(while (= 1 1) (block (break) (continue)))\n(label a)\n(goto a)\n(return 5)");
}

TEST(ParserFlow, ReadsTryAndCatch) {
    EXPECT_EQ(parsed("BEGIN TRY PRINT 1 END TRY BEGIN CATCH THROW END CATCH"),
              "(try (print 1) (catch (throw)))");
}

TEST(ParserFlow, TellsATransactionFromABlock) {
    EXPECT_EQ(parsed("BEGIN TRAN x SAVE TRAN s ROLLBACK TRAN s COMMIT"),
              "(begin x)\n(save s)\n(rollback s)\n(commit)");
}

TEST(ParserFlow, ReadsCallsByNameAndByPlace) {
    EXPECT_EQ(parsed("EXEC @r = dbo.p 1, @b = @x OUTPUT, @c = DEFAULT"),
              "(exec @r dbo.p (in 1) (out @b @x) (in @c DEFAULT))");
    EXPECT_EQ(parsed("EXEC ('SELECT ' + @s)"), "(exec (+ 'SELECT ' @s))");
}

TEST(ParserFlow, TakesWithRecompileBehindACallWithOrWithoutArguments) {
    EXPECT_EQ(parsed("EXEC p WITH RECOMPILE EXEC p 1 WITH RECOMPILE"), "(exec p)\n(exec p (in 1))");
    EXPECT_EQ(
        parsed("EXEC p WITH RESULT SETS NONE EXEC ('x') WITH RECOMPILE, RESULT SETS UNDEFINED"),
        "(exec p)\n(exec 'x')");
    EXPECT_EQ(errorOf("EXEC p WITH RESULT SETS (AS FOR XML)"), 40517);
    EXPECT_EQ(errorOf("EXEC p WITH a AS (SELECT 1) SELECT 1"), 319);
}

TEST(ParserFlow, TakesTheFirstNameOfABatchForAProcedure) {
    EXPECT_EQ(parsed("sp_executesql N'SELECT 1'"), "(exec sp_executesql (in N'SELECT 1'))");
    EXPECT_EQ(parsed("sp_dboption pubs, 'x', true"),
              "(exec sp_dboption (in N'pubs') (in 'x') (in N'true'))");
}

TEST(ParserFlow, TakesThrowForAStatementAlsoAtTheBeginning) {
    EXPECT_EQ(parsed("THROW 50001, 'm', 1"), "(throw 50001 'm' 1)");
    EXPECT_EQ(parsed("throw"), "(throw)");
}

TEST(ParserFlow, EndsEveryStatementAtALabel) {
    for (const std::string statement : {"SELECT 1",
                                        "SELECT a",
                                        "SELECT a AS b",
                                        "SELECT @a = 1",
                                        "SELECT a FROM t",
                                        "SELECT a FROM t AS x",
                                        "SELECT a FROM t x",
                                        "SELECT a FROM t WITH (NOLOCK)",
                                        "SELECT a FROM (SELECT 1 AS a) x",
                                        "SELECT a FROM t JOIN u ON t.a = u.a",
                                        "SELECT a FROM t CROSS JOIN u",
                                        "SELECT a FROM t ORDER BY a",
                                        "SELECT a FROM t ORDER BY a DESC",
                                        "SELECT a FROM t GROUP BY a",
                                        "SELECT a FROM t GROUP BY a HAVING a > 1",
                                        "SELECT a FROM t WHERE a IN (1)",
                                        "SELECT a INTO x FROM t",
                                        "SELECT 1 UNION SELECT 2",
                                        "INSERT t VALUES (1)",
                                        "INSERT t DEFAULT VALUES",
                                        "INSERT t SELECT a FROM u",
                                        "INSERT t EXEC p",
                                        "UPDATE t SET a = 1",
                                        "UPDATE t SET a = 1 FROM u",
                                        "UPDATE t SET a = 1 WHERE a = 2",
                                        "DELETE t",
                                        "DELETE FROM t",
                                        "DELETE t FROM u",
                                        "TRUNCATE TABLE t",
                                        "EXEC p",
                                        "EXEC p 1",
                                        "EXEC p @a = 1",
                                        "EXEC ('x')",
                                        "EXEC @a",
                                        "DECLARE @a int",
                                        "DECLARE @a int = 1",
                                        "DECLARE @a TABLE (a int)",
                                        "DECLARE c CURSOR FOR SELECT a FROM t",
                                        "SET @a = 1",
                                        "SET NOCOUNT ON",
                                        "SET ROWCOUNT 1",
                                        "IF 1 = 1 SELECT a FROM t",
                                        "IF 1 = 1 SELECT 1 ELSE SELECT a FROM t",
                                        "WHILE 1 = 1 SELECT a FROM t",
                                        "BEGIN SELECT 1 END",
                                        "BEGIN TRAN",
                                        "COMMIT",
                                        "COMMIT TRAN",
                                        "ROLLBACK TRAN x",
                                        "SAVE TRAN x",
                                        "RETURN",
                                        "RETURN 1",
                                        "PRINT 'x'",
                                        "RAISERROR ('x', 1, 1)",
                                        "RAISERROR 50001 'x'",
                                        "THROW 50001, 'x', 1",
                                        "WAITFOR DELAY '0:0'",
                                        "GOTO x",
                                        "OPEN c",
                                        "CLOSE c",
                                        "DEALLOCATE c",
                                        "FETCH c",
                                        "FETCH NEXT FROM c INTO @a",
                                        "CREATE TABLE t (a int)",
                                        "CREATE INDEX i ON t (a)",
                                        "ALTER TABLE t ADD a int",
                                        "DROP TABLE t",
                                        "DROP INDEX t.i",
                                        "USE x",
                                        "CHECKPOINT",
                                        "DBCC CHECKDB",
                                        "GRANT SELECT ON t TO public"}) {
        SCOPED_TRACE(statement);
        EXPECT_EQ(parsed(statement + "\nfine:\nPRINT 1"),
                  parsed(statement) + "\n(label fine)\n(print 1)");
    }
}

TEST(ParserFlow, ReadsBothFormsOfRaiserror) {
    EXPECT_EQ(parsed("RAISERROR ('x %d', 16, 1, 5) WITH NOWAIT"),
              "(raiserror 'x %d' 16 1 (with 5))");
    EXPECT_EQ(parsed("RAISERROR 50001 'x'"), "(raiserror 50001 (with 'x'))");
}

TEST(ParserFlow, ReadsCursors) {
    EXPECT_EQ(parsed("DECLARE c SCROLL CURSOR FOR SELECT a FROM t FOR READ ONLY OPEN c FETCH "
                     "ABSOLUTE 2 FROM c INTO @a, @b CLOSE c DEALLOCATE c"),
              "(cursor c scroll (select a (from t)))\n(open c)\n(fetch absolute 2 c @a @b)\n"
              "(close c)\n(deallocate c)");
}

TEST(ParserFlow, ReadsSettings) {
    EXPECT_EQ(parsed("SET NOCOUNT ON SET IDENTITY_INSERT dbo.t OFF SET ROWCOUNT 10 SET DATEFORMAT "
                     "dmy SET ANSI_NULLS, QUOTED_IDENTIFIER ON"),
              "(option NOCOUNT ON)\n(option IDENTITY_INSERT dbo.t OFF)\n(option ROWCOUNT 10)\n"
              "(option DATEFORMAT DMY)\n(option ANSI_NULLS QUOTED_IDENTIFIER ON)");
}

TEST(ParserFlow, TakesWhatAdministersAServer) {
    EXPECT_EQ(parsed("GRANT SELECT, INSERT ON t TO public CHECKPOINT UPDATE STATISTICS t USE a"),
              "(noeffect GRANT)\n(noeffect CHECKPOINT)\n(noeffect UPDATE STATISTICS)\n(use a)");
}

TEST(ParserFlow, ReadsProceduresFunctionsAndTriggers) {
    EXPECT_EQ(parsed("CREATE PROC p @a int = 1, @b int OUTPUT AS SELECT @a SET @b = 2"),
              "(procedure p (@a int 1) (@b int output) (select @a) (assign @b 2))");
    EXPECT_EQ(parsed("CREATE FUNCTION f (@a int) RETURNS int AS BEGIN RETURN @a END"),
              "(function f (@a int) (block (return @a)))");
    EXPECT_EQ(parsed("CREATE TRIGGER tr ON t FOR INSERT, UPDATE AS IF UPDATE(a) PRINT 1"),
              "(trigger tr t (if (= (UPDATE a) 1) (print 1)))");
}

TEST(ParserFlow, RefusesADefinitionThatIsNotFirst) {
    EXPECT_EQ(errorOf("SELECT 1 CREATE VIEW v AS SELECT 1 AS a"), 111);
    EXPECT_EQ(errorOf("SELECT 1 CREATE PROC p AS SELECT 1"), 111);
}

TEST(ParserFlow, RefusesBreakOutsideOfALoop) {
    EXPECT_EQ(errorOf("BREAK"), 135);
    EXPECT_EQ(errorOf("CONTINUE"), 136);
}

TEST(ParserFlow, RefusesVariablesThatNobodyHasDeclared) {
    const std::vector<std::string> given{"?1"};
    ParseOptions options;
    options.variables = &given;
    EXPECT_EQ(errorOf("SELECT @a", options), 137);
    EXPECT_EQ(errorOf("DECLARE @a int SELECT @A, ?", options), 0);
    EXPECT_EQ(errorOf("SELECT ?, ?", options), 137);
    EXPECT_EQ(errorOf("SELECT @@rowcount", options), 0);
}

TEST(ParserFlow, RefusesWhatIsNotEnded) {
    EXPECT_EQ(errorOf("BEGIN SELECT 1"), 102);
    EXPECT_EQ(errorOf("IF 1 = 1"), 102);
    EXPECT_EQ(errorOf("BEGIN TRY SELECT 1 END TRY"), 102);
}

TEST(ParserFlow, FindsTypesWithNames) {
    ParseOptions options;
    options.aliasType = [](const ObjectName& name) -> std::optional<AliasType> {
        if (name.text() == "code") return AliasType{{SqlType::VarChar, 11}, false};
        return std::nullopt;
    };
    const Script script = parseScript("CREATE TABLE t (a code)", options);
    const auto& column = std::get<CreateTableStatement>(script[0].node).columns[0];
    EXPECT_EQ(column.type, (TypeSpec{SqlType::VarChar, 11}));
    EXPECT_EQ(column.nullable, false);
}

}  // namespace
}  // namespace kap::tsql
