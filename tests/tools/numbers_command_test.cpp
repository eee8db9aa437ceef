#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tools/command_line.hpp"

namespace kap::tests {
namespace {

using nlohmann::json;

// A database with a counter of invoices that has gaps, reservations and a document too many, and
// one of delivery notes that is as it should be.
class NumbersCommand : public testing::Test {
protected:
    NumbersCommand() {
        const Outcome made = kaputil(
            {"sql", "--connection", connection(), "--command",
             "CREATE TABLE vtx_TabDoc (Codice varchar(3), TipoProg varchar(5));"
             "CREATE TABLE vtx_TabPro (Codice varchar(5), Anno smallint, n_Def int, n_Prov int, "
             "GestProvv int, PRIMARY KEY (Codice, Anno));"
             "CREATE TABLE vtx_TabProPrenotati (Codice varchar(5), Anno smallint, Numero int, "
             "Stato varchar(1));"
             "CREATE TABLE mag_TDocumenti (Anno smallint, Tipo varchar(3), Numero int);"
             "INSERT INTO vtx_TabDoc VALUES ('FAI', 'FAT'), ('NCR', 'FAT'), ('DDT', 'BOL');"
             "INSERT INTO vtx_TabPro VALUES ('FAT', 2025, 12, 0, 0), ('BOL', 2025, 2, 7, 1), "
             "('BOL', 2024, 0, NULL, 1);"
             "INSERT INTO vtx_TabProPrenotati VALUES ('FAT', 2025, 7, 'U'), ('FAT', 2025, 14, ''), "
             "('FAT', 2025, 15, 'D'), ('FAT', 2025, 16, 'M');"
             "INSERT INTO mag_TDocumenti VALUES (2025, 'FAI', 2), (2025, 'NCR', 3), "
             "(2025, 'FAI', 5), (2025, 'FAI', 9), (2025, 'FAI', 10), (2025, 'FAI', 13), "
             "(2025, 'DDT', 1), (2025, 'DDT', 2), (2024, 'FAI', 1)"});
        EXPECT_EQ(made.exitCode, 0) << made.err;
    }

    [[nodiscard]] std::string connection() const { return connectionTo(folder_ / "a.db"); }
    [[nodiscard]] Outcome numbers(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), {"numbers", "--connection", connection()});
        return kaputil(arguments);
    }

private:
    Folder folder_;
};

TEST_F(NumbersCommand, ShowsEveryCounterWithWhatIsAmiss) {
    const Outcome run = numbers({});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out,
              "BOL 2024  definitive 0, provisional Null\n"
              "BOL 2025  definitive 2, provisional 7\n"
              "FAT 2025  definitive 12, provisional 0\n"
              "  reserved  7  taken\n"
              "            14  untouched\n"
              "            15  read\n"
              "            16  taken for the accounts\n"
              "  beyond    FAI 13\n"
              "  missing   1  before FAI 2\n"
              "            4  between NCR 3 and FAI 5\n"
              "            6  between FAI 5 and FAI 9\n"
              "            8  between FAI 5 and FAI 9\n"
              "            11-12  between FAI 10 and FAI 13\n");
}

TEST_F(NumbersCommand, ShowsOneCounterOrOneYear) {
    EXPECT_EQ(numbers({"--counter", "bol"}).out,
              "BOL 2024  definitive 0, provisional Null\n"
              "BOL 2025  definitive 2, provisional 7\n");
    EXPECT_EQ(numbers({"--year", "2024"}).out, "BOL 2024  definitive 0, provisional Null\n");
    EXPECT_EQ(numbers({"--counter", "L'ALTRO"}).out, "No counters.\n");
}

TEST_F(NumbersCommand, PrintsOneJsonObjectForPrograms) {
    const json all = json::parse(numbers({"--counter", "FAT", "--json"}).out)["counters"];
    ASSERT_EQ(all.size(), 1U);
    EXPECT_EQ(all[0]["counter"], "FAT");
    EXPECT_EQ(all[0]["year"], 2025);
    EXPECT_EQ(all[0]["definitive"], 12);
    EXPECT_EQ(all[0]["reservations"][0],
              json::parse(R"({"number": 7, "code": "U", "state": "taken"})"));
    EXPECT_EQ(all[0]["beyond"], json::parse(R"([{"number": 13, "type": "FAI"}])"));
    EXPECT_EQ(all[0]["gaps"].size(), 5U);
    EXPECT_EQ(all[0]["gaps"][0], json::parse(R"({"first": 1, "last": 1, "before": null,
              "behind": {"number": 2, "type": "FAI"}})"));
}

TEST_F(NumbersCommand, RefusesAYearThatIsNone) {
    const Outcome run = numbers({"--year", "questo"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_NE(run.err.find("--year"), std::string::npos) << run.err;
}

TEST(NumbersCommandWithoutTables, TellsTheDatabasesError) {
    const Outcome run = kaputil({"numbers", "--connection", connectionTo(":memory:")});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.err.find("vtx_TabPro"), std::string::npos) << run.err;
}

}  // namespace
}  // namespace kap::tests
