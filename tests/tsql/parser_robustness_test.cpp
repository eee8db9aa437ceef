#include <gtest/gtest.h>

#include <random>

#include "support/seed.hpp"
#include "tsql/parser.hpp"
#include "tsql/script_split.hpp"
#include "tsql/server_error.hpp"

namespace kap::tsql {
namespace {

const char* const kScripts[] = {
    "SELECT DISTINCT TOP (5) PERCENT t.*, [a b] AS x, 'y' = -1.5e3, N'z''w' FROM dbo.t AS t WITH "
    "(NOLOCK) LEFT JOIN (SELECT 1 UNION ALL SELECT 2) AS d (c) ON t.a = d.c WHERE NOT (a BETWEEN 1 "
    "AND 2 OR b NOT IN (1, 0xFF, $3.5)) AND c LIKE '%x' ESCAPE '!' AND EXISTS (SELECT * FROM u) "
    "GROUP BY a, b HAVING COUNT(DISTINCT c) > 1 ORDER BY 1 DESC, a",
    "CREATE TABLE t (a int IDENTITY(1,1) NOT NULL PRIMARY KEY, b decimal(18,4) DEFAULT (0), c "
    "varchar(max) NULL, timestamp, CONSTRAINT u UNIQUE NONCLUSTERED (b, c)) ON [PRIMARY]",
    "INSERT INTO t (a, b) VALUES (1, DEFAULT), (CASE a WHEN 1 THEN 2 ELSE 3 END, CAST(x AS "
    "char(3))); INSERT t SELECT CONVERT(varchar(10), d, 103) FROM u",
    "UPDATE x SET a = isnull(b, 0) + 1, c = DEFAULT FROM t x JOIN u ON x.i = u.i WHERE u.z IS NOT "
    "NULL DELETE TOP (1) FROM t /* c /* d */ */ WHERE a !< 3 -- end",
    "BEGIN TRAN x DROP TABLE IF EXISTS #a, [b]]c] COMMIT TRAN ROLLBACK",
};

// Either a tree or a server's error: nothing else may come out of the parser.
void parseAnything(const std::string& sql) {
    try {
        (void)parseScript(sql);
    } catch (const ServerError& error) {
        EXPECT_GT(error.number(), 0);
        EXPECT_FALSE(error.message().empty());
        EXPECT_GE(error.line(), 1);
    }
}

TEST(ParserRobustness, ReadsEverySample) {
    for (const char* script : kScripts)
        EXPECT_NO_THROW((void)parseScript(script)) << script;
}

TEST(ParserRobustness, SurvivesEveryPrefix) {
    for (const std::string script : kScripts) {
        for (std::size_t size = 0; size <= script.size(); ++size)
            parseAnything(script.substr(0, size));
    }
}

TEST(ParserRobustness, SurvivesEverySuffix) {
    for (const std::string script : kScripts) {
        for (std::size_t start = 0; start <= script.size(); ++start)
            parseAnything(script.substr(start));
    }
}

TEST(ParserRobustness, SurvivesRandomDamage) {
    std::mt19937 random(test::randomSeed());
    const auto below = [&random](std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random);
    };
    for (int round = 0; round < 3000; ++round) {
        std::string script = kScripts[below(std::size(kScripts))];
        for (int change = 0; change < 4; ++change) {
            const std::size_t place = below(script.size());
            switch (below(3)) {
                case 0:
                    script.erase(place, 1 + below(8));
                    break;
                case 1:
                    script.insert(place, 1, static_cast<char>(below(256)));
                    break;
                default:
                    script.insert(place, script.substr(below(script.size()), 1 + below(20)));
            }
        }
        parseAnything(script);
        try {
            (void)splitScript(script);
        } catch (const ServerError& error) {
            EXPECT_EQ(error.number(), 102);
        }
    }
}

}  // namespace
}  // namespace kap::tsql
