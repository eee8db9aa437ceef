#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

#include <nlohmann/json.hpp>

#include "cli/command_line.hpp"

namespace kap::tests {
namespace {

using nlohmann::json;

constexpr const char* kUpdatedByOthers =
    "Attenzione: Record Aggiornato da altro Utente, Operazione Annullata!";
constexpr const char* kDeletedByOthers =
    "Attenzione: Record Eliminato da altro Utente, Operazione Annullata!";

// The first step in which a user calls a member with this result.
json stepWith(const json& report, const std::string& member, const json& result) {
    for (const json& step : report["steps"]) {
        if (step["member"] == member && step["result"] == result) {
            return step;
        }
    }
    return nullptr;
}

json rowsOf(const std::string& database, const std::string& query) {
    const Outcome run =
        kaputil({"sql", "--json", "--connection", connectionTo(database), "--command", query});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    json rows = json::array();
    const json answer = json::parse(run.out);
    for (const json& row : answer["rows"]) {
        json values = json::array();
        for (const json& value : row) {
            values.push_back(value);
        }
        rows.push_back(values);
    }
    return rows;
}

TEST(DemoCommand, ShowsTheEditingOfADocumentWithBothRefusals) {
    const Outcome run = kaputil({"demo"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.err, "");
    EXPECT_TRUE(contains(run.out, kUpdatedByOthers)) << run.out;
    EXPECT_TRUE(contains(run.out, kDeletedByOthers)) << run.out;
    EXPECT_TRUE(contains(run.out, "steps, each as expected.")) << run.out;
}

TEST(DemoCommand, ShowsAmountsDatesAndThePriceOfALine) {
    const json report = json::parse(kaputil({"demo", "--json"}).out);
    EXPECT_EQ(stepWith(report, "KapRound", 2.68)["arguments"]["Numero"], "2,675");
    EXPECT_EQ(stepWith(report, "NomeMese", "Août")["user"], "Anna");
    EXPECT_EQ(stepWith(report, "CalcVal", 25.65)["arguments"]["nScTestata"], "5");
    const json capped = stepWith(report, "CalcVal", 1.0);
    EXPECT_EQ(capped["arguments"]["nSc1"], "150");
    EXPECT_EQ(capped["values"]["nSc1"], "99,99");
}

TEST(DemoCommand, HandsTheNumberThatBothSawOutOnce) {
    const json report = json::parse(kaputil({"demo", "--json"}).out);
    std::vector<std::string> calls;
    std::vector<int> numbers;
    for (const json& step : report["steps"]) {
        if (step["member"] == "Progressivi") {
            calls.push_back(step["user"].get<std::string>() + " " +
                            step["arguments"]["CLeggoScrivo"].get<std::string>());
            numbers.push_back(step["result"]);
        }
    }
    EXPECT_EQ(calls, (std::vector<std::string>{"Anna L", "Bruno L", "Anna S", "Bruno L"}));
    const int first = numbers.at(0);
    EXPECT_EQ(numbers, (std::vector<int>{first, first, first, first + 1}));
}

TEST(DemoCommand, ReadsTheTextOfAMessageBoxInTheLog) {
    const json report = json::parse(kaputil({"demo", "--json"}).out);
    EXPECT_EQ(stepWith(report, "CalcVal", nullptr)["message"], "Valuta XYZ non trovata!");
}

TEST(DemoCommand, ShowsAPrintLayoutThatIsAddedAndLoadedAgain) {
    const json report = json::parse(kaputil({"demo", "--json"}).out);
    const json found = stepWith(report, "CFG_Stampa", true);
    EXPECT_EQ(found["values"], json::parse(R"({"Titolo":"Consegna urgente","Copie":"2"})"));
    const json reset = stepWith(report, "ResetDefault", false);
    EXPECT_EQ(reset["user"], "Anna");
}

TEST(DemoCommand, ShowsAScriptThatMovesLinesAndOneThatIsUndone) {
    const json report = json::parse(kaputil({"demo", "--json"}).out);
    const json moved = stepWith(report, "Execute", true);
    EXPECT_EQ(moved["values"], json::parse(R"({"Righe":"2","Importo":"242,3"})"));
    const json refused = stepWith(report, "Execute", false);
    EXPECT_EQ(refused["user"], "Bruno");
    EXPECT_EQ(refused["values"], moved["values"]);
    EXPECT_TRUE(
        refused["message"].get<std::string>().ends_with(" / La riga 20 è già nel documento"))
        << refused;
}

TEST(DemoCommand, LeavesTheConfigurationAsItWas) {
    const Folder folder;
    ASSERT_EQ(kaputil({"demo", "--database", folder / "a.db"}).exitCode, 0);
    EXPECT_EQ(rowsOf(folder / "a.db", "SELECT COUNT(*) FROM KAP_CFG"), json::parse("[[11]]"));
}

TEST(DemoCommand, ExportsLogsAndKeepsAContactWithoutTouchingTheUsers) {
    const Folder home;
    const Outcome run = kaputil({"demo", "--json"}, "", {"KAPUTIL_HOME=" + home.path()});
    const json report = json::parse(run.out);
    EXPECT_EQ(stepWith(report, "EsportaTXT", true)["values"]["SCHEMA.INI"],
              "col1=Codice Char Width 3");
    EXPECT_EQ(stepWith(report, "WLog", nullptr)["values"]["vertex.log"], "Valute esportate");
    EXPECT_EQ(stepWith(report, "Update", true)["values"]["VisualizzaCome"],
              "1001 - Ferramenta Rossi");
    EXPECT_EQ(shell("ls " + home.path()).out, "registro-demo.html\n");
}

TEST(DemoCommand, EndsByWritingTheRegisterOfItsNumbers) {
    const Folder folder;
    const Outcome run = kaputil({"demo", "--database", folder / "azienda.db"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_TRUE(contains(run.out, "Open " + (folder / "azienda-registro.html") + " in a browser"))
        << run.out;
    const std::string page = shell("cat " + (folder / "azienda-registro.html")).out;
    EXPECT_TRUE(contains(page, "Ferramenta Campione S.r.l."));
    EXPECT_TRUE(contains(page, "prima di PRV 2")) << "the deleted quotation";
}

TEST(DemoCommand, TellsWhyTheRegisterWasNotWritten) {
    const Folder home;
    const std::string file = home.file("home", "no folder");
    const Outcome run = kaputil({"demo"}, "", {"KAPUTIL_HOME=" + file});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_TRUE(contains(run.out, "It was not written: ")) << run.out;
}

TEST(DemoCommand, UsesNoColoursInAFile) {
    EXPECT_FALSE(contains(kaputil({"demo"}).out, "\x1b"));
}

TEST(DemoCommand, PrintsOneJsonObjectForPrograms) {
    const Outcome run = kaputil({"demo", "--json"});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const json report = json::parse(run.out);
    EXPECT_EQ(report["ok"], true);
    EXPECT_EQ(report["created"], true);
    EXPECT_EQ(report["seed"], 2026);
    EXPECT_EQ(report["rows"]["Clienti"], 400);
    EXPECT_EQ(report["rows"]["mag_TDocumenti"], 1600);
    EXPECT_EQ(report["steps"][0]["step"], 1);
    EXPECT_EQ(report["steps"][0]["user"], "Anna");
    EXPECT_EQ(report["steps"][0]["member"], "DB_Read");
    EXPECT_EQ(report["steps"][0]["result"], true);
    EXPECT_EQ(stepWith(report, "DB_Update", false)["message"], kUpdatedByOthers);
    EXPECT_EQ(stepWith(report, "DB_Read", false)["values"]["Sconto"], "0");
    for (const json& step : report["steps"]) {
        EXPECT_EQ(step["expected"], true) << step;
    }
}

TEST(DemoCommand, RunsAgainOnTheSameFile) {
    const Folder folder;
    const json first = json::parse(kaputil({"demo", "--json", "--database", folder / "a.db"}).out);
    const json second = json::parse(kaputil({"demo", "--json", "--database", folder / "a.db"}).out);
    EXPECT_EQ(first["created"], true);
    EXPECT_EQ(second["created"], false);
    EXPECT_EQ(second["seed"], nullptr);
    EXPECT_EQ(second["ok"], true);
    EXPECT_EQ(first["rows"], second["rows"]);
}

TEST(DemoCommand, KeepsWhatItSavedInTheFile) {
    const Folder folder;
    ASSERT_EQ(kaputil({"demo", "--database", folder / "a.db"}).exitCode, 0);
    const json rows = rowsOf(folder / "a.db",
                             "SELECT COUNT(*) FROM mag_TDocumenti WHERE Note = 'Consegna urgente' "
                             "AND Sconto = 7.5");
    EXPECT_EQ(rows, json::parse("[[1]]"));
}

TEST(DemoCommand, MakesTheSameCompanyFromTheSameSeed) {
    const Folder folder;
    const std::string query =
        "SELECT RagioneSociale, PartitaIva, Indirizzo FROM Clienti ORDER BY Codice";
    for (const auto& [name, seed] : {std::pair("a.db", "7"), {"b.db", "7"}, {"c.db", "8"}}) {
        ASSERT_EQ(kaputil({"demo", "--seed", seed, "--database", folder / name}).exitCode, 0);
    }
    const json first = rowsOf(folder / "a.db", query);
    EXPECT_EQ(first.size(), 400U);
    EXPECT_EQ(first, rowsOf(folder / "b.db", query));
    EXPECT_NE(first, rowsOf(folder / "c.db", query));
}

TEST(DemoCommand, WritesValuesInTheUsersLanguage) {
    const Outcome run = kaputil({"demo", "--json"}, {}, {"KAPUTIL_LOCALE=en-US"});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(stepWith(json::parse(run.out), "Scrivi", nullptr)["values"]["Sconto"], "7.5");
    const Outcome italian = kaputil({"demo", "--json"});
    EXPECT_EQ(stepWith(json::parse(italian.out), "Scrivi", nullptr)["values"]["Sconto"], "7,5");
}

TEST(DemoCommand, LeavesNothingBehindWithoutADatabase) {
    const Folder folder;
    ASSERT_EQ(kaputil({"demo"}, {}, {"TMPDIR=" + folder.path()}).exitCode, 0);
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST(DemoCommand, LeavesADatabaseOfOthersAlone) {
    const Folder folder;
    ASSERT_EQ(kaputil({"sql", "--connection", connectionTo(folder / "a.db"), "--command",
                       "CREATE TABLE Ricette (Nome varchar(20))"})
                  .exitCode,
              0);
    const Outcome run = kaputil({"demo", "--database", folder / "a.db"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "kaputil: " + folder / "a.db" +
                           " is a database, but not the sample company's, and was left alone; "
                           "name a new file\n");
}

TEST(DemoCommand, RefusesAFileThatIsNoDatabase) {
    const Folder folder;
    const std::string text = folder.file("lettera.txt", std::string(4096, 'x'));
    const Outcome run = kaputil({"demo", "--database", text});
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_TRUE(run.err.starts_with("kaputil: cannot open " + text + "\nerror ")) << run.err;
}

TEST(DemoCommand, RefusesAFileInAFolderThatIsNotThere) {
    const Folder folder;
    const Outcome run = kaputil({"demo", "--database", folder / "manca/a.db"});
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_TRUE(contains(run.err, "manca/a.db")) << run.err;
}

// The company itself: what a reader of the data would notice.
class SampleCompany : public testing::Test {
protected:
    static void SetUpTestSuite() {
        folder_ = std::make_unique<Folder>();
        ASSERT_EQ(kaputil({"demo", "--database", *folder_ / "a.db"}).exitCode, 0);
    }
    static void TearDownTestSuite() { folder_.reset(); }
    static json rows(const std::string& query) { return rowsOf(*folder_ / "a.db", query); }

    static std::unique_ptr<Folder> folder_;
};
std::unique_ptr<Folder> SampleCompany::folder_;

bool hasValidCheckDigit(const std::string& vatNumber) {
    int sum = 0;
    for (std::size_t i = 0; i < vatNumber.size(); ++i) {
        const int digit = vatNumber[i] - '0';
        sum += i % 2 == 0 ? digit : digit * 2 / 10 + digit * 2 % 10;
    }
    return vatNumber.size() == 11 && sum % 10 == 0;
}

TEST_F(SampleCompany, HasVatNumbersWithTheirCheckDigit) {
    for (const json& row : rows("SELECT PartitaIva FROM Clienti")) {
        EXPECT_TRUE(hasValidCheckDigit(row[0].get<std::string>())) << row;
    }
}

TEST_F(SampleCompany, HasTotalsThatAddUp) {
    EXPECT_EQ(rows("SELECT COUNT(*) FROM mag_TDocumenti WHERE Imponibile + Iva <> Totale"),
              json::parse("[[0]]"));
}

TEST_F(SampleCompany, HasNoDocumentWithoutItsCustomer) {
    EXPECT_EQ(rows("SELECT COUNT(*) FROM mag_TDocumenti INNER JOIN Clienti ON "
                   "Clienti.Codice = mag_TDocumenti.Cliente"),
              rows("SELECT COUNT(*) FROM mag_TDocumenti"));
}

TEST_F(SampleCompany, HasCountersThatStandAtTheLastNumber) {
    EXPECT_EQ(rows("SELECT n_Def FROM vtx_TabPro WHERE Codice = 'FAT' AND Anno = 2025"),
              rows("SELECT MAX(Numero) FROM mag_TDocumenti WHERE Anno = 2025 AND "
                   "(Tipo = 'FAI' OR Tipo = 'NCR')"));
}

TEST_F(SampleCompany, HasInvoiceNumbersWithoutAGap) {
    EXPECT_EQ(rows("SELECT COUNT(*) FROM mag_TDocumenti WHERE Anno = 2025 AND "
                   "(Tipo = 'FAI' OR Tipo = 'NCR')"),
              rows("SELECT MAX(Numero) FROM mag_TDocumenti WHERE Anno = 2025 AND "
                   "(Tipo = 'FAI' OR Tipo = 'NCR')"));
}

}  // namespace
}  // namespace kap::tests
