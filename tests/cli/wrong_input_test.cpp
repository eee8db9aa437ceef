#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "cli/command_line.hpp"

// Every wrong input ends with an exit code that tells its kind and a message that says what is
// wrong, and where.
namespace kap::tests {
namespace {

Outcome sqlFile(const std::string& script) {
    return kaputil({"sql", "--connection", connectionTo(":memory:"), "--file", script});
}

Outcome sqlCommand(const std::string& connection, const std::string& script) {
    return kaputil({"sql", "--connection", connection, "--command", script});
}

TEST(CommandLine, TellsItsVersion) {
    const Outcome run = kaputil({"--version"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.out, "KAP Utility 2.6 (2.6.0.5)\n");
}

TEST(CommandLine, ListsItsCommandsInTheHelp) {
    const Outcome run = kaputil({"--help"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_TRUE(contains(run.out, "demo")) << run.out;
    EXPECT_TRUE(contains(run.out, "classes")) << run.out;
    EXPECT_TRUE(contains(run.out, "call")) << run.out;
    EXPECT_TRUE(contains(run.out, "sql")) << run.out;
    EXPECT_TRUE(contains(run.out, "config")) << run.out;
}

TEST(WrongInput, NoCommand) {
    const Outcome run = kaputil({});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_TRUE(contains(run.err, "A subcommand is required")) << run.err;
}

TEST(WrongInput, UnknownCommand) {
    const Outcome run = kaputil({"dmeo"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_TRUE(contains(run.err, "dmeo")) << run.err;
}

TEST(WrongInput, UnknownOption) {
    const Outcome run = kaputil({"demo", "--sede", "3"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_TRUE(contains(run.err, "--sede")) << run.err;
}

TEST(WrongInput, SeedThatIsNoNumber) {
    const Outcome run = kaputil({"demo", "--seed", "tanti"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_TRUE(contains(run.err, "--seed")) << run.err;
}

TEST(WrongInput, ScriptWithoutAConnection) {
    const Outcome run = kaputil({"sql", "--command", "SELECT 1"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_TRUE(contains(run.err, "--connection is required")) << run.err;
}

TEST(WrongInput, FileAndCommandTogether) {
    const Outcome run = kaputil({"sql", "--connection", connectionTo(":memory:"), "--file", "x.sql",
                                 "--command", "SELECT 1"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_TRUE(contains(run.err, "--file excludes --command")) << run.err;
}

// The name stands in statements as it was typed.
TEST(WrongInput, ConfigurationTableThatIsNoName) {
    const Folder folder;
    const std::string file = folder / "a.db";
    const auto sql = [&](const std::string& script) {
        return sqlCommand(connectionTo(file), script);
    };
    ASSERT_EQ(sql("CREATE TABLE Fatture (A int)").exitCode, 0);
    for (const std::string table :
         {"KAP_CFG; DROP TABLE Fatture --", "", "a b", "1a", "[a", "[]", "[a]]", "\"a", "a.",
          "a..b", "a.b.c.d.e", "KAP_CFG DROP TABLE Fatture", "KAP_CFG/**/DROP"}) {
        for (const char* command : {"show", "export", "import"}) {
            const Outcome run = kaputil({"config", command, "--group", "G", "--connection",
                                         connectionTo(file), "--table", table});
            EXPECT_EQ(run.exitCode, 2) << table;
            EXPECT_TRUE(contains(run.err, "is no table's name")) << run.err;
        }
    }
    EXPECT_EQ(sql("SELECT * FROM Fatture").exitCode, 0);
    for (const std::string table :
         {"KAP_CFG", "dbo.KAP_CFG", "[a b]", "\"a b\"", "[a]]b]", "Città_1"}) {
        const Outcome run = kaputil({"config", "show", "--group", "G", "--connection",
                                     connectionTo(file), "--table", table});
        EXPECT_EQ(run.exitCode, 1) << table << run.err;
    }
}

TEST(WrongInput, ScriptFileThatIsNotThere) {
    const Folder folder;
    const Outcome run = sqlFile(folder / "manca.sql");
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_EQ(run.err,
              "kaputil: cannot read " + folder / "manca.sql" + ": No such file or directory\n");
}

TEST(WrongInput, DirectoryInPlaceOfAScript) {
    const Folder folder;
    const Outcome run = sqlFile(folder.path());
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_EQ(run.err, "kaputil: cannot read " + folder.path() + ": it is a directory\n");
}

TEST(WrongInput, ScriptInAnotherEncoding) {
    const Folder folder;
    const std::string script =
        folder.file("vecchio.sql", "SELECT 1\n-- citt\xE0\nSELECT 2\n");  // Latin 1
    const Outcome run = kaputil(
        {"sql", "--connection", connectionTo(":memory:"), "--file", script, "--encoding", "utf-8"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_EQ(run.err,
              "kaputil: " + script + ", line 2: not UTF-8; name its encoding with --encoding\n");
}

// Programs that read answers as JSON read what is wrong with their words the same way.
TEST(WrongInput, IsToldAsJsonToThoseWhoAskForIt) {
    const auto description = [](const std::vector<std::string>& words) {
        const Outcome run = kaputil(words);
        EXPECT_EQ(run.exitCode, 2);
        EXPECT_EQ(run.out, "");
        const auto error = nlohmann::json::parse(run.err).at("error");
        EXPECT_EQ(error.at("number"), 5);
        return error.at("description").get<std::string>();
    };
    EXPECT_TRUE(contains(description({"sql", "--json", "--comand", "SELECT 1"}), "--comand"));
    EXPECT_TRUE(
        contains(description({"sql", "--json", "--file", "manca.sql", "--connection", ":memory:"}),
                 "cannot read manca.sql: No such file"));
    EXPECT_TRUE(contains(description({"sql", "--command", "SELECT 1", "--json-lines"}),
                         "--connection is required"));
    EXPECT_TRUE(contains(description({"classes", "CPropieta", "--json"}), "CProprieta"));
    EXPECT_TRUE(contains(description({"sql", "--json", "caff\xE8"}), "caff"));
    EXPECT_EQ(kaputil({"sql", "--json", "--help"}).exitCode, 0);
}

TEST(WrongInput, UnknownProvider) {
    const Outcome run = sqlCommand("Provider=KapRemoto;Data Source=x.db", "SELECT 1");
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_TRUE(run.err.starts_with("error -2146824582: Provider 'KapRemoto' cannot be found."))
        << run.err;
    EXPECT_EQ(run.out, "");
}

TEST(WrongInput, UnknownKeyInTheConnectionString) {
    const Outcome run = sqlCommand("Provider=KapLocal;Data Source=:memory:;Colore=blu", "SELECT 1");
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_TRUE(contains(run.err, "'Colore'")) << run.err;
}

TEST(WrongInput, ConnectionStringWithoutADatabase) {
    const Outcome run = sqlCommand("Provider=KapLocal", "SELECT 1");
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_TRUE(contains(run.err, "names no database")) << run.err;
}

TEST(WrongInput, FileThatIsNoDatabase) {
    const Folder folder;
    const std::string text = folder.file("lettera.txt", std::string(4096, 'x'));
    const Outcome run = sqlCommand(connectionTo(text), "SELECT 1");
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_TRUE(contains(run.err, "lettera.txt")) << run.err;
    EXPECT_EQ(run.out, "");
}

TEST(WrongInput, DatabaseInAFolderThatIsNotThere) {
    const Folder folder;
    const Outcome run = sqlCommand(connectionTo(folder / "manca/azienda.db"), "SELECT 1");
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_TRUE(contains(run.err, "azienda.db")) << run.err;
}

TEST(WrongInput, UnknownTable) {
    const Outcome run =
        sqlCommand(connectionTo(":memory:"), "SELECT 1 AS Uno\n\nSELECT * FROM Inesistente");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.err, "error 208, line 3: Invalid object name 'Inesistente'.\n");
}

TEST(WrongInput, ErrorInTheText) {
    const Outcome run = sqlCommand(connectionTo(":memory:"), "SELECT 1\nSELEKT 2 FROM");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_TRUE(run.err.starts_with("error 102, line 2: Incorrect syntax near ") ||
                run.err.starts_with("error 156, line 2: Incorrect syntax near "))
        << run.err;
}

TEST(WrongInput, CountsLinesInTheWholeFile) {
    const Folder folder;
    const std::string script = folder.file("s.sql",
                                           "SELECT 1 AS Uno\n"
                                           "GO\n"
                                           "\n"
                                           "SELECT * FROM Inesistente\n"
                                           "GO\n"
                                           "SELECT 3 AS Tre\n");
    const Outcome run = sqlFile(script);
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.err, "error 208, line 4: Invalid object name 'Inesistente'.\n");
    EXPECT_EQ(run.out, "Uno\n---\n  1\n(1 row)\n");  // and nothing after the error
}

TEST(WrongInput, GoWithACountThatIsNoNumber) {
    const Folder folder;
    const std::string script = folder.file("s.sql", "SELECT 1\nGO molte\n");
    const Outcome run = sqlFile(script);
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.err, "error 102, line 2: Incorrect syntax near 'molte'.\n");
}

TEST(WrongInput, ShowsWhatWasDoneBeforeTheError) {
    const Outcome run = sqlCommand(connectionTo(":memory:"),
                                   "SELECT 1 AS Uno\nSELECT * FROM Inesistente\nSELECT 3 AS Tre");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.out, "Uno\n---\n  1\n(1 row)\n");
    EXPECT_EQ(run.err, "error 208, line 2: Invalid object name 'Inesistente'.\n");
}

TEST(WrongInput, SecondRowWithTheSameKey) {
    const Outcome run = sqlCommand(connectionTo(":memory:"),
                                   "CREATE TABLE T (A int NOT NULL PRIMARY KEY)\n"
                                   "INSERT INTO T (A) VALUES (1)\n"
                                   "INSERT INTO T (A) VALUES (1)");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_TRUE(run.err.starts_with("error 2627, line 3: ")) << run.err;
}

TEST(WrongInput, ErrorsInJson) {
    const Outcome run = kaputil({"sql", "--json", "--connection", connectionTo(":memory:"),
                                 "--command", "\nSELECT * FROM Inesistente"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(nlohmann::json::parse(run.err),
              nlohmann::json::parse(R"({"error":{"number":-2147217865,"native":208,"line":2,
                                     "description":"Invalid object name 'Inesistente'."}})"));
}

TEST(WrongInput, OutputThatCannotBeWritten) {
    const Outcome run = shell(
        "$KAPUTIL sql --connection 'Provider=KapLocal;Data Source=:memory:' "
        "--command 'SELECT 1' >/dev/full");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.err, "kaputil: cannot write to standard output\n");
}

}  // namespace
}  // namespace kap::tests
