// Statements nested ever deeper, in a thread that has little stack: they run or are refused.
#include <gtest/gtest.h>

#include <functional>
#include <iostream>
#include <set>
#include <string>
#include <vector>

#include <kaputil/automation/error.hpp>

#include "support/database.hpp"
#include "support/thread_stack.hpp"

namespace kap {
namespace {

constexpr std::size_t kLittleStack = std::size_t{256} * 1024;
constexpr std::size_t kUsualStack = std::size_t{8} * 1024 * 1024;

std::string times(int count, const std::string& text) {
    std::string all;
    all.reserve(text.size() * static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        all += text;
    }
    return all;
}

std::string around(int depth, const std::string& before, const std::string& inner,
                   const std::string& behind) {
    return times(depth, before) + inner + times(depth, behind);
}

using Batches = std::vector<std::string>;

struct Shape {
    const char* name;
    Batches (*nested)(int depth);
};

// An object that reads the one made before it.
Batches tower(
    int depth, const std::string& first,
    const std::function<std::string(const std::string& name, const std::string& below)>& next,
    const std::string& use) {
    Batches batches{first};
    for (int i = 1; i <= depth; ++i) {
        batches.push_back(next("o" + std::to_string(i), "o" + std::to_string(i - 1)));
    }
    batches.push_back(use + "o" + std::to_string(depth));
    return batches;
}

const std::vector<Shape>& shapes() {
    static const std::vector<Shape> kShapes = {
        {"brackets", [](int n) { return Batches{"SELECT " + around(n, "(", "1", ")")}; }},
        {"bracketed columns",
         [](int n) { return Batches{"SELECT " + around(n, "(", "a", "+1)") + " FROM t"}; }},
        {"bracketed conditions",
         [](int n) { return Batches{"SELECT 1 FROM t WHERE " + around(n, "(", "a = 1", ")")}; }},
        {"alternating conditions",
         [](int n) {
             return Batches{"SELECT 1 FROM t WHERE " +
                            around(n, "(a = 2 OR ", "a = 1", " AND a < 5)")};
         }},
        {"signs", [](int n) { return Batches{"SELECT " + times(n, "- ") + "a FROM t"}; }},
        {"complements", [](int n) { return Batches{"SELECT " + times(n, "~") + "a FROM t"}; }},
        {"negations",
         [](int n) { return Batches{"SELECT 1 FROM t WHERE " + times(n, "NOT ") + "a = 1"}; }},
        {"sums", [](int n) { return Batches{"SELECT a" + times(n, " + a") + " FROM t"}; }},
        {"texts joined",
         [](int n) { return Batches{"SELECT b" + times(n, " + b + 'x'") + " FROM t"}; }},
        {"conjunctions",
         [](int n) { return Batches{"SELECT 1 FROM t WHERE a = 1" + times(n, " AND a = 1")}; }},
        {"cases",
         [](int n) {
             return Batches{"SELECT " + around(n, "CASE WHEN a = 1 THEN ", "a", " ELSE 0 END") +
                            " FROM t"};
         }},
        {"cases behind ELSE",
         [](int n) {
             return Batches{"SELECT " + around(n, "CASE a WHEN 2 THEN 0 ELSE ", "a", " END") +
                            " FROM t"};
         }},
        {"cases in their conditions",
         [](int n) {
             return Batches{"SELECT " + around(n, "CASE WHEN 1 = ", "a", " THEN 1 ELSE 0 END") +
                            " FROM t"};
         }},
        {"functions",
         [](int n) { return Batches{"SELECT " + around(n, "UPPER(", "b", ")") + " FROM t"}; }},
        {"functions of two",
         [](int n) {
             return Batches{"SELECT " + around(n, "ISNULL(NULL, ", "a", ")") + " FROM t"};
         }},
        {"immediate ifs",
         [](int n) {
             return Batches{"SELECT " + around(n, "IIF(a = 1, ", "a", ", 0)") + " FROM t"};
         }},
        {"coalesced",
         [](int n) {
             return Batches{"SELECT " + around(n, "COALESCE(NULL, ", "a", ")") + " FROM t"};
         }},
        {"conversions",
         [](int n) {
             return Batches{"SELECT " + around(n, "CAST(", "a", " AS bigint)") + " FROM t"};
         }},
        {"braces", [](int n) { return Batches{"SELECT " + around(n, "{fn UCASE(", "'a'", ")}")}; }},
        {"subqueries", [](int n) { return Batches{"SELECT " + around(n, "(SELECT ", "1", ")")}; }},
        {"subqueries of a table",
         [](int n) {
             return Batches{"SELECT " + around(n, "(SELECT MAX(a) + ", "1", " FROM t)")};
         }},
        {"derived tables",
         [](int n) {
             return Batches{"SELECT * FROM " + around(n, "(SELECT * FROM ", "t", ") AS d")};
         }},
        {"memberships",
         [](int n) {
             return Batches{"SELECT a FROM t" + around(n, " WHERE a IN (SELECT a FROM t", "", ")")};
         }},
        {"existences",
         [](int n) {
             return Batches{"SELECT a FROM t" +
                            around(n, " WHERE EXISTS (SELECT a FROM t", "", ")")};
         }},
        {"common tables",
         [](int n) {
             std::string sql = "WITH c0 AS (SELECT a FROM t)";
             for (int i = 1; i <= n; ++i) {
                 sql += ", c" + std::to_string(i) + " AS (SELECT a FROM c" + std::to_string(i - 1) +
                        ")";
             }
             return Batches{sql + " SELECT a FROM c" + std::to_string(n)};
         }},
        {"joins in brackets",
         [](int n) {
             std::string sql = "SELECT 1 FROM " + times(n, "(") + "t";
             for (int i = 0; i < n; ++i) {
                 sql += " CROSS JOIN (SELECT 1 AS x) AS y" + std::to_string(i) + ")";
             }
             return Batches{sql};
         }},
        {"joins",
         [](int n) {
             std::string sql = "SELECT 1 FROM t";
             for (int i = 0; i < n; ++i) {
                 sql +=
                     " JOIN t AS t" + std::to_string(i) + " ON t.a = t" + std::to_string(i) + ".a";
             }
             return Batches{sql};
         }},
        {"unions", [](int n) { return Batches{"SELECT 1" + times(n, " UNION ALL SELECT 1")}; }},
        {"unions in brackets",
         [](int n) { return Batches{around(n, "(SELECT 1 UNION ALL ", "SELECT 2", ")")}; }},
        {"blocks", [](int n) { return Batches{around(n, "BEGIN ", "SELECT 1", " END ")}; }},
        {"ifs", [](int n) { return Batches{times(n, "IF 1 = 1 ") + "SELECT 1"}; }},
        {"elses", [](int n) { return Batches{times(n, "IF 1 = 0 SELECT 0 ELSE ") + "SELECT 1"}; }},
        {"loops",
         [](int n) { return Batches{around(n, "WHILE 1 = 1 BEGIN ", "SELECT 1", " BREAK END ")}; }},
        {"attempts",
         [](int n) {
             return Batches{
                 around(n, "BEGIN TRY ", "SELECT 1", " END TRY BEGIN CATCH SELECT 2 END CATCH ")};
         }},
        {"catches",
         [](int n) {
             return Batches{around(n, "BEGIN TRY RAISERROR('x', 16, 1) END TRY BEGIN CATCH ",
                                   "SELECT 1", " END CATCH ")};
         }},
        {"comments", [](int n) { return Batches{around(n, "/* ", "", " */") + "SELECT 1"}; }},
        {"executed texts",
         [](int n) {
             std::string sql = "SELECT 1";
             // Quotes double at each level: what is told in the deepest is made by the text itself.
             Batches batches{
                 "CREATE PROCEDURE deeper @n int AS DECLARE @s varchar(100) = "
                 "'EXEC deeper ' + CAST(@n - 1 AS varchar(9)) "
                 "IF @n > 0 EXEC (@s) ELSE SELECT @@NESTLEVEL"};
             batches.push_back("EXEC deeper " + std::to_string(n));
             return batches;
         }},
        {"procedures",
         [](int n) {
             return Batches{
                 "CREATE PROCEDURE inner_one @n int AS SET @n = @n - 1 "
                 "IF @n > 0 EXEC inner_one @n ELSE SELECT @@NESTLEVEL",
                 "EXEC inner_one " + std::to_string(n)};
         }},
        {"rows from procedures",
         [](int n) {
             return Batches{"CREATE TABLE #r (n int)",
                            "CREATE PROCEDURE inner_two @n int AS SET @n = @n - 1 "
                            "IF @n > 0 EXEC inner_two @n ELSE SELECT @@NESTLEVEL",
                            "INSERT INTO #r EXEC inner_two " + std::to_string(n)};
         }},
        {"recursive functions",
         [](int n) {
             return Batches{
                 "CREATE FUNCTION dbo.sum_to (@n int) RETURNS int AS BEGIN "
                 "RETURN CASE WHEN @n <= 0 THEN 0 ELSE @n + dbo.sum_to(@n - 1) END END",
                 "SELECT dbo.sum_to(" + std::to_string(n) + ")"};
         }},
        {"functions with queries",
         [](int n) {
             return Batches{
                 "CREATE FUNCTION dbo.sum_of (@n int) RETURNS int AS BEGIN DECLARE @r int = 0 "
                 "IF @n > 0 SELECT @r = a + dbo.sum_of(@n - 1) FROM t RETURN @r END",
                 "SELECT dbo.sum_of(" + std::to_string(n) + ")"};
         }},
        {"views",
         [](int n) {
             return tower(
                 n, "CREATE VIEW o0 AS SELECT a FROM t",
                 [](const std::string& name, const std::string& below) {
                     return "CREATE VIEW " + name + " AS SELECT a FROM " + below;
                 },
                 "SELECT * FROM ");
         }},
        {"grouped views",
         [](int n) {
             return tower(
                 n, "CREATE VIEW o0 AS SELECT a FROM t",
                 [](const std::string& name, const std::string& below) {
                     return "CREATE VIEW " + name + " AS SELECT MAX(a) AS a FROM " + below +
                            " GROUP BY a";
                 },
                 "SELECT * FROM ");
         }},
        {"computed columns",
         [](int n) {
             return Batches{"CREATE TABLE c (a int, b AS " + around(n, "(", "a", " + 1)") + ")",
                            "INSERT INTO c (a) VALUES (1)", "SELECT b FROM c"};
         }},
        {"defaults",
         [](int n) {
             return Batches{
                 "CREATE TABLE d (a int, b int DEFAULT " + around(n, "(", "1", ")") + ")",
                 "INSERT INTO d (a) VALUES (1)", "SELECT b FROM d"};
         }},
        {"checks",
         [](int n) {
             return Batches{"CREATE TABLE k (a int CHECK (" + around(n, "(", "a > 0", ")") + "))",
                            "INSERT INTO k (a) VALUES (1)", "SELECT a FROM k"};
         }},
        {"triggers that fire one another",
         [](int n) {
             Batches batches;
             for (int i = 0; i <= n; ++i) {
                 batches.push_back("CREATE TABLE f" + std::to_string(i) + " (a int)");
             }
             for (int i = 0; i < n; ++i) {
                 batches.push_back("CREATE TRIGGER g" + std::to_string(i) + " ON f" +
                                   std::to_string(i) + " FOR INSERT AS INSERT INTO f" +
                                   std::to_string(i + 1) + " SELECT a FROM inserted");
             }
             batches.emplace_back("INSERT INTO f0 VALUES (1)");
             return batches;
         }},
        {"cascades",
         [](int n) {
             Batches batches{"CREATE TABLE p0 (a int PRIMARY KEY)"};
             for (int i = 1; i <= n; ++i) {
                 batches.push_back("CREATE TABLE p" + std::to_string(i) +
                                   " (a int PRIMARY KEY REFERENCES p" + std::to_string(i - 1) +
                                   " (a) ON DELETE CASCADE)");
             }
             for (int i = 0; i <= n; ++i) {
                 batches.push_back("INSERT INTO p" + std::to_string(i) + " VALUES (1)");
             }
             batches.emplace_back("DELETE FROM p0");
             return batches;
         }},
        {"updates",
         [](int n) {
             return Batches{"UPDATE t SET a = " + around(n, "(", "a", ")") + " WHERE " +
                            around(n, "(", "a = 1", ")")};
         }},
        {"rows",
         [](int n) {
             return Batches{"INSERT INTO t (a) VALUES (" + around(n, "(", "1", ")") + ")"};
         }},
        {"merges",
         [](int n) {
             return Batches{"MERGE t USING (SELECT 1 AS x) s ON " + around(n, "(", "a = x", ")") +
                            " WHEN MATCHED THEN UPDATE SET b = " + around(n, "(", "'q'", ")") +
                            ";"};
         }},
        {"deletes",
         [](int n) { return Batches{"DELETE FROM t WHERE " + around(n, "(", "a = 7", ")")}; }},
        {"windows",
         [](int n) {
             return Batches{"SELECT SUM(a) OVER (ORDER BY " + around(n, "(", "a", ")") +
                            ") FROM t"};
         }},
        {"patterns",
         [](int n) {
             return Batches{"SELECT 1 FROM t WHERE b LIKE '" + times(n, "%[a-z]") + "'",
                            "SELECT PATINDEX('" + times(n, "%x") + "', b) FROM t"};
         }},
    };
    return kShapes;
}

// What the server says of too much nesting, or of what else a number of levels asks for.
const std::set<int> kRefusals = {
    191,    // nested too deeply
    217,    // more than 32 procedures, views or triggers in one another
    8631,   // the stack is at its end
    40517,  // more than SQLite's limit of tables or terms
};

// The last error's number; 0: all ran. The connection goes on afterwards.
int outcomeOf(const Ref<ado::Connection>& connection, const Batches& batches) {
    int number = 0;
    for (std::size_t i = 0; i < batches.size() && number == 0; ++i) {
        try {
            connection->Execute(String(batches[i]));
        } catch (const AutomationError& error) {
            number = connection->Errors()->Item(0)->NativeError();
            EXPECT_TRUE(kRefusals.contains(number))
                << number << " " << error.what() << " " << batches[i].substr(0, 100);
        }
    }
    EXPECT_EQ(1, test::valueOf(connection, u"SELECT 1").as<std::int32_t>());
    return number;
}

class NestedStatements : public testing::TestWithParam<Shape> {
protected:
    // What comes of the shape so deep in a thread of that stack.
    static int outcome(int depth, std::size_t stack) {
        int number = 0;
        inThreadOf(stack, [&] {
            const auto connection = test::openMemory();
            connection->Execute(
                u"CREATE TABLE t (a int, b varchar(20)) INSERT INTO t VALUES (1, 'b')");
            number = outcomeOf(connection, GetParam().nested(depth));
        });
        return number;
    }
    // Made of a statement for each level, which takes its time.
    static bool isTower() { return GetParam().nested(2).size() > 3; }
    static void expectAnEnd(const std::vector<int>& depths, std::size_t stack) {
        for (const int depth : depths) {
            SCOPED_TRACE(depth);
            std::cout << depth << ": " << outcome(depth, stack) << std::endl;
        }
    }
};

TEST_P(NestedStatements, RunOrAreRefusedWithLittleStack) {
    const std::vector<int> depths = {31, 60, 100, 150, 190, 200, 1000, 20000};
    expectAnEnd(isTower() ? std::vector{31, 150} : depths, kLittleStack);
}

TEST_P(NestedStatements, RunOrAreRefusedWithTheUsualStack) {
    expectAnEnd(isTower() ? std::vector{40} : std::vector{40, 200, 20000}, kUsualStack);
}

// What programs write is not near any bound.
TEST_P(NestedStatements, RunWhenTheyAreNestedAsProgramsNestThem) {
    EXPECT_EQ(0, outcome(4, kUsualStack));
}

// The limit of depth has one error, and so has a stack that ends before it.
TEST(NestedCalls, AreRefusedForTheirDepthWhereTheStackHoldsIt) {
    inThreadOf(8 * kUsualStack, [] {
        const auto connection = test::openMemory();
        connection->Execute(u"CREATE TABLE t (a int, b varchar(20))");
        EXPECT_EQ(
            191, outcomeOf(connection, {"SELECT " + around(5000, "UPPER(", "b", ")") + " FROM t"}));
    });
}

INSTANTIATE_TEST_SUITE_P(Shapes, NestedStatements, testing::ValuesIn(shapes()),
                         [](const auto& shape) {
                             std::string name;
                             for (const char letter : std::string(shape.param.name)) {
                                 if (letter != ' ') name += letter;
                             }
                             return name;
                         });

}  // namespace
}  // namespace kap
