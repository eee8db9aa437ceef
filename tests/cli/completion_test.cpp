#include <gtest/gtest.h>

#include <filesystem>

#include <nlohmann/json.hpp>

#include "cli/command_line.hpp"
#include "support/build_folders.hpp"

namespace kap::tests {
namespace {

// What the shell offers for the last of these words, blanks between; each word is one as the line
// editor cuts them, at ':' and '=' too.
std::string offered(const std::vector<std::string>& words) {
    std::string script =
        "source '" + std::string(test::kSourceFolder) + "/completions/kaputil.bash'\nCOMP_WORDS=(";
    for (const std::string& word : words) {
        script += "'" + word + "' ";
    }
    script += ")\nCOMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n_kaputil \"$KAPUTIL\"\n";
    script += "printf '%s' \"${COMPREPLY[*]}\"\n";
    const Folder folder;
    const Outcome run = shell("bash " + folder.file("complete.bash", script));
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.err, "");
    return run.out;
}

bool offers(const std::string& all, const std::string& one) {
    return (" " + all + " ").find(" " + one + " ") != std::string::npos;
}

TEST(Completion, OffersTheCommands) {
    EXPECT_EQ(
        offered({"kaputil", ""}),
        "demo classes call sql batch config registry export import numbers copy describe manual "
        "completion");
    EXPECT_EQ(offered({"kaputil", "c"}), "classes call config copy completion");
}

TEST(Completion, OffersTheOptionsOfACommand) {
    EXPECT_EQ(offered({"kaputil", "-"}), "--help --version");
    EXPECT_EQ(offered({"kaputil", "call", "--"}), "--help --json --locale --message-log");
    EXPECT_EQ(offered({"kaputil", "classes", "--"}), "--help --html --json --language --names");
    EXPECT_EQ(offered({"kaputil", "sql", "--c"}), "--check --command --connection --csv");
    EXPECT_EQ(offered({"kaputil", "demo", "--d"}), "--database");
    EXPECT_EQ(offered({"kaputil", "batch", "--"}), "--connection --dry-run --help --json");
}

TEST(Completion, OffersTheCommandsAndOptionsOfTheConfiguration) {
    EXPECT_EQ(offered({"kaputil", "config", ""}), "groups show declared diff export import");
    EXPECT_EQ(offered({"kaputil", "config", "e"}), "export");
    EXPECT_EQ(offered({"kaputil", "config", "--"}), "--help");
    EXPECT_EQ(offered({"kaputil", "config", "import", "--"}),
              "--connection --declaration --file --group --help --json --replace --table");
    EXPECT_EQ(offered({"kaputil", "config", "diff", "A", "B", "--p"}), "--path");
    EXPECT_EQ(offered({"kaputil", "config", "show", "--group", ""}), "");
}

TEST(Completion, OffersTheOptionsOfNumbers) {
    EXPECT_EQ(
        offered({"kaputil", "numbers", "--"}),
        "--connection --counter --csv --fail-on --from --help --html --json --language --output "
        "--register --to --year");
    EXPECT_EQ(offered({"kaputil", "numbers", "--counter", ""}), "");
}

TEST(Completion, OffersClasses) {
    EXPECT_EQ(offered({"kaputil", "classes", "CP"}), "CProprieta");
    EXPECT_EQ(offered({"kaputil", "classes", "ADODB."}),
              "ADODB.Command ADODB.Connection ADODB.Parameter ADODB.Recordset ADODB.Stream");
}

TEST(Completion, OffersTheMembersOfAClass) {
    EXPECT_EQ(offered({"kaputil", "classes", "CProprieta."}),
              "CProprieta.Elimina CProprieta.Leggi CProprieta.Scrivi CProprieta.Count "
              "CProprieta.NomeProprieta");
    EXPECT_EQ(offered({"kaputil", "call", "CProprieta.S"}), "CProprieta.Scrivi");
    EXPECT_EQ(offered({"kaputil", "call", "ADODB.Connection.O"}),
              "ADODB.Connection.Open ADODB.Connection.OpenSchema");
}

TEST(Completion, OffersGeneralFunctionsAndClassesToCall) {
    const std::string all = offered({"kaputil", "call", ""});
    EXPECT_TRUE(offers(all, "kapVal")) << all;
    EXPECT_TRUE(offers(all, "CProprieta.")) << all;
    EXPECT_FALSE(offers(all, "CostantiNumeriche.")) << all;
}

TEST(Completion, IgnoresCase) {
    EXPECT_EQ(offered({"kaputil", "call", "KAPV"}), "kapVal");
    EXPECT_EQ(offered({"kaputil", "call", "cproprieta.sc"}), "cproprieta.Scrivi");
}

TEST(Completion, OffersNamedArgumentsBehindAMember) {
    EXPECT_EQ(offered({"kaputil", "call", "kapVal", ""}), "vValore:= sDataType:=");
    EXPECT_EQ(offered({"kaputil", "call", "kapVal", "2,5", "s"}), "sDataType:=");
    EXPECT_EQ(offered({"kaputil", "call", "CProprieta.Scrivi", "sv"}), "sValore:=");
    EXPECT_EQ(offered({"kaputil", "call", "kapVal", "vValore", ":=", "3", "s"}), "sDataType:=");
}

TEST(Completion, OffersNothingForAValue) {
    EXPECT_EQ(offered({"kaputil", "call", "kapVal", "vValore", ":=", ""}), "");
    EXPECT_EQ(offered({"kaputil", "call", "kapVal", "vValore", ":="}), "");
    EXPECT_EQ(offered({"kaputil", "sql", "--command", "c"}), "");
}

TEST(Completion, OffersMembersOfTheSameObjectBehindAPlus) {
    EXPECT_EQ(offered({"kaputil", "call", "CProprieta.Scrivi", "Codice", "12", "+", "L"}), "Leggi");
    EXPECT_EQ(offered({"kaputil", "call", "CProprieta.Scrivi", "C", "1", "+", "Leggi", ""}),
              "sNomeProprieta:=");
    EXPECT_TRUE(offers(offered({"kaputil", "call", "kapVal", "3", "+", "k"}), "kapVal"));
}

TEST(Completion, PassesOverOptionsAndTheirValues) {
    EXPECT_EQ(offered({"kaputil", "call", "--locale", "it-IT", "--json", "kapVal", "v"}),
              "vValore:=");
    EXPECT_EQ(offered({"kaputil", "call", "--locale", "=", "it-IT", "kapVal", "v"}), "vValore:=");
}

TEST(Completion, OffersLanguages) {
    EXPECT_EQ(offered({"kaputil", "call", "--locale", "en"}), "en-US en-GB");
    EXPECT_EQ(offered({"kaputil", "call", "--locale", "="}), "it-IT en-US en-GB");
}

TEST(Completion, OffersWhatCanBeDoneWithTheRegistry) {
    EXPECT_EQ(offered({"kaputil", "registry", ""}), "list get set create delete import export");
    EXPECT_EQ(offered({"kaputil", "registry", "set", "--"}), "--help --type");
    EXPECT_EQ(offered({"kaputil", "registry", "-"}), "--help");
    EXPECT_EQ(offered({"kaputil", "registry", "set", "--type", "REG_D"}), "REG_DWORD");
    const Folder folder;
    const std::string file = folder.file("vertex.reg", "");
    EXPECT_EQ(offered({"kaputil", "registry", "import", folder / "ver"}), file);
}

TEST(Completion, OffersFolders) {
    const Folder folder;
    static_cast<void>(folder.file("scambio.txt", ""));
    std::filesystem::create_directory(folder / "scambio");
    EXPECT_EQ(offered({"kaputil", "export", "--folder", folder / "sca"}), folder / "scambio");
    EXPECT_EQ(offered({"kaputil", "export", "--k"}), "--keep-schema");
}

TEST(Completion, OffersFiles) {
    const Folder folder;
    const std::string file = folder.file("azienda.db", "");
    EXPECT_EQ(offered({"kaputil", "demo", "--database", folder / "az"}), file);
    EXPECT_EQ(offered({"kaputil", "sql", "--file", "=", folder / "az"}), file);
    EXPECT_EQ(offered({"kaputil", "batch", folder / "az"}), file);
}

TEST(Completion, SurvivesAProgramThatIsNotThere) {
    const Outcome run = shell("bash -c 'source \"" + std::string(test::kSourceFolder) +
                              "/completions/kaputil.bash\"; COMP_WORDS=(kaputil c); COMP_CWORD=1; "
                              "_kaputil /nowhere/kaputil; echo \"[${COMPREPLY[*]}]\"'");
    EXPECT_EQ(run.out, "[]\n");
}

}  // namespace
}  // namespace kap::tests
