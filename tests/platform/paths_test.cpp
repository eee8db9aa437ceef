#include "platform/paths.hpp"

#include <gtest/gtest.h>

#include <filesystem>

#include <kaputil/automation/error.hpp>

#include "support/shown.hpp"
#include "support/temporary_folder.hpp"
#include "support/text_files.hpp"

namespace kap::platform {
namespace {

namespace fs = std::filesystem;

class Paths : public testing::Test {
protected:
    Paths() {
        fs::create_directories(folder_.file("Archivio/Clienti"));
        test::putFile(folder_.file("Archivio/Clienti/Rossi.txt"), "x");
    }
    [[nodiscard]] std::string located(const std::string& below) const {
        return locate(String(folder_.file(below))).string();
    }
    test::TemporaryFolder folder_;
};

TEST_F(Paths, AreSeparatedByBothSlashes) {
    EXPECT_EQ(located("Archivio\\Clienti/Rossi.txt"), folder_.file("Archivio/Clienti/Rossi.txt"));
}

TEST_F(Paths, IgnoreTheCaseOfNamesThatAreNotThereExactly) {
    EXPECT_EQ(located("ARCHIVIO\\clienti\\ROSSI.TXT"), folder_.file("Archivio/Clienti/Rossi.txt"));
}

TEST_F(Paths, PreferTheExactName) {
    test::putFile(folder_.file("Archivio/Clienti/ROSSI.TXT"), "y");
    EXPECT_EQ(located("Archivio/Clienti/ROSSI.TXT"), folder_.file("Archivio/Clienti/ROSSI.TXT"));
}

TEST_F(Paths, KeepTheNameOfWhatIsNotThere) {
    EXPECT_EQ(located("archivio/Nuovo.txt"), folder_.file("Archivio/Nuovo.txt"));
    EXPECT_EQ(located("manca/Nuovo.txt"), folder_.file("manca/Nuovo.txt"));
}

TEST_F(Paths, RaiseForWhatNoFileCanBeNamed) {
    EXPECT_EQ(test::raisedBy([] { return locate(std::u16string_view(u"a\0b", 3)); }),
              errors::kBadFileName);
    EXPECT_EQ(test::raisedBy([] { return locate(std::u16string(1, u'\xD800')); }),
              errors::kBadFileName);
}

TEST_F(Paths, RaiseForOneThatIsTooLong) {
    const std::u16string long16 = std::u16string(4096, u'a');
    EXPECT_EQ(test::raisedBy([&] { return locate(long16); }), errors::kBadFileName);
    std::u16string deep;
    for (int i = 0; i < 2000; ++i) {
        deep += u"a/";
    }
    EXPECT_EQ(locate(deep).string(), String(deep).utf8());
}

TEST(PathText, ReadsBytesThatAreNoUtf8AsCodePage1252) {
    EXPECT_EQ(pathText("citt\xC3\xA0"), u"città");
    EXPECT_EQ(pathText("citt\xE0"), u"città");
}

}  // namespace
}  // namespace kap::platform
