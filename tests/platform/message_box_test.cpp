#include <kaputil/platform/message_box.hpp>

#include <gtest/gtest.h>
#include <syslog.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <string>

#include "support/temporary_folder.hpp"

namespace kap::platform {
namespace {

std::string loggedText(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class MessageBox : public testing::Test {
protected:
    void TearDown() override { setMessageLog(std::nullopt); }
    test::TemporaryFolder folder_;
};

TEST_F(MessageBox, AppendsDateSeverityTitleAndTextToTheChosenFile) {
    setMessageLog(folder_.file("messaggi.log"));
    showMessage(u"Vendite", MessageSeverity::Information, u"Valuta XXX non trovata!");
    showMessage(u"Però", MessageSeverity::Error, u"€ \u00E8 strano");
    const std::regex expected(
        "\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\tinformation\tVendite\tValuta XXX non trovata!\n"
        "\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\terror\tPer\xC3\xB2\t\xE2\x82\xAC \xC3\xA8 "
        "strano\n");
    const std::string content = loggedText(folder_.file("messaggi.log"));
    EXPECT_TRUE(std::regex_match(content, expected)) << content;
}

TEST_F(MessageBox, KeepsTheTextAsItStands) {
    setMessageLog(folder_.file("messaggi.log"));
    showMessage(u"T", MessageSeverity::Warning, u"prima riga\r\nseconda riga ");
    const std::string content = loggedText(folder_.file("messaggi.log"));
    EXPECT_TRUE(content.ends_with("\twarning\tT\tprima riga\r\nseconda riga \n")) << content;
}

TEST_F(MessageBox, GoesToTheSystemLogWhenTheFileCannotBeWritten) {
    openlog("vendite", LOG_PERROR, LOG_USER);  // what is logged shows on standard error, too
    setMessageLog(folder_.file("manca/messaggi.log"));
    testing::internal::CaptureStderr();
    showMessage(u"T", MessageSeverity::Error, u"testo");
    const std::string logged = testing::internal::GetCapturedStderr();
    openlog(nullptr, 0, LOG_USER);
    closelog();
    EXPECT_EQ(logged, "vendite: T: testo\n");
    EXPECT_FALSE(std::filesystem::exists(folder_.file("manca")));
}

TEST_F(MessageBox, GoesToTheFileAgainOnceItCanBeWritten) {
    setMessageLog(folder_.file("manca/messaggi.log"));
    showMessage(u"T", MessageSeverity::Error, u"prima");
    std::filesystem::create_directory(folder_.file("manca"));
    showMessage(u"T", MessageSeverity::Error, u"dopo");
    const std::string content = loggedText(folder_.file("manca/messaggi.log"));
    EXPECT_TRUE(content.ends_with("\terror\tT\tdopo\n")) << content;
    EXPECT_EQ(content.find("prima"), std::string::npos);
}

TEST_F(MessageBox, ReplacesHalfSurrogatesThatNoFileCanHold) {
    setMessageLog(folder_.file("messaggi.log"));
    const std::u16string half(1, u'\xD800');
    showMessage(u"T", MessageSeverity::Error, String(half));
    EXPECT_TRUE(loggedText(folder_.file("messaggi.log")).ends_with("\tT\t\xEF\xBF\xBD\n"));
}

TEST(MessageTitle, IsTheHostApplication) {
    EXPECT_EQ(defaultMessageTitle(), u"test_platform");
}

}  // namespace
}  // namespace kap::platform
