#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include <nlohmann/json.hpp>

#include "cli/command_line.hpp"
#include "support/text_files.hpp"

namespace kap::tests {
namespace {

using test::contentOf;

using nlohmann::json;

// A database with a configuration: defaults for everybody, and two groups.
class ConfigCommand : public testing::Test {
protected:
    ConfigCommand() {
        sql("CREATE TABLE KAP_CFG (Gruppo varchar(30), Applicazione varchar(30), Procedura "
            "varchar(30), Modulo varchar(30), Campo varchar(30), Valore varchar(60), Flag "
            "varchar(10));"
            "INSERT INTO KAP_CFG VALUES "
            "('DEFAULT', 'Vendite', 'Ordini', 'Stampa', 'Copie', '1', '0'), "
            "('DEFAULT', 'Vendite', 'Ordini', 'Testata', 'Sconto', '15', '1'), "
            "('UFFICIO', 'Vendite', 'Ordini', 'Testata', 'Sconto', '25', '1'), "
            "('UFFICIO', 'Vendite', 'Ordini', 'Stampa', 'Bozza', "
            "'<COPIE>2</COPIE><ADD_RUNTIME>1</ADD_RUNTIME>', '0'), "
            "('BANCO', 'Vendite', 'Ordini', 'Testata', 'Tipo', 'DDT', '0')");
    }

    Outcome sql(const std::string& script) const {
        return kaputil({"sql", "--json", "--connection", connection(), "--command", script});
    }
    [[nodiscard]] std::string connection() const { return connectionTo(folder_ / "a.db"); }
    [[nodiscard]] Outcome config(std::vector<std::string> arguments,
                                 const std::string& input = {}) const {
        arguments.insert(arguments.begin(), "config");
        arguments.insert(arguments.end(), {"--connection", connection()});
        return kaputil(arguments, input);
    }
    // Every row of a group, as "MODULE FIELD=VALUE/FLAG ".
    [[nodiscard]] std::string rowsOf(const std::string& group) const {
        const json answer =
            json::parse(sql("SELECT Modulo, Campo, Valore, Flag FROM KAP_CFG WHERE Gruppo = '" +
                            group + "' ORDER BY Modulo, Campo")
                            .out);
        std::string rows;
        for (const json& row : answer["rows"]) {
            const auto text = [&](const char* column) { return row[column].get<std::string>(); };
            rows += text("Modulo") + " " + text("Campo") + "=" + text("Valore") + "/" +
                    text("Flag") + "\n";
        }
        return rows;
    }
    [[nodiscard]] std::string declaration() const {
        return folder_.file("programma.txt",
                            "# what the program declares\n"
                            "[Vendite\\Ordini\\Testata]\n"
                            "Sconto = 10\n"
                            "    allowed = 10|15|20\n"
                            "    note = Sconto massimo\n"
                            "Tipo = FAI\n"
                            "[Vendite\\Ordini\\Stampa]\n"
                            "Copie\n"
                            "    flag = 1\n");
    }

    Folder folder_;
};

TEST_F(ConfigCommand, ShowsTheTreeOfAGroupFromTheTable) {
    const Outcome run = config({"show", "--group", "UFFICIO"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out,
              "Vendite\n"
              "  Ordini\n"
              "    Stampa\n"
              "      Bozza  flag 0, from UFFICIO, added at run time\n"
              "        COPIE        2\n"
              "        ADD_RUNTIME  1\n"
              "      Copie  1  flag 0, from DEFAULT\n"
              "    Testata\n"
              "      Sconto  25  flag 1, from UFFICIO, over 15 of DEFAULT\n");
}

TEST_F(ConfigCommand, ShowsTheTreeAsTheProgramDeclaresIt) {
    const Outcome run = config({"show", "--group", "BANCO", "--declaration", declaration()});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out,
              "Vendite\n"
              "  Ordini\n"
              "    Testata\n"
              "      Sconto  15  flag 1, from DEFAULT, over 10 of the program\n"
              "        Sconto massimo\n"
              "      Tipo    DDT  flag 0, from BANCO, over FAI of the program\n"
              "    Stampa\n"
              "      Copie  1  flag 0, from DEFAULT\n");
}

TEST_F(ConfigCommand, TellsWhatWouldEndTheProgramsLoad) {
    sql("INSERT INTO KAP_CFG VALUES ('UFFICIO', 'Vendite', 'Ordini', 'Testata', 'Altro', 'x', "
        "'0'), ('UFFICIO', 'Vendite', 'Ordini', 'Testata', 'Tipo', NULL, '0')");
    const Outcome run = config({"show", "--group", "UFFICIO", "--declaration", declaration(),
                                "--path", "vendite\\ordini\\TESTATA"});
    EXPECT_EQ(run.out,
              "Vendite\n"
              "  Ordini\n"
              "    Testata\n"
              "      Sconto  25  flag 1, from UFFICIO, over 15 of DEFAULT and 10 of the program\n"
              "        Sconto massimo\n"
              "        ! UFFICIO: Valore 25 non consentito su CFG Sconto\n"
              "      Tipo    (empty)  flag 0, from UFFICIO, over FAI of the program\n"
              "        ! Null in the row of UFFICIO\n"
              "      Altro   x  flag 0, from UFFICIO\n"
              "        ! not declared\n");
}

TEST_F(ConfigCommand, ShowsOnlyWhatIsBelowAPath) {
    EXPECT_EQ(config({"show", "--group", "UFFICIO", "--path", "Vendite\\Ordini\\Testata"}).out,
              "Vendite\n"
              "  Ordini\n"
              "    Testata\n"
              "      Sconto  25  flag 1, from UFFICIO, over 15 of DEFAULT\n");
    EXPECT_EQ(config({"show", "--group", "UFFICIO", "--path", "Vend"}).out, "No settings.\n");
}

TEST_F(ConfigCommand, ShowsTheSettingsOfEverybody) {
    EXPECT_EQ(config({"show", "--group", "DEFAULT"}).out,
              "Vendite\n"
              "  Ordini\n"
              "    Stampa\n"
              "      Copie  1  flag 0, from DEFAULT\n"
              "    Testata\n"
              "      Sconto  15  flag 1, from DEFAULT\n");
}

TEST_F(ConfigCommand, TakesNamesForTheSameInAnyLetters) {
    sql("INSERT INTO KAP_CFG VALUES ('ufficio', 'VENDITE', 'ordini', 'TESTATA', 'Nuovo', 'n', "
        "'0'), ('Ufficio', 'vendite', 'Ordini', 'Stampa', 'COPIE', '4', '0')");
    EXPECT_EQ(config({"show", "--group", "UFFICIO"}).out,
              "Vendite\n"
              "  Ordini\n"
              "    Stampa\n"
              "      Bozza  flag 0, from UFFICIO, added at run time\n"
              "        COPIE        2\n"
              "        ADD_RUNTIME  1\n"
              "      Copie  4  flag 0, from UFFICIO, over 1 of DEFAULT\n"
              "    TESTATA\n"
              "      Nuovo   n  flag 0, from UFFICIO\n"
              "      Sconto  25  flag 1, from UFFICIO, over 15 of DEFAULT\n");
}

TEST_F(ConfigCommand, ShowsTheTreeInJson) {
    const Outcome run =
        config({"show", "--group", "UFFICIO", "--json", "--declaration", declaration()});
    const json shown = json::parse(run.out);
    EXPECT_EQ(shown["group"], "UFFICIO");
    ASSERT_EQ(shown["settings"].size(), 4U);
    const json discount = shown["settings"][0];
    EXPECT_EQ(discount["field"], "Sconto");
    EXPECT_EQ(discount["value"], "25");
    EXPECT_EQ(discount["from"], "UFFICIO");
    EXPECT_EQ(discount["program"]["allowed"], "10|15|20");
    EXPECT_EQ(discount["everybody"], json::parse(R"({"value":"15","flag":"1"})"));
    EXPECT_EQ(discount["problems"].size(), 1U);
    EXPECT_EQ(shown["settings"][1]["from"], "program");
    EXPECT_EQ(shown["settings"][1]["group"], nullptr);
    EXPECT_EQ(shown["settings"][3]["addedAtRunTime"], true);
}

TEST_F(ConfigCommand, ShowsWhereTwoGroupsDiffer) {
    const Outcome run = config({"diff", "UFFICIO", "BANCO"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out,
              "Vendite\\Ordini\\Stampa\\Bozza\n"
              "  UFFICIO  <COPIE>2</COPIE><ADD_RUNTIME>1</ADD_RUNTIME>  flag 0\n"
              "  BANCO    (no value)\n"
              "Vendite\\Ordini\\Testata\\Sconto\n"
              "  UFFICIO  25  flag 1\n"
              "  BANCO    15  flag 1, from DEFAULT\n"
              "Vendite\\Ordini\\Testata\\Tipo\n"
              "  UFFICIO  (no value)\n"
              "  BANCO    DDT  flag 0\n");
    EXPECT_EQ(config({"diff", "UFFICIO", "UFFICIO"}).out, "No differences.\n");
}

TEST_F(ConfigCommand, ShowsOfPrintsOnlyTheAttributesThatDiffer) {
    sql("INSERT INTO KAP_CFG VALUES "
        "('A', 'V', 'O', 'S', 'P', '<TITOLO>x</TITOLO><COPIE>2</COPIE><SIGLA></SIGLA>', '0'), "
        "('B', 'V', 'O', 'S', 'P', '<TITOLO>x</TITOLO><COPIE>3</COPIE><SIGLA>b</SIGLA>', '0')");
    EXPECT_EQ(config({"diff", "A", "B", "--path", "V"}).out,
              "V\\O\\S\\P\n"
              "  A  COPIE 2, SIGLA (empty)  flag 0\n"
              "  B  COPIE 3, SIGLA b  flag 0\n");
}

TEST_F(ConfigCommand, ShowsDifferencesInJson) {
    const json shown = json::parse(
        config({"diff", "UFFICIO", "BANCO", "--json", "--declaration", declaration()}).out);
    ASSERT_EQ(shown["differences"].size(), 3U);
    EXPECT_EQ(shown["differences"][1]["field"], "Tipo");
    EXPECT_EQ(shown["differences"][1]["groups"][0],
              json::parse(R"({"value":"FAI","flag":"0","from":"program"})"));
    EXPECT_EQ(shown["differences"][1]["groups"][1],
              json::parse(R"({"value":"DDT","flag":"0","from":"BANCO"})"));
}

TEST_F(ConfigCommand, ComparesManyGroupsAtOnce) {
    const Outcome run =
        config({"diff", "UFFICIO", "BANCO", "default", "--path", "Vendite\\Ordini\\Testata"});
    EXPECT_EQ(run.out,
              "Vendite\\Ordini\\Testata\\Sconto\n"
              "  UFFICIO  25  flag 1\n"
              "  BANCO    15  flag 1, from DEFAULT\n"
              "  default  15  flag 1\n"
              "Vendite\\Ordini\\Testata\\Tipo\n"
              "  UFFICIO  (no value)\n"
              "  BANCO    DDT  flag 0\n"
              "  default  (no value)\n");
    const Outcome page =
        config({"diff", "UFFICIO", "BANCO", "DEFAULT", "--html", "--language", "en"});
    EXPECT_TRUE(contains(page.out, "<th>UFFICIO</th><th>BANCO</th><th>DEFAULT</th>")) << page.out;
    EXPECT_TRUE(contains(page.out,
                         "<tr class=\"differs\"><th>Sconto</th>"
                         "<td class=\"own\">25 <span class=\"soft\">flag 1</span></td>"
                         "<td>15 <span class=\"soft\">flag 1</span></td>"
                         "<td>15 <span class=\"soft\">flag 1</span></td></tr>"))
        << page.out;
    EXPECT_TRUE(contains(page.out, "<tr><th>Copie</th><td>1 <span")) << page.out;
    EXPECT_TRUE(contains(page.out, "differences: 3")) << page.out;
    EXPECT_EQ(config({"diff", "UFFICIO"}).err,
              "kaputil: two groups or more are compared (see \"kaputil config diff --help\")\n");
}

TEST_F(ConfigCommand, ListsTheGroups) {
    EXPECT_EQ(config({"groups"}).out,
              "BANCO    1 row, 1 of its own\n"
              "DEFAULT  2 rows, 2 of its own\n"
              "UFFICIO  2 rows, 2 of its own\n");
    sql("INSERT INTO KAP_CFG VALUES "
        "('banco', 'Vendite', 'Ordini', 'Testata', 'Sconto', '15', '1')");
    const json listed = json::parse(config({"groups", "--json"}).out);
    ASSERT_EQ(listed["groups"].size(), 3U) << listed;
    EXPECT_EQ(listed["groups"][0],
              json::parse(R"({"group":"BANCO","rows":2,"own":1,"problems":0})"));
}

TEST_F(ConfigCommand, ShowsWhatIsDeclaredAgainstWhatTheTableHolds) {
    const Outcome run = config({"declared", "--declaration", declaration()});
    EXPECT_TRUE(contains(run.out, "Vendite\n  Ordini\n    Testata\n      Sconto  ")) << run.out;
    EXPECT_TRUE(contains(run.out, "        UFFICIO  25  flag 1\n")) << run.out;
    EXPECT_TRUE(contains(run.out, "        BANCO  DDT  flag 0\n")) << run.out;
    const json shown =
        json::parse(config({"declared", "--declaration", declaration(), "--json"}).out);
    EXPECT_EQ(shown["settings"].size() > 2, true) << shown;
    EXPECT_EQ(config({"declared"}).exitCode, 2);
}

TEST_F(ConfigCommand, WritesTheRowsOfAGroupAsAText) {
    const Outcome run = config({"export", "--group", "UFFICIO"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out,
              "# Configuration of the group UFFICIO\n"
              "\n"
              "[Vendite\\Ordini\\Stampa]\n"
              "Bozza = <COPIE>2</COPIE><ADD_RUNTIME>1</ADD_RUNTIME>\n"
              "    flag = 0\n"
              "\n"
              "[Vendite\\Ordini\\Testata]\n"
              "Sconto = 25\n"
              "    flag = 1\n");
    const Outcome toFile = config({"export", "--group", "UFFICIO", "--file", folder_ / "u.txt"});
    EXPECT_EQ(toFile.out, "");
    EXPECT_EQ(contentOf(folder_ / "u.txt"), run.out);
}

TEST_F(ConfigCommand, WritesTheRowsOfAGroupInJson) {
    const json written = json::parse(
        config({"export", "--group", "UFFICIO", "--json", "--path", "Vendite\\Ordini\\Testata"})
            .out);
    EXPECT_EQ(written["settings"], json::parse(R"([{"application":"Vendite","procedure":"Ordini",
        "module":"Testata","field":"Sconto","value":"25","flag":"1"}])"));
}

TEST_F(ConfigCommand, BringsBackWhatItWrote) {
    const std::string text = config({"export", "--group", "UFFICIO"}).out;
    const Outcome run = config({"import", "--group", "NUOVO"}, text);
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, "2 settings of the group NUOVO written.\n");
    EXPECT_EQ(rowsOf("NUOVO"), rowsOf("UFFICIO"));
}

TEST_F(ConfigCommand, BringsBackTextsOfEveryKind) {
    sql("INSERT INTO KAP_CFG VALUES "
        "('STRANO', 'A ]', ' B', '\"C\"', '#x = y', ' due  blank ', ''), "
        "('STRANO', 'A ]', ' B', '\"C\"', 'vuoto', '', '1'), "
        "('STRANO', 'A ]', ' B', '\"C\"', '', '\"detto\"', '1'), "
        "('STRANO', 'A ]', ' B', '\"C\"', 'righe', 'una' + CHAR(13) + CHAR(10) + 'due', 'è'), "
        "('STRANO', 'A ]', ' B', '\"C\"', 'segno', '[x\\y] = #z', '|')");
    const std::string text = config({"export", "--group", "STRANO"}).out;
    EXPECT_EQ(config({"import", "--group", "NUOVO"}, text).exitCode, 0) << text;
    EXPECT_EQ(rowsOf("NUOVO"), rowsOf("STRANO")) << text;
    EXPECT_NE(rowsOf("NUOVO"), "");
}

TEST_F(ConfigCommand, LeavesTheGroupsOtherRowsUnlessTheyAreReplaced) {
    const std::string text = "[Vendite\\Ordini\\Testata]\nTipo = NCR\n";
    EXPECT_EQ(config({"import", "--group", "UFFICIO"}, text).exitCode, 0);
    EXPECT_EQ(rowsOf("UFFICIO"),
              "Stampa Bozza=<COPIE>2</COPIE><ADD_RUNTIME>1</ADD_RUNTIME>/0\n"
              "Testata Sconto=25/1\n"
              "Testata Tipo=NCR/0\n");
    const Outcome run = config({"import", "--group", "UFFICIO", "--replace"}, text);
    EXPECT_EQ(run.out, "1 setting of the group UFFICIO written in place of 3.\n");
    EXPECT_EQ(rowsOf("UFFICIO"), "Testata Tipo=NCR/0\n");
    EXPECT_EQ(rowsOf("DEFAULT"), "Stampa Copie=1/0\nTestata Sconto=15/1\n");
}

TEST_F(ConfigCommand, TellsWhatItImportedInJson) {
    const Outcome run =
        config({"import", "--group", "BANCO", "--replace", "--json"}, "[A\\B\\C]\nD = 1\n");
    EXPECT_EQ(json::parse(run.out),
              json::parse(R"({"group":"BANCO","table":"KAP_CFG","written":1,"removed":1})"));
}

TEST_F(ConfigCommand, ImportsNothingWhenAnythingIsRefused) {
    const std::string before = rowsOf("UFFICIO");
    const Outcome run =
        config({"import", "--group", "UFFICIO", "--replace", "--declaration", declaration()},
               "[Vendite\\Ordini\\Testata]\n"
               "Sconto = 20\n"
               "Tipo = DDT\n"
               "    flag = 7\n"
               "Altro = 1\n"
               "SCONTO = 15\n"
               "Nuovo = <ADD_RUNTIME></ADD_RUNTIME>\n"
               "[Vendite\\Ordini\\Video]\n"
               "Nuovo = <ADD_RUNTIME></ADD_RUNTIME>\n"
               "L'altro = 1\n"
               "Vuoto\n");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err,
              "kaputil: line 3: Valore 7 non consentito su CFG Tipo\n"
              "kaputil: line 5: Vendite\\Ordini\\Testata\\Altro is not declared\n"
              "kaputil: line 6: Vendite\\Ordini\\Testata\\SCONTO is there a second time\n"
              "kaputil: line 9: Vendite\\Ordini\\Video\\Nuovo is not declared\n"
              "kaputil: line 10: a name with ' or \\ cannot be stored: L'altro\n"
              "kaputil: line 11: Vendite\\Ordini\\Video\\Vuoto has no value\n"
              "kaputil: nothing was imported\n");
    EXPECT_EQ(rowsOf("UFFICIO"), before);
}

TEST_F(ConfigCommand, TellsRefusalsInJson) {
    const Outcome run = config({"import", "--group", "G", "--json"}, "[A\\B\\C]\nD\n");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(json::parse(run.err),
              json::parse(R"({"refused":["line 2: A\\B\\C\\D has no value"]})"));
}

TEST_F(ConfigCommand, ImportsNothingWhenTheDatabaseRefusesARow) {
    const std::string before = rowsOf("UFFICIO");
    const Outcome run =
        config({"import", "--group", "UFFICIO", "--replace"},
               "[Vendite\\Ordini\\Testata]\nTipo = NCR\nLungo = " + std::string(61, 'x') + "\n");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_TRUE(run.err.starts_with("error ")) << run.err;
    EXPECT_EQ(rowsOf("UFFICIO"), before);
}

TEST_F(ConfigCommand, RefusesFilesThatAreNone) {
    const auto error = [&](const std::string& text) {
        const Outcome run = config({"import", "--group", "G"}, text);
        EXPECT_EQ(run.exitCode, 2);
        return run.err;
    };
    EXPECT_EQ(error("Campo = 1\n"),
              "kaputil: standard input, line 1: a field stands below a heading "
              "[application\\procedure\\module]\n");
    EXPECT_EQ(error("\n[A\\B]\n"),
              "kaputil: standard input, line 2: a heading is [application\\procedure\\module]\n");
    EXPECT_EQ(error("[A\\B\\C]\n  flag = 1\n"),
              "kaputil: standard input, line 2: an indented line tells more of a field, and there "
              "is none above it\n");
    EXPECT_EQ(error("[A\\B\\C]\nD = 1\n  colore = blu\n"),
              "kaputil: standard input, line 3: \"colore\" is none of flag, allowed, flags, note "
              "and mandatory (yes or no)\n");
    EXPECT_EQ(error("[A\\B\\C]\nD = \"1\n"),
              "kaputil: standard input, line 2: a text in quotes is not written as in JSON\n");
    EXPECT_EQ(error("[A\\B\\C]\nD = \"1\" 2\n"),
              "kaputil: standard input, line 2: nothing may stand behind a text in quotes\n");
}

TEST_F(ConfigCommand, RefusesADeclarationThatNamesAFieldTwice) {
    const std::string file = folder_.file("due.txt", "[A\\B\\C]\nD = 1\nd = 2\n");
    const Outcome run = config({"show", "--group", "G", "--declaration", file});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_EQ(run.err, "kaputil: line 3: A\\B\\C\\d is there a second time\n");
}

TEST_F(ConfigCommand, RefusesGroupsThatCannotBeStored) {
    for (const char* group : {"", "L'ufficio", "a\\b"}) {
        const Outcome run = config({"import", "--group", group}, "");
        EXPECT_EQ(run.exitCode, 2) << group;
        EXPECT_EQ(run.err,
                  "kaputil: a group without a name, or with ' or \\ in it, cannot be stored\n");
    }
}

TEST_F(ConfigCommand, TellsThatATableIsNotThere) {
    const Outcome run = config({"show", "--group", "G", "--table", "MANCA_CFG"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.err, "error 208, line 1: Invalid object name 'MANCA_CFG'.\n");
}

TEST_F(ConfigCommand, TellsThatADatabaseCannotBeOpened) {
    const Outcome run = kaputil({"config", "show", "--group", "G", "--connection", "Provider=Z"});
    EXPECT_EQ(run.exitCode, 3);
}

TEST_F(ConfigCommand, WantsACommandAGroupAndAConnection) {
    EXPECT_EQ(kaputil({"config"}).exitCode, 2);
    EXPECT_EQ(kaputil({"config", "show", "--group", "G"}).exitCode, 2);
    EXPECT_EQ(config({"show"}).exitCode, 2);
    EXPECT_EQ(config({"diff", "UFFICIO"}).exitCode, 2);
}

}  // namespace
}  // namespace kap::tests
