#include <kaputil/host/services.hpp>

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <sstream>

#include <kaputil/automation/error.hpp>
#include <kaputil/automation/locale.hpp>
#include <kaputil/platform/creatable_objects.hpp>
#include <kaputil/platform/message_box.hpp>

#include "support/processes.hpp"
#include "support/scoped_variable.hpp"
#include "support/shown.hpp"
#include "support/temporary_folder.hpp"
#include "support/text_files.hpp"

namespace kap::host {
namespace {

using test::contentOf;
using test::raisedBy;
using test::shown;

class Log : public testing::Test {
protected:
    test::TemporaryFolder folder_;
    std::string file_ = folder_.file("vertex.log");
};

TEST_F(Log, IsMadeAndThenAppendedTo) {
    WLog(String(file_), u"prima riga");
    EXPECT_EQ(contentOf(file_), "prima riga\r\n");
    WLog(String(file_), u"  seconda però\t");
    EXPECT_EQ(contentOf(file_), "prima riga\r\n  seconda per\xC3\xB2\t\r\n");
}

TEST_F(Log, TakesWhateverHasAText) {
    const LocaleScope locale("it-IT");
    WLog(String(file_), 2.5);
    WLog(String(file_), u"");
    EXPECT_EQ(contentOf(file_), "2,5\r\n\r\n");
}

TEST_F(Log, PassesOnTheErrorsOfFiles) {
    EXPECT_EQ(raisedBy([&] {
                  WLog(String(folder_.file("manca/x.log")), u"x");
                  return 0;
              }),
              errors::kPathNotFound);
    EXPECT_EQ(raisedBy([&] {
                  WLog(String(file_), Variant::null());
                  return 0;
              }),
              errors::kInvalidUseOfNull);
}

TEST_F(Log, KeepsEveryLineOfSeveralProcessesWhole) {
    constexpr int kCount = 100;
    const std::map<char, std::size_t> lengths = {{'a', 10}, {'b', 5000}, {'c', 200}, {'d', 1}};
    std::vector<pid_t> children;
    for (const auto& [letter, length] : lengths) {
        children.push_back(test::startProgram(
            "append_log",
            {file_, std::string(1, letter), std::to_string(length), std::to_string(kCount)}));
    }
    for (const pid_t child : children) {
        EXPECT_TRUE(test::succeeds(child));
    }
    std::map<char, int> lines;
    std::istringstream log(contentOf(file_));
    for (std::string line; std::getline(log, line);) {
        ASSERT_GE(line.size(), 2U);
        const char letter = line.front();
        EXPECT_EQ(line, std::string(lengths.at(letter), letter) + "\r");
        ++lines[letter];
    }
    EXPECT_EQ(lines,
              (std::map<char, int>{{'a', kCount}, {'b', kCount}, {'c', kCount}, {'d', kCount}}));
}

TEST(FileAttributes, AreTheDateOfTheLastChangeForMod) {
    const test::TemporaryFolder folder;
    test::putFile(folder.file("a.txt"), "x");
    EXPECT_EQ(AttributiFile(String(folder.file("a.txt"))).type(), VarType::Date);
    EXPECT_EQ(AttributiFile(String(folder.file("A.TXT")), u"MOD").type(), VarType::Date);
}

TEST(FileAttributes, AreEmptyForAnyOtherName) {
    const test::TemporaryFolder folder;
    test::putFile(folder.file("a.txt"), "x");
    EXPECT_EQ(shown(AttributiFile(String(folder.file("a.txt")), u"mod")), "Empty");
    EXPECT_EQ(shown(AttributiFile(String(folder.file("a.txt")), u"")), "Empty");
}

TEST(FileAttributes, RaiseForAFileThatIsNotThere) {
    const test::TemporaryFolder folder;
    EXPECT_EQ(raisedBy([&] { return AttributiFile(String(folder.file("a.txt")), u"mod"); }),
              errors::kFileNotFound);
}

class SendKeys : public testing::Test {
protected:
    SendKeys() { platform::setMessageLog(folder_.file("messaggi.log")); }
    ~SendKeys() override { platform::setMessageLog(std::nullopt); }
    [[nodiscard]] std::string logged(const char16_t* keys) const {
        std::filesystem::remove(folder_.file("messaggi.log"));
        kapSendKeys(keys);
        const std::string log = contentOf(folder_.file("messaggi.log"));
        return log.substr(std::min(log.find('\t'), log.size()));  // behind the date
    }
    test::TemporaryFolder folder_;
    test::ScopedVariable display_{"DISPLAY", std::nullopt};
};

TEST_F(SendKeys, ShowsAMessageForKeysThatItDoesNotKnow) {
    EXPECT_EQ(logged(u"{tab}"), "\terror\tkapSendKeys\tTasto {tab} non gestito\n");
    EXPECT_EQ(logged(u""), "\terror\tkapSendKeys\tTasto  non gestito\n");
}

TEST_F(SendKeys, KnowsTheKeysThatExistingProgramsSend) {
    for (const char16_t* keys : {u"{TAB}", u"+{TAB}", u"{^HOME}", u"{^END}", u"{^PGUP}", u"{PGUP}",
                                 u"{^PGDN}", u"{PGDN}", u"{UP}", u"{DOWN}", u"+C"}) {
        // Without a screen they are only known.
        EXPECT_TRUE(logged(keys).starts_with("\twarning\ttest_host\tNessun tasto inviato: "))
            << String(keys).utf8();
    }
}

}  // namespace
}  // namespace kap::host
