#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <sstream>
#include <string_view>

#include <nlohmann/json.hpp>

#include "cli/command_line.hpp"
#include "support/text_files.hpp"

namespace kap::tests {
namespace {

using nlohmann::json;

json classesJson(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "classes");
    arguments.emplace_back("--json");
    const Outcome run = kaputil(arguments);
    EXPECT_EQ(run.exitCode, 0) << run.err;
    return json::parse(run.out);
}

std::string namesOf(const std::vector<std::string>& arguments) {
    std::vector<std::string> words = {"classes", "--names"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    const Outcome run = kaputil(words);
    EXPECT_EQ(run.exitCode, 0) << run.err;
    return run.out;
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

// The row of a class in the table, its blanks made one.
std::string rowOf(const std::string& table, const std::string& name) {
    for (const std::string& line : linesOf(table)) {
        std::istringstream words(line);
        std::string word;
        words >> word;
        if (word == name) {
            std::string row = word;
            while (words >> word) {
                row += " " + word;
            }
            return row;
        }
    }
    return {};
}

TEST(ClassesCommand, ListsEveryClassInTheOrderOfTheLibrary) {
    const json catalogue = classesJson({});
    std::vector<std::string> names;
    for (const json& shown : catalogue["classes"]) {
        names.push_back(shown["name"]);
    }
    const std::vector<std::string> expected = {
        "IClassi",       "CSystem",   "CRegistro",  "CFileINI",         "CErrore",
        "CProprieta",    "CFG_Campi", "CFG_Moduli", "CFG_Modulo",       "CFG_Procedura",
        "CFG_Procedure", "CConstant", "CFG_Campo",  "CFG_Applicazioni", "CFG_Applicazione",
        "CFG_Stampa",    "CEMail",    "CSQL",       "StdFunctions"};
    EXPECT_EQ(names, expected);
}

TEST(ClassesCommand, ShowsEachClassOfTheTableOnALine) {
    const std::string table = kaputil({"classes", "--language", "en"}).out;
    EXPECT_TRUE(rowOf(table, "IClassi").starts_with("IClassi creatable - 7 ")) << table;
    EXPECT_TRUE(rowOf(table, "CProprieta").starts_with("CProprieta creatable - 5 ")) << table;
    EXPECT_TRUE(rowOf(table, "CConstant").starts_with("CConstant not creatable - 0 ")) << table;
    EXPECT_TRUE(rowOf(table, "StdFunctions").starts_with("StdFunctions global - ")) << table;
    const std::string italian = kaputil({"classes", "--language", "it"}).out;
    EXPECT_TRUE(rowOf(italian, "CConstant").starts_with("CConstant non creabile - 0 ")) << italian;
}

TEST(ClassesCommand, TellsTheIdentityOfTheLibrary) {
    const Outcome run = kaputil({"classes"});
    EXPECT_TRUE(
        run.out.starts_with("KapUtil  KAP Utility 2.6, versione 2.06.0005\n"
                            "libreria dei tipi 749c4a7f-4612-49ed-994a-2e3285c059ca, versione "
                            "1.0; modulo KapUtil26\n"))
        << run.out;
}

TEST(ClassesCommand, TellsTheIdentityOfTheLibraryToPrograms) {
    EXPECT_EQ(classesJson({})["library"], json::parse(R"({
        "name": "KapUtil", "description": "KAP Utility 2.6",
        "typeLibrary": {"id": "749c4a7f-4612-49ed-994a-2e3285c059ca", "version": "1.0"},
        "module": "KapUtil26", "fileVersion": "2.6.0.5", "fileVersionText": "2.06.0005"})"));
}

TEST(ClassesCommand, ListsWhatElseCanBeMadeByName) {
    const json platform = classesJson({})["platform"];
    std::vector<std::string> names;
    for (const json& shown : platform) {
        names.push_back(shown["programmaticName"]);
    }
    const std::vector<std::string> expected = {
        "ADODB.Command", "ADODB.Connection",           "ADODB.Parameter",    "ADODB.Recordset",
        "ADODB.Stream",  "Scripting.FileSystemObject", "Outlook.Application"};
    EXPECT_EQ(names, expected);
}

TEST(ClassesCommand, ShowsAClassAsAnObjectBrowserDoes) {
    const Outcome run = kaputil({"classes", "CProprieta", "--language", "en"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_TRUE(run.out.starts_with("KapUtil.CProprieta\nA bag of named values")) << run.out;
    EXPECT_TRUE(contains(run.out,
                         "  Identity        80368bd9-a134-4db3-b976-3eff993d4529\n"
                         "  Interface       _CProprieta  47799a54-02c1-4447-9acc-eb0cc14f0d34\n"
                         "  Instancing      creatable\n"
                         "  Default member  none\n"))
        << run.out;
    EXPECT_TRUE(contains(run.out,
                         "\n  Function Leggi(Optional ByRef sNomeProprieta As Variant = "
                         "\"DEFAULT\") As Variant\n"))
        << run.out;
    EXPECT_TRUE(contains(run.out,
                         "\n  Sub Scrivi(ByRef sNomeProprieta As String, ByRef sValore As "
                         "Variant)\n"))
        << run.out;
    EXPECT_TRUE(contains(run.out, "\n      Identifier 0x60030002\n")) << run.out;
}

TEST(ClassesCommand, ShowsAPropertyWithItsWaysOfAccess) {
    const Outcome run = kaputil({"classes", "CErrore.Numero", "--language", "en"});
    EXPECT_TRUE(contains(run.out, "\n  Property Get/Let Numero As Variant\n") ||
                contains(run.out, "\n  Property Get/Let/Set Numero As Variant\n"))
        << run.out;
    EXPECT_TRUE(contains(run.out, "Identifier 0x68030000\n")) << run.out;
}

TEST(ClassesCommand, MarksTheDefaultMember) {
    const Outcome run = kaputil({"classes", "ADODB.Connection", "--language", "en"});
    EXPECT_TRUE(contains(run.out, "Default member  ConnectionString\n")) << run.out;
    EXPECT_TRUE(contains(run.out, "Identifier 0x00000000, the default member\n")) << run.out;
}

TEST(ClassesCommand, TellsEverythingOfAMember) {
    const Outcome run = kaputil({"classes", "CProprieta.Leggi", "--language", "en"});
    EXPECT_EQ(
        run.out,
        "KapUtil.CProprieta.Leggi\n"
        "  Function Leggi(Optional ByRef sNomeProprieta As Variant = \"DEFAULT\") As Variant\n"
        "      Reads the value of a property by name or position, or the whole text.\n"
        "      sNomeProprieta\n"
        "          A text or a database field is a name; anything else is a position from 1, "
        "rounded to a whole number, so that Leggi(2) is the second property and Leggi(\"2\") "
        "the one named 2.\n"
        "          \"DEFAULT\"  the whole property string; written exactly so, \"default\" is "
        "a name like any other\n"
        "      Result\n"
        "          The value as a text, Null when there is no such property.\n"
        "      Errors\n"
        "          5   The property's opening tag has no closing one.\n"
        "          6   The position is beyond 32767.\n"
        "          94  The position is Null.\n"
        "      Example\n"
        "          p.Scrivi \"Citta\", \"Bari\"\n"
        "          WScript.Echo p.Leggi(\"CITTA\"), p.Leggi(1)   ' Bari Bari\n"
        "      Identifier 0x60030001\n");
}

TEST(ClassesCommand, SpeaksTheLanguageOfTheLocaleUnlessGiven) {
    const auto out = [](const std::vector<std::string>& options, const std::string& locale) {
        std::vector<std::string> words = {"classes", "StdFunctions.Progressivi"};
        words.insert(words.end(), options.begin(), options.end());
        return kaputil(words, "", {"KAPUTIL_LOCALE=" + locale}).out;
    };
    EXPECT_TRUE(contains(out({}, "it-IT"), "\"P\"  provvisoria (n_Prov)"));
    EXPECT_TRUE(contains(out({}, "en-GB"), "\"P\"  provisional (n_Prov)"));
    EXPECT_EQ(out({"--language", "it"}, "en-GB"), out({}, "it-IT"));
    EXPECT_EQ(kaputil({"classes", "--language", "fr"}).exitCode, 2);
}

TEST(ClassesCommand, ShowsTheObjectsThatMembersGive) {
    const Outcome run = kaputil({"classes", "field.value", "--language", "en"});
    EXPECT_TRUE(run.out.starts_with("Field.Value\n  Property Get/Let Value As Variant\n"))
        << run.out;
    EXPECT_TRUE(contains(run.out, "3421 (-2146824867)  The value does not convert")) << run.out;
    EXPECT_TRUE(contains(kaputil({"classes", "RecordsetEvents"}).out, "WillMove("));
    EXPECT_TRUE(contains(kaputil({"classes", "--language", "en"}).out, "\nMailItem "));
}

std::string fileIn(const std::string& folder, const std::string& name) {
    return test::contentOf(folder + "/" + name);
}

// Every reference of a page to another one, with what it names in it.
std::vector<std::string> linksOf(const std::string& page) {
    std::vector<std::string> links;
    constexpr std::string_view kBefore = "href=\"";
    for (std::size_t at = page.find(kBefore); at != std::string::npos;
         at = page.find(kBefore, at + 1)) {
        const std::size_t from = at + kBefore.size();
        links.push_back(page.substr(from, page.find('"', from) - from));
    }
    return links;
}

TEST(ClassesCommand, WritesThePagesOfTheReferenceInBothLanguages) {
    const Folder folder;
    const std::string root = folder / "pages";
    EXPECT_EQ(kaputil({"classes", "--html", root}).exitCode, 0);
    const std::string italian = fileIn(root, "it/StdFunctions.html");
    EXPECT_TRUE(contains(italian, "<html lang=\"it\">"));
    EXPECT_TRUE(contains(italian, "<section id=\"Progressivi\">"));
    EXPECT_TRUE(contains(italian, "<code>&quot;P&quot;</code></th><td>provvisoria (n_Prov)"));
    EXPECT_TRUE(contains(italian, "<h3>Errori</h3>"));
    EXPECT_TRUE(contains(italian, "f.Progressivi(&quot;FAI&quot;"));
    EXPECT_TRUE(contains(fileIn(root, "en/StdFunctions.html"), "provisional (n_Prov)"));
    EXPECT_TRUE(contains(fileIn(root, "en/Recordset.html"), "<a href=\"Fields.html\">Fields</a>"));
}

TEST(ClassesCommand, ShowsEveryExampleInThreeLanguagesOnItsPages) {
    const Folder folder;
    EXPECT_EQ(kaputil({"classes", "--html", folder.path()}).exitCode, 0);
    const std::string page = fileIn(folder.path(), "it/CProprieta.html");
    EXPECT_TRUE(contains(page, "<legend>Esempi in</legend>"));
    EXPECT_TRUE(contains(
        page, "<h4>VBScript</h4><pre>Set p = CreateObject(&quot;KapUtil.CProprieta&quot;)\n"));
    EXPECT_TRUE(
        contains(page,
                 "#include &lt;kaputil/core/cproprieta.hpp&gt;\n#include &lt;iostream&gt;\n\n"
                 "const auto p = kap::make&lt;kap::CProprieta&gt;();\n"));
    EXPECT_TRUE(contains(
        page, "<h4>Python</h4><pre>p = kaputil.Dispatch(&quot;KapUtil.CProprieta&quot;)\n"));
    EXPECT_FALSE(contains(fileIn(folder.path(), "it/Error.html"), "<legend>"));
}

TEST(ClassesCommand, WritesPagesThatLeadToEachOtherAndNowhereElse) {
    namespace fs = std::filesystem;
    const Folder folder;
    EXPECT_EQ(kaputil({"classes", "--html", folder.path()}).exitCode, 0);
    for (const auto& entry : fs::recursive_directory_iterator(folder.path())) {
        if (entry.is_directory()) {
            continue;
        }
        const std::string page = test::contentOf(entry.path().string());
        EXPECT_FALSE(contains(page, "http")) << entry.path();
        EXPECT_FALSE(contains(page, "src=")) << entry.path();
        for (const std::string& link : linksOf(page)) {
            const std::size_t mark = link.find('#');
            const fs::path target =
                mark == 0 ? entry.path() : entry.path().parent_path() / link.substr(0, mark);
            ASSERT_TRUE(fs::exists(target)) << entry.path() << " " << link;
            if (mark != std::string::npos) {
                EXPECT_TRUE(contains(test::contentOf(target.string()),
                                     "id=\"" + link.substr(mark + 1) + "\""))
                    << link;
            }
        }
    }
}

// What the index of a language searches in.
json searchedEntries(const std::string& folder, const std::string& language) {
    const std::string index = fileIn(folder, language + "/index.html");
    const std::string begin = "const ENTRIES = ";
    const std::size_t from = index.find(begin) + begin.size();
    return json::parse(index.substr(from, index.find(";\n", from) - from));
}

TEST(ClassesCommand, FindsNothingThatIsNotThere) {
    const Folder folder;
    EXPECT_EQ(kaputil({"classes", "--html", folder.path()}).exitCode, 0);
    for (const std::string language : {"it", "en"}) {
        const json entries = searchedEntries(folder.path(), language);
        EXPECT_GT(entries.size(), 300U);
        std::map<std::string, std::string> pages;
        for (const json& entry : entries) {
            const std::string href = entry[1].get<std::string>();
            const std::size_t mark = href.find('#');
            const std::string name = href.substr(0, mark);
            if (!pages.contains(name)) {
                pages[name] = fileIn(folder.path(), language + "/" + name);
            }
            const std::string& page = pages[name];
            EXPECT_TRUE(mark == std::string::npos ||
                        contains(page, "id=\"" + href.substr(mark + 1) + "\""))
                << href;
            EXPECT_FALSE(page.empty()) << href;
        }
    }
}

TEST(ClassesCommand, HasAnIndexToSearchInWithoutAServer) {
    const Folder folder;
    EXPECT_EQ(kaputil({"classes", "--html", folder.path()}).exitCode, 0);
    const json entries = searchedEntries(folder.path(), "it");
    const auto has = [&](const std::string& name, const std::string& href) {
        return std::ranges::any_of(
            entries, [&](const json& one) { return one[0] == name && one[1] == href; });
    };
    EXPECT_TRUE(has("CProprieta", "CProprieta.html"));
    EXPECT_TRUE(has("StdFunctions.Progressivi", "StdFunctions.html#Progressivi"));
    EXPECT_TRUE(has("Recordset.MoveNext", "Recordset.html#MoveNext"));
}

TEST(ClassesCommand, ShowsAGeneralFunctionByItsOwnName) {
    EXPECT_EQ(kaputil({"classes", "kapround"}).out,
              kaputil({"classes", "StdFunctions.KapRound"}).out);
}

TEST(ClassesCommand, TellsWhatIsWrongWithAName) {
    const auto said = [](const std::string& name) {
        const Outcome run = kaputil({"classes", name});
        EXPECT_EQ(run.exitCode, 2) << name;
        EXPECT_EQ(run.out, "") << name;
        return run.err;
    };
    EXPECT_EQ(said("CPropieta.Leggi"),
              "kaputil: there is no class CPropieta; did you mean CProprieta?\n");
    EXPECT_EQ(said("CProprieta."), "kaputil: no member is named behind CProprieta.\n");
    EXPECT_EQ(said("CProprieta.Leggi.x"),
              "kaputil: there is no class CProprieta.Leggi; did you mean CProprieta?\n");
    EXPECT_EQ(said("ADODB.Conection"),
              "kaputil: there is no class ADODB.Conection; did you mean ADODB.Connection?\n");
    EXPECT_EQ(said("ADODB.Connection.Opn"),
              "kaputil: Connection has no member Opn; did you mean Open?\n");
    EXPECT_EQ(said("KapRond"),
              "kaputil: there is no class KapRond; did you mean KapRound or kapGoTo?\n");
    EXPECT_EQ(said("Perché"), "kaputil: there is no class Perché\n");
}

TEST(ClassesCommand, FindsNamesIgnoringCase) {
    const Outcome run = kaputil({"classes", "CProprieta.Leggi"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(kaputil({"classes", "cproprieta.LEGGI"}).out, run.out);
    EXPECT_EQ(kaputil({"classes", "kaputil.CPROPRIETA.leggi"}).out, run.out);
}

TEST(ClassesCommand, ShowsOneMemberOnly) {
    const Outcome run = kaputil({"classes", "CProprieta.Elimina"});
    EXPECT_TRUE(
        run.out.starts_with("KapUtil.CProprieta.Elimina\n"
                            "  Sub Elimina(ByRef sNomeProprieta As String)\n"))
        << run.out;
    EXPECT_FALSE(contains(run.out, "Sub Scrivi(")) << run.out;
}

TEST(ClassesCommand, DescribesAMemberToPrograms) {
    json member = classesJson({"StdFunctions.kapVal"});
    EXPECT_FALSE(member["summary"].get<std::string>().empty());
    member.erase("summary");
    EXPECT_EQ(member["documentation"]["parameters"]["vValore"]["text"].get<std::string>().empty(),
              false);
    member.erase("documentation");
    member.erase("dispatchId");
    EXPECT_EQ(member, json::parse(R"({
        "class": "KapUtil.StdFunctions", "name": "kapVal", "kind": "method", "access": [],
        "default": false, "result": "Variant",
        "parameters": [
            {"name": "vValore", "type": "Variant", "passing": "ByVal", "optional": false},
            {"name": "sDataType", "type": "String", "passing": "ByRef", "optional": true,
             "default": "Double"}]})"));
}

TEST(ClassesCommand, ShowsTheEnumeration) {
    EXPECT_EQ(classesJson({"costantinumeriche"})["values"].size(), 6U);
    EXPECT_EQ(kaputil({"classes", "CostantiNumeriche", "--language", "en"}).out,
              "CostantiNumeriche  Value  Meaning\n"
              "kaOK                   0  success\n"
              "kaerror                1  failure\n"
              "kaCodiceFiscale        2  kind of code: Italian personal tax code\n"
              "kaPartitaIva           3  kind of code: Italian VAT number\n"
              "kaHBordo              60  height of a window border, in twips\n"
              "kaHBarra             270  height of a title or tool bar, in twips\n");
    const std::string italian = kaputil({"classes", "CostantiNumeriche"}).out;
    EXPECT_TRUE(
        italian.starts_with("CostantiNumeriche  Valore  Significato\n"
                            "kaOK                    0  riuscito\n"))
        << italian;
}

TEST(ClassesCommand, ShowsTheConstantsOfDataAccess) {
    EXPECT_EQ(kaputil({"classes", "cursorlocationenum"}).out,
              "CursorLocationEnum  Valore\n"
              "adUseServer         2\n"
              "adUseClient         3\n"
              "adUseNone           1\n"
              "adUseClientBatch    3\n");
    EXPECT_TRUE(
        contains(kaputil({"classes"}).out, "\nCostanti dell'accesso ai dati\nCursorTypeEnum, "));
    const json all = classesJson({});
    EXPECT_GT(all["dataAccessEnumerations"].size(), 10U);
    EXPECT_EQ(all["dataAccessEnumerations"][0]["values"][1]["name"], "adOpenForwardOnly");
    const auto names = [&](const char* list) {
        std::string joined;
        for (const json& one : all[list]) {
            joined += one["name"].get<std::string>() + " ";
        }
        return joined;
    };
    EXPECT_TRUE(contains(names("objects"), "Field ")) << names("objects");
    EXPECT_TRUE(contains(names("objects"), "RecordsetEvents ")) << names("objects");
}

TEST(ClassesCommand, PrintsPlainNamesForOtherTools) {
    EXPECT_EQ(namesOf({"CProprieta"}), "Elimina\nLeggi\nScrivi\nCount\nNomeProprieta\n");
    EXPECT_EQ(namesOf({"CProprieta.Scrivi"}), "sNomeProprieta\nsValore\n");
    EXPECT_EQ(namesOf({"CProprieta.Count"}), "");
    EXPECT_TRUE(contains(namesOf({}), "\nCConstant\n"));
}

TEST(ClassesCommand, SuggestsTheNearestClass) {
    const Outcome run = kaputil({"classes", "Propieta"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "kaputil: there is no class Propieta; did you mean CProprieta?\n");
}

TEST(ClassesCommand, SuggestsTheNearestMember) {
    const Outcome run = kaputil({"classes", "cproprieta.Legi"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_EQ(run.err, "kaputil: CProprieta has no member Legi; did you mean Leggi?\n");
}

TEST(ClassesCommand, SuggestsNothingForANameLikeNoOther) {
    const Outcome run = kaputil({"classes", "Zwxkqj"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_EQ(run.err, "kaputil: there is no class Zwxkqj\n");
}

TEST(ClassesCommand, StandsOutOnATerminalOnly) {
    EXPECT_TRUE(contains(kaputilOnTerminal(80, {"classes"}).out, "\x1b[1mKapUtil\x1b[0m"));
    EXPECT_FALSE(contains(kaputil({"classes"}).out, "\x1b"));
}

TEST(ClassesCommand, FitsTheWidthOfTheTerminal) {
    const Outcome run = kaputilOnTerminal(60, {"classes", "StdFunctions.OpenRecordset"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_TRUE(contains(run.out,
                         "(\n          ByRef SQLString As String,\n"
                         "          ByRef Connessione As Variant,\n"
                         "          Optional ByRef CursorType As Integer = -1,\n"))
        << run.out;
    for (const std::string& line : linesOf(run.out)) {
        EXPECT_LE(line.size(), 60U + 16U) << line;  // with the codes of the styles
    }
}

TEST(ClassesCommand, HasNoLineEndsOfItsOwnInAPipe) {
    const Outcome run = kaputil({"classes", "StdFunctions.OpenRecordset", "--names"});
    EXPECT_EQ(linesOf(run.out).size(), 8U);
    const Outcome page = kaputil({"classes", "StdFunctions.OpenRecordset"});
    EXPECT_TRUE(contains(page.out, "Optional ByRef CursorLocation As Integer = -1) As Object\n"))
        << page.out;
}

}  // namespace
}  // namespace kap::tests
