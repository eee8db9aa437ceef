// How the files of the reference are read.
#include "catalogue/reference_reader.hpp"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace kap {
namespace {

constexpr const char* kReference = R"(# Cosa
en: A thing. It is one.
it: Una cosa. È
    una.
en: More.
it: Altro.
setup
    Set c = CreateObject("Cosa")
example
    c.Fai 1

    If c Then
        c.Fai 2
    End If

## Fai
en: Does it.
it: Lo fa.
- nModo
en: How.
it: Come.
= 1
en: well
it: bene
result
en: Whether it did.
it: Se l'ha fatto.
= True
en: it did
it: sì
error 13
en: for a way that is none
it: per un modo che non lo è
error
en: the database's errors
it: gli errori della base dati
## Stato
en: The state.
it: Lo stato.
= 0
en: closed
it: chiuso
)";

std::string refusal(const std::string& text) {
    try {
        static_cast<void>(readReference(text, DocumentationLanguage::English));
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
    return {};
}

TEST(ReferenceReader, ReadsTheClassInBothLanguages) {
    const auto english = readReference(kReference, DocumentationLanguage::English);
    EXPECT_EQ(english.itself.summary(), "A thing.");
    EXPECT_EQ(english.itself.paragraphs,
              (std::vector<std::string>{"A thing. It is one.", "More."}));
    const auto italian = readReference(kReference, DocumentationLanguage::Italian);
    EXPECT_EQ(italian.itself.paragraphs, (std::vector<std::string>{"Una cosa. È una.", "Altro."}));
    EXPECT_EQ(italian.setup, "Set c = CreateObject(\"Cosa\")\n");
    EXPECT_EQ(italian.itself.example, "c.Fai 1\n\nIf c Then\n    c.Fai 2\nEnd If\n");
}

TEST(ReferenceReader, ReadsMembersWithWhatTheyTakeAndGive) {
    const auto read = readReference(kReference, DocumentationLanguage::Italian);
    ASSERT_EQ(read.members.size(), 2U);
    const Documentation& member = read.members[0].second;
    EXPECT_EQ(read.members[0].first, "Fai");
    ASSERT_EQ(member.parameters.size(), 1U);
    EXPECT_EQ(member.parameters[0].name, "nModo");
    EXPECT_EQ(member.parameters[0].text, "Come.");
    ASSERT_EQ(member.parameters[0].values.size(), 1U);
    EXPECT_EQ(member.parameters[0].values[0].text, "bene");
    EXPECT_EQ(member.result, "Se l'ha fatto.");
    ASSERT_EQ(member.values.size(), 1U);
    EXPECT_EQ(member.values[0].value, "True");
    ASSERT_EQ(member.errors.size(), 2U);
    EXPECT_EQ(member.errors[0].number, 13);
    EXPECT_FALSE(member.errors[1].number.has_value());
    EXPECT_EQ(member.errors[1].text, "gli errori della base dati");
    EXPECT_EQ(read.find("Stato")->values.at(0).text, "chiuso");
    EXPECT_EQ(read.find("Manca"), nullptr);
}

TEST(ReferenceReader, RefusesATextInOneLanguageOnly) {
    EXPECT_EQ(refusal("# A\nen: One.\n## B\nen: Two.\nit: Due.\n"),
              "line 3: what ends here is not told in both languages");
    EXPECT_EQ(refusal("# A\nen: One.\nit: Uno.\n## B\n- c\nen: x\nit: y\n"),
              "line 5: what ends here is not told in both languages");
}

TEST(ReferenceReader, RefusesWhatIsOutOfPlace) {
    EXPECT_EQ(refusal("- a\n"), "line 1: the file begins with the name of its class");
    EXPECT_EQ(refusal("# A\nwords\n"), "line 2: a line that belongs to nothing");
    EXPECT_EQ(refusal("# A\nen: a\nit: a\nerror x\n"), "line 4: an error's number is a number");
}

}  // namespace
}  // namespace kap
