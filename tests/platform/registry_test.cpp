#include <kaputil/platform/registry.hpp>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <kaputil/automation/error.hpp>

#include "support/processes.hpp"
#include "support/scoped_variable.hpp"
#include "support/shown.hpp"
#include "support/temporary_folder.hpp"
#include "support/text_files.hpp"

namespace kap::platform::registry {
namespace {

using test::contentOf;
using test::raisedBy;

std::vector<std::string> names(const std::vector<String>& texts) {
    std::vector<std::string> all;
    for (const String& text : texts) {
        all.push_back(text.utf8());
    }
    return all;
}

class RegistryTest : public testing::Test {
protected:
    void put(const std::string& bytes) const { test::putFile(file_, bytes); }

    test::TemporaryFolder folder_;
    test::ScopedVariable home_{"KAPUTIL_HOME", folder_.file("")};
    std::string file_ = folder_.file("registry.reg");
};

TEST_F(RegistryTest, KeepsATextUnderAKeyThatIsMadeBefore) {
    EXPECT_FALSE(setValue(u"HKEY_CURRENT_USER\\Software\\Vertex", u"Nome", textValue(u"Rossi")));
    EXPECT_TRUE(createKey(u"HKEY_CURRENT_USER\\Software\\Vertex"));
    EXPECT_FALSE(createKey(u"HKEY_CURRENT_USER\\software\\VERTEX"));
    EXPECT_TRUE(setValue(u"HKEY_CURRENT_USER\\Software\\Vertex", u"Nome", textValue(u"Rossi")));
    const auto stored = value(u"hkcu\\SOFTWARE\\vertex", u"NOME");
    ASSERT_TRUE(stored);
    EXPECT_EQ(stored->type, kText);
    EXPECT_EQ(textOf(*stored), u"Rossi");
}

TEST_F(RegistryTest, IsATextFileThatPeopleCanRead) {
    createKey(u"HKCU\\Software\\Vertex");
    EXPECT_TRUE(setValue(u"HKCU\\Software\\Vertex", u"Cartella", textValue(u"C:\\Dati \"qui\"")));
    EXPECT_TRUE(setValue(u"HKCU\\Software\\Vertex", u"", textValue(u"città")));
    EXPECT_TRUE(setValue(u"HKCU\\Software\\Vertex", u"Copie", numberValue(-2)));
    EXPECT_TRUE(setValue(u"HKCU\\Software\\Vertex", u"Righe", textValue(u"a\nb")));
    EXPECT_EQ(contentOf(file_),
              "Windows Registry Editor Version 5.00\n"
              "\n"
              "[HKEY_CURRENT_USER]\n"
              "\n"
              "[HKEY_CURRENT_USER\\Software]\n"
              "\n"
              "[HKEY_CURRENT_USER\\Software\\Vertex]\n"
              "\"Cartella\"=\"C:\\\\Dati \\\"qui\\\"\"\n"
              "@=\"citt\xC3\xA0\"\n"
              "\"Copie\"=dword:fffffffe\n"
              "\"Righe\"=hex(1):61,00,0a,00,62,00,00,00\n");
    EXPECT_EQ(textOf(*value(u"HKCU\\Software\\Vertex", u"Righe")), u"a\nb");
    EXPECT_EQ(numberOf(*value(u"HKCU\\Software\\Vertex", u"Copie")), -2);
}

TEST_F(RegistryTest, IsTheUsersAlone) {
    createKey(u"HKCU\\A");
    struct stat status {};
    ASSERT_EQ(stat(file_.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(RegistryTest, KeepsCommentsOrderAndTypesThatItDoesNotUnderstand) {
    const std::string text =
        "Windows Registry Editor Version 5.00\n"
        "\n"
        "; di Anna\n"
        "[HKEY_LOCAL_MACHINE]\n"
        "\n"
        "; la chiave\n"
        "[HKEY_LOCAL_MACHINE\\B]\n"
        "; il valore\n"
        "\"z\"=hex:01,02,ff\n"
        "\"a\"=hex(2):25,00,00,00\n"
        "\"m\"=hex(7):\n"
        "\"t\"=hex(7b):00\n"
        "\n"
        "[HKEY_LOCAL_MACHINE\\A]\n"
        "\n"
        "; in fondo\n";
    put(text);
    EXPECT_TRUE(setValue(u"HKLM\\B", u"nuovo", textValue(u"1")));
    EXPECT_TRUE(deleteValue(u"HKLM\\B", u"NUOVO"));
    EXPECT_EQ(contentOf(file_), text);
    EXPECT_EQ(value(u"HKLM\\B", u"t")->type, 0x7BU);
    EXPECT_EQ(value(u"HKLM\\B", u"z")->data, (std::vector<std::uint8_t>{1, 2, 255}));
}

TEST_F(RegistryTest, ReadsWhatPeopleWrite) {
    put("\r\nWindows Registry Editor Version 5.00\r\n"
        "  [hkcu\\Software\\Vertex]  \r\n"
        "  \"Nome\" = \"Rossi\" ; commento\r\n"
        "\"Byte\"=HEX:01,\\\r\n  0A , b\r\n"
        "@=dword:A\r\n");
    EXPECT_TRUE(hasKey(u"HKCU\\Software"));
    EXPECT_EQ(textOf(*value(u"HKCU\\Software\\Vertex", u"Nome")), u"Rossi");
    EXPECT_EQ(value(u"HKCU\\Software\\Vertex", u"Byte")->data,
              (std::vector<std::uint8_t>{1, 10, 11}));
    EXPECT_EQ(numberOf(*value(u"HKCU\\Software\\Vertex", u"")), 10);
}

TEST_F(RegistryTest, BreaksLongBytesOverLines) {
    createKey(u"HKCU\\A");
    const Value bytes{3, std::vector<std::uint8_t>(60, 0xAB)};
    EXPECT_TRUE(setValue(u"HKCU\\A", u"b", bytes));
    EXPECT_NE(contentOf(file_).find(",\\\n  ab,"), std::string::npos) << contentOf(file_);
    EXPECT_EQ(value(u"HKCU\\A", u"b"), bytes);
}

TEST_F(RegistryTest, ListsKeysAndValues) {
    createKey(u"HKCU\\Software\\Vertex\\Stampe");
    createKey(u"HKCU\\Software\\Altro");
    EXPECT_TRUE(setValue(u"HKCU\\Software", u"b", textValue(u"1")));
    EXPECT_TRUE(setValue(u"HKCU\\Software", u"a", textValue(u"2")));
    EXPECT_EQ(names(keysBelow(u"")),
              (std::vector<std::string>{"HKEY_CLASSES_ROOT", "HKEY_CURRENT_USER",
                                        "HKEY_LOCAL_MACHINE", "HKEY_USERS"}));
    EXPECT_EQ(names(keysBelow(u"hkcu\\software")), (std::vector<std::string>{"Vertex", "Altro"}));
    const auto values = valuesOf(u"HKCU\\Software\\");
    ASSERT_EQ(values.size(), 2U);
    EXPECT_EQ(values[0].name, u"b");
    EXPECT_EQ(values[1].name, u"a");
    EXPECT_TRUE(valuesOf(u"HKCU\\Manca").empty());
    EXPECT_TRUE(keysBelow(u"HKCU\\Manca").empty());
}

TEST_F(RegistryTest, PutsANewKeyBehindItsRelatives) {
    createKey(u"HKCU\\A\\X");
    createKey(u"HKLM\\B");
    createKey(u"HKCU\\A\\Y");
    const std::string text = contentOf(file_);
    EXPECT_LT(text.find("\\A\\X]"), text.find("\\A\\Y]"));
    EXPECT_LT(text.find("\\A\\Y]"), text.find("[HKEY_LOCAL_MACHINE]"));
}

TEST_F(RegistryTest, RemovesAKeyWithEverythingBelowIt) {
    createKey(u"HKCU\\A\\B\\C");
    createKey(u"HKCU\\AB");
    EXPECT_TRUE(deleteKey(u"HKCU\\a"));
    EXPECT_FALSE(deleteKey(u"HKCU\\A"));
    EXPECT_FALSE(hasKey(u"HKCU\\A\\B\\C"));
    EXPECT_TRUE(hasKey(u"HKCU\\AB"));
    EXPECT_TRUE(createKey(u"HKCU\\A"));
    EXPECT_EQ(raisedBy([] { return deleteKey(u"HKCU"); }), errors::kInvalidArgument);
}

TEST_F(RegistryTest, HasItsRootsAlways) {
    EXPECT_TRUE(hasKey(u"HKEY_USERS"));
    EXPECT_TRUE(setValue(u"HKU", u"", textValue(u"x")));
    EXPECT_EQ(textOf(*value(u"HKEY_USERS", u"")), u"x");
    EXPECT_EQ(rootName(-2147483646), u"HKEY_LOCAL_MACHINE");
    EXPECT_EQ(rootName(1), std::nullopt);
}

TEST_F(RegistryTest, RefusesPathsThatAreNone) {
    for (const char16_t* path :
         {u"", u"Software", u"HKEY_NOWHERE\\A", u"HKCU\\\\A", u"\\HKCU\\A", u"HKCU\\A\nB"}) {
        EXPECT_EQ(raisedBy([&] { return hasKey(path); }), errors::kBadFileName)
            << String(path).utf8();
    }
    createKey(u"HKCU\\A");
    EXPECT_EQ(raisedBy([] { return setValue(u"HKCU\\A", u"a\nb", textValue(u"x")); }),
              errors::kBadFileName);
}

TEST_F(RegistryTest, NeverOverwritesAFileThatSomebodyDamaged) {
    const std::string damaged =
        "Windows Registry Editor Version 5.00\n\n[HKEY_CURRENT_USER\\A]\n\"x\"=\"aperta\n";
    put(damaged);
    EXPECT_EQ(raisedBy([] { return setValue(u"HKCU\\A", u"y", textValue(u"1")); }),
              errors::kDeviceError);
    EXPECT_EQ(contentOf(file_), damaged);
    try {
        static_cast<void>(value(u"HKCU\\A", u"x"));
        FAIL();
    } catch (const AutomationError& error) {
        EXPECT_EQ(error.description().utf8(), file_ + ", line 4: a quote is not closed");
    }
}

TEST_F(RegistryTest, LosesNoValueOfSeveralProcesses) {
    constexpr int kCount = 15;
    createKey(u"HKCU\\Prova");
    std::vector<pid_t> children;
    for (const char* prefix : {"a", "b", "c", "d"}) {
        children.push_back(test::startProgram(
            "store_values", {"registry", "HKCU\\Prova", prefix, std::to_string(kCount)}));
    }
    for (const pid_t child : children) {
        EXPECT_TRUE(test::succeeds(child));
    }
    EXPECT_EQ(valuesOf(u"HKCU\\Prova").size(), 4U * kCount);
}

class RegistrationText : public RegistryTest {
protected:
    static std::string refusal(const std::string& text) {
        try {
            importText(text);
        } catch (const AutomationError& error) {
            EXPECT_EQ(error.number(), errors::kInvalidArgument);
            return error.description().utf8();
        }
        return "";
    }
};

TEST_F(RegistrationText, SetsMakesAndRemoves) {
    createKey(u"HKCU\\Vecchia\\Sotto");
    createKey(u"HKCU\\A");
    EXPECT_TRUE(setValue(u"HKCU\\A", u"via", textValue(u"x")));
    EXPECT_TRUE(setValue(u"HKCU\\A", u"resta", textValue(u"x")));
    importText(
        "Windows Registry Editor Version 5.00\r\n\r\n[-HKEY_CURRENT_USER\\Vecchia]\r\n\r\n"
        "[HKEY_CURRENT_USER\\A]\r\n\"via\"=-\r\n\"nuovo\"=\"y\"\r\n\r\n[HKEY_CURRENT_USER\\B]\r\n");
    EXPECT_FALSE(hasKey(u"HKCU\\Vecchia"));
    EXPECT_TRUE(hasKey(u"HKCU\\B"));
    EXPECT_EQ(value(u"HKCU\\A", u"via"), std::nullopt);
    EXPECT_EQ(textOf(*value(u"HKCU\\A", u"resta")), u"x");
    EXPECT_EQ(textOf(*value(u"HKCU\\A", u"nuovo")), u"y");
}

TEST_F(RegistrationText, IsReadInTheOlderFormToo) {
    importText("REGEDIT4\n\n[HKEY_CURRENT_USER\\A]\n\"a\"=\"citt\xE0\"\n\"b\"=hex(2):25,e0,00\n");
    EXPECT_EQ(textOf(*value(u"HKCU\\A", u"a")), u"città");
    EXPECT_EQ(textOf(*value(u"HKCU\\A", u"b")), u"%à");
}

TEST_F(RegistrationText, GoesOutAsEditorsReadItAndComesBack) {
    createKey(u"HKCU\\A\\Sotto");
    createKey(u"HKCU\\B");
    EXPECT_TRUE(setValue(u"HKCU\\A", u"a", textValue(u"€")));
    const std::string expected =
        "Windows Registry Editor Version 5.00\n\n[HKEY_CURRENT_USER\\A]\n\"a\"=\"\xE2\x82\xAC\"\n\n"
        "[HKEY_CURRENT_USER\\A\\Sotto]\n";
    EXPECT_EQ(exportText(u"hkcu\\a"), expected);
    const std::string bytes = exportForEditors(u"HKCU\\A");
    EXPECT_TRUE(bytes.starts_with(std::string("\xFF\xFEW\0i\0", 6)));
    EXPECT_NE(bytes.find(std::string("\r\0\n\0", 4)), std::string::npos);
    deleteKey(u"HKCU\\A");
    importText(bytes);
    EXPECT_EQ(exportText(u"HKCU\\A"), expected);
    EXPECT_EQ(raisedBy([] { return exportText(u"HKCU\\Manca"); }), errors::kPathNotFound);
}

TEST_F(RegistrationText, ThatIsNoneChangesNothingAndSaysWhere) {
    createKey(u"HKCU\\A");
    const std::string before = contentOf(file_);
    const std::string heading = "Windows Registry Editor Version 5.00\n\n[HKEY_CURRENT_USER\\N]\n";
    EXPECT_EQ(refusal(""), "line 0: the text does not begin like a registration text");
    EXPECT_EQ(refusal("ciao\n"), "line 1: the text does not begin like a registration text");
    EXPECT_EQ(refusal(heading + "ciao\n"), "line 4: a line is no key, value or comment");
    EXPECT_EQ(refusal(heading + "[HKCU\\A\n"), "line 4: the name of a key is not closed by ]");
    EXPECT_EQ(refusal(heading + "[HK\\A]\n"), "line 4: 'HK\\A' is no path of a registry key");
    EXPECT_EQ(refusal(heading + "\"x\"\n"), "line 4: = is missing behind the name of a value");
    EXPECT_EQ(refusal(heading + "\"x\"=ciao\n"), "line 4: a value is no text, number or bytes");
    EXPECT_EQ(refusal(heading + "\"x\"=\"a\" b\n"), "line 4: something follows a value");
    EXPECT_EQ(refusal(heading + "\"x\"=dword:123456789\n"),
              "line 4: a number is not one to eight hexadecimal digits");
    EXPECT_EQ(refusal(heading + "\"x\"=hex:0g\n"),
              "line 4: a number is not one to eight hexadecimal digits");
    EXPECT_EQ(refusal(heading + "\"x\"=hex:001\n"),
              "line 4: a byte is not one or two hexadecimal digits");
    EXPECT_EQ(refusal("REGEDIT4\n@=\"x\"\n"), "line 2: a value has no key");
    EXPECT_EQ(refusal(heading + "[-HKCU\\N]\n@=\"x\"\n"),
              "line 5: a value follows a key that is removed");
    EXPECT_EQ(contentOf(file_), before);
}

// A short text could otherwise ask for a store thousands of times its size.
TEST_F(RegistrationText, HasTheLimitsOfWindows) {
    const std::string heading = "Windows Registry Editor Version 5.00\n\n";
    const auto key = [&](std::size_t levels, std::size_t length) {
        std::string path = "[HKCU";
        for (std::size_t i = 1; i < levels; ++i) {
            path += "\\" + std::string(length, 'k');
        }
        return heading + path + "]\n";
    };
    EXPECT_EQ(refusal(key(512, 3)), "");
    EXPECT_EQ(refusal(key(513, 3)), "line 3: Registry keys are at most 512 levels deep");
    EXPECT_EQ(refusal(key(20'000, 1)), "line 3: Registry keys are at most 512 levels deep");
    EXPECT_EQ(refusal(key(2, 255)), "");
    EXPECT_EQ(refusal(key(2, 256)),
              "line 3: The name of a registry key has at most 255 characters");
    EXPECT_EQ(refusal(key(2, 3) + "\"" + std::string(16384, 'v') + "\"=\"x\"\n"),
              "line 4: The name of a registry value has at most 16383 characters");
}

}  // namespace
}  // namespace kap::platform::registry
