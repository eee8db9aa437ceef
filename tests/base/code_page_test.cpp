#include "base/code_page.hpp"

#include <gtest/gtest.h>

namespace kap {
namespace {

TEST(CodePages, CarryTheirOwnCharacters) {
    EXPECT_EQ(decode(CodePage::Windows1252, "citt\xE0 \x80"), u"città €");
    EXPECT_EQ(encode(CodePage::Windows1252, u"città €"), "citt\xE0 \x80");
    EXPECT_EQ(decode(CodePage::Dos850, "citt\x85"), u"città");
    EXPECT_EQ(encode(CodePage::Dos850, u"è \u2502"), "\x8A \xB3");
}

TEST(CodePages, RefuseWhatTheyLack) {
    EXPECT_EQ(encode(CodePage::Windows1252, u"\u03A9"), std::nullopt);
    EXPECT_EQ(encode(CodePage::Dos850, u"€"), std::nullopt);
}

TEST(CodePages, KeepEveryByte) {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) {
        bytes.push_back(static_cast<char>(byte));
    }
    for (const CodePage page : {CodePage::Windows1252, CodePage::Dos850}) {
        EXPECT_EQ(encode(page, decode(page, bytes)), bytes);
    }
}

}  // namespace
}  // namespace kap
