// The readers of files that people and other programs write, given texts that are damaged at
// random: whatever comes in, nothing is lost and nothing is read differently the second time.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "platform/mail/card.hpp"
#include "platform/profile_text.hpp"
#include "platform/registry/registration_text.hpp"
#include "platform/text_encoding.hpp"
#include "support/seed.hpp"

namespace kap::platform {
namespace {

constexpr int kTexts = 3000;

class DamagedTexts : public testing::Test {
protected:
    DamagedTexts() : random_(test::randomSeed()) {}

    // Gives `check` texts made of a sound one by changing, removing and doubling bytes.
    template <class Check>
    void forEach(const std::string& sound, Check check) {
        for (int i = 0; i < kTexts && !HasFailure(); ++i) {
            std::string text = sound;
            for (std::size_t changes = below(8); changes > 0; --changes) {
                damage(text);
            }
            SCOPED_TRACE("text " + testing::PrintToString(text));
            check(text);
        }
    }

private:
    std::size_t below(std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random_);
    }

    void damage(std::string& text) {
        constexpr std::string_view kTelling = "[]=;\"\\\n\r:,-@ \t\xE0\xFF\xFE\xEF";
        const std::size_t place = below(text.size() + 1);
        switch (below(3)) {
            case 0:
                text.insert(place, 1, kTelling[below(kTelling.size())]);
                break;
            case 1:
                text.erase(place, below(4));
                break;
            default:
                text.insert(place, text.substr(place, below(12)));
        }
    }

    std::mt19937 random_;
};

TEST_F(DamagedTexts, ProfilesComeOutAsTheyWentInAndKeepWhatIsPut) {
    for (const std::string mark : {"", "\xEF\xBB\xBF", "\xFF\xFE"}) {
        forEach(mark + "; nota\r\n[A]\r\nx = \"uno\"\r\ncitt\xC3\xA0=Forl\xC3\xAC\r\n\n[B]\ny=2\n",
                [](const std::string& text) {
                    ProfileText profile(text);
                    EXPECT_EQ(profile.bytes(), text);
                    if (profile.put(u"B", u"nuova", u"sì")) {
                        EXPECT_EQ(profile.value(u"b", u"NUOVA"), u"sì");
                        // A file that would be taken for one in another encoding is not written.
                        const auto written = profile.bytes();
                        EXPECT_EQ(
                            ProfileText(written.value_or("[B]\nnuova=s\xEC")).value(u"B", u"nuova"),
                            u"sì");
                    }
                });
    }
}

TEST_F(DamagedTexts, RegistriesReadTheSameAgainOrNotAtAll) {
    const std::string sound =
        "Windows Registry Editor Version 5.00\n\n; nota\n[HKEY_CURRENT_USER\\A\\B]\n"
        "\"x\"=\"c:\\\\dati \\\"qui\\\"\"\n@=dword:0000000a\n\"b\"=hex(7):61,00,\\\n  00,00\n"
        "[-HKEY_LOCAL_MACHINE\\C]\n[HKEY_USERS\\D]\n\"via\"=-\n";
    forEach(sound, [](const std::string& text) {
        registry::Tree tree;
        try {
            registry::applyText(text, tree);
        } catch (const registry::MalformedText&) {
            return;
        }
        const std::u16string written = registry::textOf(tree);
        const auto bytes = encodeText(TextEncoding::Utf8, written);
        ASSERT_TRUE(bytes);
        registry::Tree again;
        registry::applyText(*bytes, again);
        EXPECT_EQ(registry::textOf(again), written);
    });
}

TEST_F(DamagedTexts, CardsReadTheSameAgainAndKeepWhatIsPut) {
    using mail::Card;
    using enum mail::ContactField;
    const std::string sound =
        "BEGIN:VCARD\r\nVERSION:4.0\r\nUID:1\r\nFN:Rossi\r\nN:Rossi;Mario;;;\r\n"
        "item1.TEL;TYPE=\"home,voice\":0541\r\nADR;TYPE=home:;;Via Roma\\, 1;;;;\r\nNOTE:a\\nb\r\n "
        "c\r\n"
        "END:VCARD\r\n";
    forEach(sound, [](const std::string& text) {
        auto card = Card::read(text);
        if (!card) {
            return;
        }
        const std::string written = card->bytes();
        const auto again = Card::read(written);
        ASSERT_TRUE(again);
        EXPECT_EQ(again->bytes(), written);
        for (const auto field : {CustomerId, Email, FirstName, LastName, Company, HomePhone,
                                 HomeAddress, GovernmentId, FileAs}) {
            card->put(field, u"Via Po; 2, è\\ \"x\"\nfine");
            EXPECT_EQ(card->get(field), u"Via Po; 2, è\\ \"x\"\nfine");
        }
    });
}

}  // namespace
}  // namespace kap::platform
