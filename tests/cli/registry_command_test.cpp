#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "cli/command_line.hpp"
#include "support/text_files.hpp"

namespace kap::tests {
namespace {

using nlohmann::json;
using test::contentOf;

class RegistryCommandTest : public testing::Test {
protected:
    Outcome run(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "registry");
        return kaputil(arguments, "", {"KAPUTIL_HOME=" + folder_.path()});
    }
    void done(const std::vector<std::string>& arguments) const {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
        EXPECT_EQ(outcome.out, "");
    }
    void refused(const std::vector<std::string>& arguments, int code,
                 const std::string& message) const {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.exitCode, code);
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.err, "kaputil: " + message + "\n");
    }

    Folder folder_;
};

TEST_F(RegistryCommandTest, SetsAndPrintsValues) {
    done({"create", "HKCU\\Software\\Vertex"});
    done({"set", "HKCU\\Software\\Vertex", "Nome", "citt\xC3\xA0 \"nuova\""});
    done({"set", "HKCU\\Software\\Vertex", "", "senza nome"});
    done({"set", "HKCU\\Software\\Vertex", "Copie", "0x0c", "--type", "REG_DWORD"});
    done({"set", "HKCU\\Software\\Vertex", "Byte", "01 0a,FF", "--type", "REG_BINARY"});
    done({"set", "HKCU\\Software\\Vertex", "Altro", "00", "--type", "123"});
    EXPECT_EQ(run({"get", "hkcu\\software\\vertex", "nome"}).out, "citt\xC3\xA0 \"nuova\"\n");
    EXPECT_EQ(run({"get", "HKCU\\Software\\Vertex"}).out, "senza nome\n");
    EXPECT_EQ(run({"get", "HKCU\\Software\\Vertex", "Copie"}).out, "12\n");
    EXPECT_EQ(run({"get", "HKCU\\Software\\Vertex", "Byte", "--json"}).out,
              "{\"type\":\"REG_BINARY\",\"data\":[1,10,255]}\n");
    EXPECT_EQ(run({"list", "HKCU\\Software\\Vertex"}).out,
              "Nome   REG_SZ      citt\xC3\xA0 \"nuova\"\n"
              "@      REG_SZ      senza nome\n"
              "Copie  REG_DWORD   12\n"
              "Byte   REG_BINARY  01 0a ff\n"
              "Altro  123         00\n");
}

TEST_F(RegistryCommandTest, ListsTheRootsAndTheKeysBelow) {
    EXPECT_EQ(run({"list"}).out,
              "HKEY_CLASSES_ROOT\\\nHKEY_CURRENT_USER\\\nHKEY_LOCAL_MACHINE\\\nHKEY_USERS\\\n");
    done({"create", "HKLM\\Software\\Vertex"});
    done({"set", "HKLM\\Software", "x", "1"});
    EXPECT_EQ(run({"list", "HKLM\\Software"}).out, "Vertex\\\nx  REG_SZ  1\n");
    EXPECT_EQ(json::parse(run({"list", "HKLM\\Software", "--json"}).out), json::parse(R"({
        "key": "HKLM\\Software", "keys": ["Vertex"],
        "values": [{"name": "x", "type": "REG_SZ", "data": "1"}]})"));
}

TEST_F(RegistryCommandTest, RemovesValuesAndKeys) {
    done({"create", "HKCU\\A\\B"});
    done({"set", "HKCU\\A", "x", "1"});
    done({"delete", "HKCU\\A", "x"});
    refused({"delete", "HKCU\\A", "x"}, 1, "the key HKCU\\A has no value x");
    refused({"delete", "HKCU\\A", ""}, 1, "the key HKCU\\A has no value without a name");
    done({"delete", "HKCU\\A"});
    refused({"delete", "HKCU\\A"}, 1, "there is no key HKCU\\A");
    refused({"delete", "HKCU"}, 1, "A root cannot be removed");
}

TEST_F(RegistryCommandTest, ImportsWhatItExported) {
    done({"create", "HKCU\\A"});
    done({"set", "HKCU\\A", "x", "\xE2\x82\xAC"});
    const std::string text =
        "Windows Registry Editor Version 5.00\n\n[HKEY_CURRENT_USER\\A]\n\"x\"=\"\xE2\x82\xAC\"\n";
    EXPECT_EQ(run({"export", "HKCU\\A"}).out, text);
    done({"export", "HKCU\\A", "--file", folder_ / "a.reg"});
    EXPECT_TRUE(contentOf(folder_ / "a.reg").starts_with("\xFF\xFE"));
    done({"delete", "HKCU\\A"});
    done({"import", folder_ / "a.reg"});
    EXPECT_EQ(run({"export", "HKCU\\A"}).out, text);
}

TEST_F(RegistryCommandTest, SaysWhatIsWrong) {
    done({"create", "HKCU\\A"});
    refused({"list", "HKCU\\Manca"}, 1, "there is no key HKCU\\Manca");
    refused({"get", "HKCU\\Manca", "x"}, 1, "there is no key HKCU\\Manca");
    refused({"get", "HKCU\\A", "x"}, 1, "the key HKCU\\A has no value x");
    refused({"set", "HKCU\\Manca", "x", "1"}, 1,
            "there is no key HKCU\\Manca; \"kaputil registry create\" makes it");
    refused({"export", "HKCU\\Manca"}, 1, "there is no key HKCU\\Manca");
    refused({"create", "Software"}, 1, "'Software' is no path of a registry key");
    refused({"export", "--file", folder_ / "manca/a.reg"}, 1,
            "cannot write " + folder_ / "manca/a.reg" + ": No such file or directory");
    const std::string damaged = folder_.file("rotto.reg", "REGEDIT4\n[HKCU\\A]\nx=1\n");
    refused({"import", damaged}, 1, damaged + ", line 3: a line is no key, value or comment");
}

TEST_F(RegistryCommandTest, RefusesWrongUsage) {
    done({"create", "HKCU\\A"});
    refused({"set", "HKCU\\A", "x", "12a", "--type", "REG_DWORD"}, 2,
            "\"12a\" is no number of 32 bits");
    refused({"set", "HKCU\\A", "x", "4294967296", "--type", "REG_DWORD"}, 2,
            "\"4294967296\" is no number of 32 bits");
    refused({"set", "HKCU\\A", "x", "012", "--type", "REG_BINARY"}, 2,
            "\"012\" is no row of bytes; write them as 01 0a ff");
    refused(
        {"set", "HKCU\\A", "x", "1", "--type", "TESTO"}, 2,
        "there is no type TESTO; name REG_SZ, REG_EXPAND_SZ, REG_DWORD, REG_BINARY or a number");
    refused({"import", folder_ / "manca.reg"}, 2,
            "cannot read " + folder_ / "manca.reg" + ": No such file or directory");
    refused({"import", folder_.path()}, 2, "cannot read " + folder_.path() + ": it is a directory");
    refused({"create", "HKCU\\citt\xE0"}, 2, "an argument is not UTF-8");
    EXPECT_EQ(run({}).exitCode, 2);
    EXPECT_EQ(run({"get"}).exitCode, 2);
}

}  // namespace
}  // namespace kap::tests
