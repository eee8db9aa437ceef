#include <kaputil/platform/profile_file.hpp>

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <random>

#include "support/processes.hpp"
#include "support/scoped_variable.hpp"
#include "support/seed.hpp"
#include "support/temporary_folder.hpp"
#include "support/text_files.hpp"

namespace kap::platform {
namespace {

namespace fs = std::filesystem;
using test::contentOf;

class ProfileFile : public testing::Test {
protected:
    void put(const std::string& bytes) const { test::putFile(path_, bytes); }
    [[nodiscard]] std::string read(const char16_t* section, const char16_t* key,
                                   const char16_t* otherwise = u"",
                                   std::size_t capacity = 512) const {
        return readProfile(section, key, otherwise, capacity, String(path_)).utf8();
    }
    [[nodiscard]] bool write(const char16_t* section, const char16_t* key,
                             std::u16string_view value) const {
        return writeProfile(section, key, value, String(path_));
    }

    test::TemporaryFolder folder_;
    std::string path_ = folder_.file("prova.ini");
};

TEST_F(ProfileFile, ReadsAKeyOfItsSection) {
    put("[Stampa]\r\nStampante=HP\r\n[Video]\r\nStampante=nessuna\r\n");
    EXPECT_EQ(read(u"Stampa", u"Stampante"), "HP");
    EXPECT_EQ(read(u"Video", u"Stampante"), "nessuna");
}

TEST_F(ProfileFile, IgnoresCaseAndBlanksAroundNames) {
    put("  [ stampa ]  \n   STAMPANTE   =   HP LaserJet  \n");
    EXPECT_EQ(read(u"Stampa", u"Stampante"), "HP LaserJet");
    EXPECT_EQ(read(u" STAMPA ", u" stampante "), "HP LaserJet");
}

TEST_F(ProfileFile, StripsOnePairOfQuotes) {
    put("[A]\na=\"con \"\nb='con'\nc=\"\"doppie\"\"\nd=\"solo\ne='mista\"\nf=\"\n");
    EXPECT_EQ(read(u"A", u"a"), "con ");
    EXPECT_EQ(read(u"A", u"b"), "con");
    EXPECT_EQ(read(u"A", u"c"), "\"doppie\"");
    EXPECT_EQ(read(u"A", u"d"), "\"solo");
    EXPECT_EQ(read(u"A", u"e"), "'mista\"");
    EXPECT_EQ(read(u"A", u"f"), "\"");
}

TEST_F(ProfileFile, TakesTheFirstSectionAndTheFirstKey) {
    put("[A]\nx=1\nx=2\n[A]\nx=3\ny=4\n");
    EXPECT_EQ(read(u"A", u"x"), "1");
    EXPECT_EQ(read(u"A", u"y", u"manca"), "manca");
}

TEST_F(ProfileFile, PassesOverCommentsAndDamagedLines) {
    put("x=fuori\n[A]\n;x=commento\nsenza uguale\n[non chiusa\nx=vero\n");
    EXPECT_EQ(read(u"A", u"x"), "vero");
    EXPECT_EQ(read(u"A", u";x", u"manca"), "manca");
}

TEST_F(ProfileFile, KeepsWhatFollowsTheFirstEqualSign) {
    put("[A]\nx=a=b;c\n");
    EXPECT_EQ(read(u"A", u"x"), "a=b;c");
}

TEST_F(ProfileFile, GivesTheDefaultWithoutTheBlanksBehindIt) {
    EXPECT_EQ(read(u"A", u"x", u" "), "");
    EXPECT_EQ(read(u"A", u"x", u" no  "), " no");
    EXPECT_EQ(read(u"A", u"", u"no"), "no");
    put("[A]\nx=\n");
    EXPECT_EQ(read(u"A", u"x", u"no"), "");
}

TEST_F(ProfileFile, GivesTheDefaultForAFileThatCannotBeRead) {
    fs::create_directory(path_);
    EXPECT_EQ(read(u"A", u"x", u"no"), "no");
    EXPECT_EQ(readProfile(u"A", u"x", u"no", 512, u"").utf8(), "no");
}

TEST_F(ProfileFile, CutsAValueToTheBuffer) {
    put("[A]\nx=" + std::string(600, 'a') + "\n");
    EXPECT_EQ(read(u"A", u"x", u"", 512), std::string(511, 'a'));
    EXPECT_EQ(read(u"A", u"x", u"", 1), "");
    EXPECT_EQ(read(u"A", u"x", u"", 0), "");
}

TEST_F(ProfileFile, IsMadeWhenItIsMissing) {
    EXPECT_TRUE(write(u"Stampa", u"Stampante", u"HP"));
    EXPECT_EQ(contentOf(path_), "[Stampa]\r\nStampante=HP\r\n");
}

TEST_F(ProfileFile, ChangesNothingButTheValue) {
    put("; intestazione\n\n[A]\n  Nome =  Rossi  \n# altro\nrotta\n\n[B]\nNome=x\n");
    EXPECT_TRUE(write(u"a", u"NOME", u"Bianchi"));
    EXPECT_EQ(contentOf(path_),
              "; intestazione\n\n[A]\n  Nome =  Bianchi\n# altro\nrotta\n\n[B]\nNome=x\n");
}

TEST_F(ProfileFile, AddsAKeyToItsSection) {
    put("[A]\r\nx=1\r\n\r\n; di B\r\n[B]\r\ny=2\r\n");
    EXPECT_TRUE(write(u"A", u"z", u"3"));
    EXPECT_EQ(contentOf(path_), "[A]\r\nx=1\r\nz=3\r\n\r\n; di B\r\n[B]\r\ny=2\r\n");
}

TEST_F(ProfileFile, AddsTheFirstKeyBehindTheHeading) {
    put("[A]\n; commento\n[B]");
    EXPECT_TRUE(write(u"A", u"x", u"1"));
    EXPECT_TRUE(write(u"B", u"y", u"2"));
    EXPECT_EQ(contentOf(path_), "[A]\nx=1\n; commento\n[B]\ny=2\n");
}

TEST_F(ProfileFile, AddsASectionBehindALastLineThatIsNotEnded) {
    put("[A]\nx=1");
    EXPECT_TRUE(write(u"B", u"y", u"2"));
    EXPECT_EQ(contentOf(path_), "[A]\nx=1\n[B]\ny=2\n");
}

TEST_F(ProfileFile, WritesAnEmptyValueAndFillsOne) {
    put("[A]\nx=1\ny=");
    EXPECT_TRUE(write(u"A", u"x", u""));
    EXPECT_TRUE(write(u"A", u"y", u"2"));
    EXPECT_EQ(contentOf(path_), "[A]\nx=\ny=2");
}

TEST_F(ProfileFile, KeepsCodePage1252) {
    put("[A]\r\ncitt\xE0=Forl\xEC\r\n");
    EXPECT_EQ(read(u"A", u"CITT\u00C0"), "Forl\xC3\xAC");
    EXPECT_TRUE(write(u"A", u"prezzo", u"5 €"));
    EXPECT_EQ(contentOf(path_), "[A]\r\ncitt\xE0=Forl\xEC\r\nprezzo=5 \x80\r\n");
}

TEST_F(ProfileFile, KeepsUtf8AndItsMark) {
    put("\xEF\xBB\xBF[A]\nx=Forl\xC3\xAC\n");
    EXPECT_EQ(read(u"A", u"x"), "Forl\xC3\xAC");
    EXPECT_TRUE(write(u"A", u"x", u"Ω"));
    EXPECT_EQ(contentOf(path_), "\xEF\xBB\xBF[A]\nx=\xCE\xA9\n");
}

TEST_F(ProfileFile, KeepsUtf16) {
    put(std::string("\xFF\xFE[\0A\0]\0\n\0x\0=\0\x31\0\n\0", 18));
    EXPECT_EQ(read(u"A", u"x"), "1");
    EXPECT_TRUE(write(u"A", u"x", u"Ω"));
    EXPECT_EQ(contentOf(path_), std::string("\xFF\xFE[\0A\0]\0\n\0x\0=\0\xA9\x03\n\0", 18));
}

TEST_F(ProfileFile, RefusesWhatItCannotHold) {
    put("[A]\ncitt\xE0=1\n");
    EXPECT_FALSE(write(u"A", u"x", u"due\nrighe"));
    EXPECT_FALSE(write(u"A", u"a=b", u"1"));
    EXPECT_FALSE(write(u"A", u";a", u"1"));
    EXPECT_FALSE(write(u"A", u"", u"1"));
    EXPECT_FALSE(write(u"", u"a", u"1"));
    EXPECT_FALSE(write(u"A", u"x", u"Ω"));  // code page 1252 has none
    EXPECT_EQ(contentOf(path_), "[A]\ncitt\xE0=1\n");
}

TEST_F(ProfileFile, IsInCodePage1252WhenItIsMade) {
    EXPECT_TRUE(write(u"Città", u"Però", u"5 €"));
    EXPECT_EQ(contentOf(path_), "[Citt\xE0]\r\nPer\xF2=5 \x80\r\n");
    EXPECT_EQ(read(u"CITTÀ", u"PERÒ"), "5 €");
}

TEST_F(ProfileFile, IsInCodePage1252WithoutAMarkAlsoWhereItsBytesAreUtf8) {
    put("[A]\nx=\xE8\n");
    EXPECT_TRUE(write(u"A", u"x", u"Ã¨"));  // the bytes of one letter in UTF-8
    EXPECT_EQ(contentOf(path_), "[A]\nx=\xC3\xA8\n");
    EXPECT_EQ(read(u"A", u"x"), "Ã¨");
    EXPECT_TRUE(write(u"A", u"y", u"è"));
    EXPECT_EQ(contentOf(path_), "[A]\nx=\xC3\xA8\ny=\xE8\n");
}

TEST_F(ProfileFile, RefusesANewLetterThatOnlyAMarkedFileCouldHold) {
    EXPECT_FALSE(write(u"A", u"x", u"Ω"));
    EXPECT_FALSE(fs::exists(path_));
    put("\xEF\xBB\xBF");
    EXPECT_TRUE(write(u"A", u"x", u"Ω"));
    EXPECT_EQ(contentOf(path_), "\xEF\xBB\xBF[A]\r\nx=\xCE\xA9\r\n");
}

TEST_F(ProfileFile, TellsWhenItCannotBeWritten) {
    EXPECT_FALSE(writeProfile(u"A", u"x", u"1", String(folder_.file("manca/prova.ini"))));
    EXPECT_FALSE(writeProfile(u"A", u"x", u"1", u""));
}

TEST_F(ProfileFile, LiesInTheSettingsWhenItsNameHasNoFolder) {
    const test::ScopedVariable home("KAPUTIL_HOME", folder_.file("impostazioni"));
    EXPECT_TRUE(writeProfile(u"A", u"x", u"1", u"vertex.ini"));
    EXPECT_EQ(contentOf(folder_.file("impostazioni/vertex.ini")), "[A]\r\nx=1\r\n");
    EXPECT_EQ(readProfile(u"A", u"x", u"", 512, u"VERTEX.INI").utf8(), "1");
}

TEST_F(ProfileFile, LosesNoKeyOfSeveralProcesses) {
    constexpr int kCount = 25;
    std::vector<pid_t> children;
    for (const char* prefix : {"a", "b", "c", "d"}) {
        children.push_back(
            test::startProgram("store_values", {"profile", path_, prefix, std::to_string(kCount)}));
    }
    for (const pid_t child : children) {
        EXPECT_TRUE(test::succeeds(child));
    }
    for (const std::string prefix : {"a", "b", "c", "d"}) {
        for (int i = 1; i <= kCount; ++i) {
            const std::string name = prefix + std::to_string(i);
            EXPECT_EQ(readProfile(u"Valori", String(name), u"", 512, String(path_)).utf8(), name);
        }
    }
}

TEST_F(ProfileFile, IsWholeWhateverMomentAWriterDies) {
    std::mt19937 random(test::randomSeed());
    ASSERT_TRUE(write(u"Valori", u"ultimo", u"qui"));
    for (int round = 0; round < 10; ++round) {
        const pid_t child = test::startProgram("store_values", {"profile", path_, "k", "100000"});
        usleep(std::uniform_int_distribution<useconds_t>(1000, 20000)(random));
        kill(child, SIGKILL);
        EXPECT_FALSE(test::succeeds(child));
        const std::string content = contentOf(path_);
        EXPECT_TRUE(content.starts_with("[Valori]\r\nultimo=qui\r\n")) << content;
        EXPECT_TRUE(content.ends_with("\r\n")) << content;
    }
    EXPECT_TRUE(write(u"Valori", u"ultimo", u"ancora"));  // no lock is left behind
}

}  // namespace
}  // namespace kap::platform
