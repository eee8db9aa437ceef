#include <kaputil/host/cfile_ini.hpp>

#include <gtest/gtest.h>

#include <cctype>
#include <filesystem>

#include <kaputil/automation/error.hpp>
#include <kaputil/host/csystem.hpp>
#include <kaputil/host/services.hpp>

#include "support/scoped_variable.hpp"
#include "support/shown.hpp"
#include "support/temporary_folder.hpp"
#include "support/text_files.hpp"

namespace kap {
namespace {

using test::raisedBy;
using test::shown;

class CFileINITest : public testing::Test {
protected:
    [[nodiscard]] String read(const char16_t* key) const {
        return ini_->ReadIni(u"Stampa", key, String(path_));
    }
    [[nodiscard]] std::string user() const { return host::kapNomeUtente().utf8(); }

    test::TemporaryFolder folder_;
    std::string path_ = folder_.file("prova.ini");
    Ref<CFileINI> ini_ = make<CFileINI>();
};

TEST_F(CFileINITest, ReadsWhatItWrote) {
    EXPECT_EQ(ini_->WriteIni(u"Stampa", u"Stampante", u"HP LaserJet", String(path_)), 1);
    EXPECT_EQ(read(u"STAMPANTE"), u"HP LaserJet");
}

TEST_F(CFileINITest, ReadsAMissingKeyAsEmpty) {
    EXPECT_EQ(read(u"Stampante"), u"");
}

TEST_F(CFileINITest, ReadsAtMost255Characters) {
    ini_->WriteIni(u"Stampa", u"Lungo", std::string(255, 'a'), String(path_));
    EXPECT_EQ(read(u"Lungo"), String(std::string(255, 'a')));
    ini_->WriteIni(u"Stampa", u"Lungo", std::string(256, 'a'), String(path_));
    EXPECT_EQ(raisedBy([&] { return read(u"Lungo"); }), errors::kOverflow);
    ini_->WriteIni(u"Stampa", u"Lungo", std::string(2000, 'a'), String(path_));
    EXPECT_EQ(raisedBy([&] { return read(u"Lungo"); }), errors::kOverflow);
}

TEST_F(CFileINITest, TellsWhenItCannotWrite) {
    EXPECT_EQ(ini_->WriteIni(u"Stampa", u"x", u"1", String(folder_.file("manca/x.ini"))), 0);
}

TEST_F(CFileINITest, ChoosesTheUsersFileInAnyCase) {
    std::string loud = user();
    for (char& letter : loud) {
        letter = static_cast<char>(std::toupper(letter));
    }
    test::putFile(folder_.file(loud + ".INI"), "");
    EXPECT_EQ(shown(ini_->NomeFileINI(String(folder_.file("")))), "String " + user() + ".ini");
}

TEST_F(CFileINITest, ChoosesTheApplicationsFileOtherwise) {
    test::putFile(folder_.file("altro.ini"), "");
    EXPECT_EQ(shown(ini_->NomeFileINI(String(folder_.file("")))), "String Vertex.ini");
    EXPECT_EQ(shown(ini_->NomeFileINI(String(folder_.file("")), u"Magazzino")),
              "String Magazzino.ini");
    std::filesystem::create_directory(folder_.file(user() + ".ini"));  // a folder is no file
    EXPECT_EQ(shown(ini_->NomeFileINI(String(folder_.file("")))), "String Vertex.ini");
}

TEST_F(CFileINITest, LooksInTheFolderOfTheProgramAndWritesItBack) {
    String path;
    EXPECT_EQ(shown(ini_->NomeFileINI(path)), "String Vertex.ini");
    EXPECT_TRUE(std::filesystem::exists(path.utf8() + "/test_host")) << path.utf8();
}

TEST_F(CFileINITest, RaisesForAFolderThatIsNotThere) {
    EXPECT_EQ(raisedBy([&] { return ini_->NomeFileINI(String(folder_.file("manca"))); }),
              errors::kPathNotFound);
}

TEST(CSystemTest, NamesTheFolderWithABackslashAtItsEnd) {
    const test::ScopedVariable home("KAPUTIL_HOME", "/srv/vertex");
    EXPECT_EQ(make<CSystem>()->WindowsDirectory(), u"/srv/vertex\\");
}

TEST(CSystemTest, LeavesOutAPathThatIsTooLongForItsBuffer) {
    const test::ScopedVariable home("KAPUTIL_HOME", "/" + std::string(253, 'a'));
    EXPECT_EQ(make<CSystem>()->WindowsDirectory().size(), 255U);
    const test::ScopedVariable longer("KAPUTIL_HOME", "/" + std::string(254, 'a'));
    EXPECT_EQ(make<CSystem>()->WindowsDirectory(), u"\\");
}

TEST(CSystemTest, IsWhereProfileFilesWithoutAFolderAre) {
    const test::TemporaryFolder folder;
    const test::ScopedVariable home("KAPUTIL_HOME", folder.file("nuova"));
    const auto ini = make<CFileINI>();
    EXPECT_EQ(ini->WriteIni(u"A", u"x", u"1", u"vertex.ini"), 1);
    EXPECT_EQ(ini->ReadIni(u"A", u"x", make<CSystem>()->WindowsDirectory() + u"VERTEX.ini"), u"1");
}

}  // namespace
}  // namespace kap
