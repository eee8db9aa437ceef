#include "platform/mail/card.hpp"

#include <gtest/gtest.h>

#include <regex>

namespace kap::platform::mail {
namespace {

using enum ContactField;

// The lines of a card behind its identity and in front of its end.
std::string body(const Card& card) {
    const std::string text = card.bytes();
    const std::size_t begin = text.find("\r\n", text.find("UID:")) + 2;
    return text.substr(begin, text.rfind("END:VCARD") - begin);
}

Card read(const std::string& lines) {
    auto card = Card::read("BEGIN:VCARD\r\nVERSION:4.0\r\nUID:1\r\n" + lines + "END:VCARD\r\n");
    EXPECT_TRUE(card);
    return card.value_or(Card());
}

TEST(ContactCard, BeginsWithAnIdentityOfItsOwn) {
    const std::regex expected(
        "BEGIN:VCARD\r\nVERSION:4\\.0\r\n"
        "UID:urn:uuid:[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}\r\n"
        "FN:\r\nEND:VCARD\r\n");
    EXPECT_TRUE(std::regex_match(Card().bytes(), expected)) << Card().bytes();
    EXPECT_NE(Card().uid(), Card().uid());
}

TEST(ContactCard, HoldsEveryFieldInItsLine) {
    Card card;
    card.put(CustomerId, u"12");
    card.put(Email, u"info@rossi.it");
    card.put(FirstName, u"Mario");
    card.put(LastName, u"Rossi");
    card.put(Company, u"Ferramenta Rossi");
    card.put(HomePhone, u"0541 123456");
    card.put(HomeAddress, u"Via Roma 1");
    card.put(GovernmentId, u"C00012");
    card.put(FileAs, u"C00012 - Rossi Mario");
    EXPECT_EQ(body(card),
              "FN:C00012 - Rossi Mario\r\n"
              "X-KAPUTIL-CUSTOMERID:12\r\n"
              "EMAIL:info@rossi.it\r\n"
              "N:Rossi;Mario\r\n"
              "ORG:Ferramenta Rossi\r\n"
              "TEL;TYPE=home:0541 123456\r\n"
              "ADR;TYPE=home:;;Via Roma 1\r\n"
              "X-KAPUTIL-GOVERNMENTID:C00012\r\n");
    EXPECT_EQ(card.get(LastName), u"Rossi");
    EXPECT_EQ(card.get(FirstName), u"Mario");
    EXPECT_EQ(card.get(HomeAddress), u"Via Roma 1");
}

TEST(ContactCard, KeepsSeparatorsAndLinesOfATextApart) {
    Card card;
    card.put(HomeAddress, u"Via Roma 1; scala B\r\n47921, Rimini \\ RN");
    card.put(Company, u"Rossi, Bianchi; figli");
    EXPECT_NE(card.bytes().find(R"(ADR;TYPE=home:;;Via Roma 1\; scala B\n47921\, Rimini \\ RN)"),
              std::string::npos)
        << card.bytes();
    EXPECT_EQ(card.get(HomeAddress), u"Via Roma 1; scala B\n47921, Rimini \\ RN");
    EXPECT_EQ(card.get(Company), u"Rossi, Bianchi; figli");
}

TEST(ContactCard, FoldsLongLinesBetweenCharacters) {
    Card card;
    std::u16string text;
    for (int i = 0; i < 100; ++i) {
        text += u"è€";
    }
    card.put(Company, text);
    std::size_t begin = 0;
    const std::string bytes = card.bytes();
    for (std::size_t end = bytes.find("\r\n"); end != std::string::npos;
         begin = end + 2, end = bytes.find("\r\n", begin)) {
        EXPECT_LE(end - begin, 75U);
        EXPECT_NO_THROW(String(bytes.substr(begin, end - begin)));
    }
    const auto again = Card::read(bytes);
    ASSERT_TRUE(again);
    EXPECT_EQ(again->get(Company), String(text));
}

TEST(ContactCard, LosesALineWithItsLastText) {
    Card card = read("FN:x\r\nEMAIL:a@b.it\r\nN:Rossi;Mario\r\n");
    card.put(Email, u"");
    card.put(LastName, u"");
    EXPECT_EQ(body(card), "FN:x\r\nN:;Mario\r\n");
    card.put(FirstName, u"");
    card.put(FileAs, u"");
    EXPECT_EQ(card.bytes(), "BEGIN:VCARD\r\nVERSION:4.0\r\nFN:\r\nUID:1\r\nEND:VCARD\r\n");
}

TEST(ContactCard, KeepsWhatOtherProgramsWrote) {
    const std::string lines =
        "FN:Rossi\r\nNOTE:a\\, b\r\nitem1.EMAIL;PREF=1:vecchio@x.it\r\nTEL;TYPE=work:1\r\n"
        "tel;type=\"voice,home\";X-N=\"a:b\":2\r\nN:Rossi;Mario;;Dott.;\r\n"
        "ADR;TYPE=home:casella;;Via Roma 1;Rimini;;47921;Italia\r\n";
    Card card = read(lines);
    EXPECT_EQ(body(card), lines);
    EXPECT_EQ(card.get(HomePhone), u"2");
    EXPECT_EQ(card.get(Email), u"vecchio@x.it");
    card.put(Email, u"nuovo@x.it");
    card.put(HomePhone, u"3");
    card.put(FirstName, u"Anna");
    card.put(HomeAddress, u"Via Po 2");
    EXPECT_EQ(body(card),
              "FN:Rossi\r\nNOTE:a\\, b\r\nitem1.EMAIL;PREF=1:nuovo@x.it\r\nTEL;TYPE=work:1\r\n"
              "tel;type=\"voice,home\";X-N=\"a:b\":3\r\nN:Rossi;Anna;;Dott.;\r\n"
              "ADR;TYPE=home:casella;;Via Po 2;Rimini;;47921;Italia\r\n");
}

TEST(ContactCard, IsTheFirstOfItsFile) {
    const std::string two =
        "BEGIN:VCARD\r\nFN:uno\r\nEND:VCARD\r\nBEGIN:VCARD\r\nFN:due\r\nEMAIL:a@b\r\nEND:VCARD\r\n";
    auto card = Card::read(two);
    ASSERT_TRUE(card);
    EXPECT_EQ(card->get(FileAs), u"uno");
    EXPECT_EQ(card->get(Email), u"");
    EXPECT_EQ(card->bytes(), two);
}

TEST(ContactCard, IsNoneWithoutBeginningOrEnd) {
    EXPECT_FALSE(Card::read(""));
    EXPECT_FALSE(Card::read("ciao\r\n"));
    EXPECT_FALSE(Card::read("BEGIN:VCARD\r\nFN:x\r\n"));
}

TEST(ContactCard, ReadsFoldedLinesWhateverTheyEndIn) {
    const auto card =
        Card::read("begin:vcard\nVERSION:3.0\nFN:Fer\n ramenta\n\t Rossi\nend:vcard\n");
    ASSERT_TRUE(card);
    EXPECT_EQ(card->get(FileAs), u"Ferramenta Rossi");
}

}  // namespace
}  // namespace kap::platform::mail
