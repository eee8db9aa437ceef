#include "base/text_order.hpp"

#include "support/seed.hpp"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>
#include <vector>

namespace kap {
namespace {

// Strictly ascending.
constexpr auto kAscending = std::to_array<std::string_view>({
    "",     "-",    "_",     "€",    "0", "10", "9", "A",  "à",  "a b", "Abaco", "b",
    "cote", "coté", "côte",  "côté", "d", "e",  "é", "ea", "èb", "ez",  "e-z",   "f",
    "nino", "niño", "ninon", "o",    "ö", "oe", "z", "α",  "ω",  "я",
});

TEST(Collation, OrdersLettersByBaseLetterThenByAccent) {
    for (std::size_t i = 0; i + 1 < kAscending.size(); ++i) {
        for (std::size_t j = i + 1; j < kAscending.size(); ++j) {
            EXPECT_TRUE(compareTexts(kAscending.at(i), kAscending.at(j)) < 0)
                << kAscending.at(i) << " and " << kAscending.at(j);
            EXPECT_TRUE(compareTexts(kAscending.at(j), kAscending.at(i)) > 0)
                << kAscending.at(j) << " and " << kAscending.at(i);
        }
    }
}

TEST(Collation, ApostrophesAndHyphensCountLast) {
    constexpr auto kWords = std::to_array<std::string_view>(
        {"Dabene", "Damico", "D'Amico", "D-Amico", "Dam'ico", "Damicone", "D'Andrea", "De Amicis"});
    for (std::size_t i = 0; i + 1 < kWords.size(); ++i) {
        EXPECT_TRUE(compareTexts(kWords.at(i), kWords.at(i + 1)) < 0)
            << kWords.at(i) << " and " << kWords.at(i + 1);
    }
    EXPECT_TRUE(compareTexts("co-op", "co-op") == 0);
    EXPECT_TRUE(compareTexts("perche-", "perché") < 0);
}

TEST(Collation, SomeLettersAreTwo) {
    EXPECT_TRUE(compareTexts("Straße", "STRASSE") == 0);
    EXPECT_TRUE(compareTexts("ẞ", "ss") == 0);
    EXPECT_TRUE(compareTexts("Æsop", "aesop") == 0);
    EXPECT_TRUE(compareTexts("œuvre", "OEUVRE") == 0);
    EXPECT_TRUE(compareTexts("Masse", "Maße") == 0);
    EXPECT_TRUE(compareTexts("Maßa", "Mast") < 0);
}

TEST(Collation, TheFormerOrderIsKeptForFilesThatWereMadeByIt) {
    EXPECT_TRUE(compareTextsBySigns("D'Amico", "Dabene") < 0);
    EXPECT_TRUE(compareTextsBySigns("Straße", "Strasse") != 0);
    EXPECT_TRUE(compareTextsBySigns("Rossi", "rossi ") == 0);
}

TEST(Collation, IgnoresCase) {
    EXPECT_TRUE(compareTexts("Rossi", "rOSSI") == 0);
    EXPECT_TRUE(compareTexts("È", "è") == 0);
    EXPECT_TRUE(compareTexts("ΑΩ", "αω") == 0);
}

TEST(Collation, IgnoresTrailingBlanks) {
    EXPECT_TRUE(compareTexts("abc", "ABC   ") == 0);
    EXPECT_TRUE(compareTexts("", "   ") == 0);
    EXPECT_TRUE(compareTexts("perché  ", "perché") == 0);
}

TEST(Collation, OtherBlanksCount) {
    EXPECT_FALSE(compareTexts("abc", " abc") == 0);
    EXPECT_FALSE(compareTexts("abc", "abc\t") == 0);
}

TEST(Collation, KeepsAccentsApart) {
    EXPECT_FALSE(compareTexts("perche", "perché") == 0);
    EXPECT_FALSE(compareTexts("perchè", "perché") == 0);
}

TEST(Collation, AnAccentWrittenAsAMarkOfItsOwnIsTheSame) {
    EXPECT_TRUE(compareTexts("perch\u00E9", "perche\u0301") == 0);
    EXPECT_TRUE(compareTexts("e\u0301a", "\u00E9a") == 0);
}

TEST(Collation, ALaterLetterWeighsMoreThanAnEarlierAccent) {
    EXPECT_TRUE(compareTexts("pèra", "perb") < 0);
}

TEST(Collation, BytesThatAreNotUtf8AreOrderedToo) {
    EXPECT_TRUE(compareTexts("a\xFF", "a\xFF") == 0);
    EXPECT_TRUE(compareTexts("a\xFE", "a\xFF") < 0);
    EXPECT_TRUE(compareTexts("\xC3", "\xE2\x82") != 0);
    EXPECT_TRUE(compareTexts("a\xED\xA0\x80", "ab") < 0);
}

// Texts from a small alphabet, so that equal and nearly equal ones are frequent.
std::string randomText(std::mt19937& random) {
    static const std::vector<std::string> kParts = {"a", "A", "b", "e", "é",    "è", "\u0301",
                                                    " ", "9", "-", "ß", "\xFF", "\t"};
    std::uniform_int_distribution<std::size_t> part(0, kParts.size() - 1);
    std::uniform_int_distribution<int> length(0, 4);
    std::string text;
    for (int i = length(random); i > 0; --i) {
        text += kParts[part(random)];
    }
    return text;
}

TEST(Collation, IsATotalOrder) {
    std::mt19937 random(kap::test::randomSeed());
    for (int i = 0; i < 20000; ++i) {
        const std::string a = randomText(random);
        const std::string b = randomText(random);
        const std::string c = randomText(random);
        const auto ab = compareTexts(a, b);
        ASSERT_TRUE((ab < 0) == (compareTexts(b, a) > 0)) << a << "|" << b;
        ASSERT_TRUE((ab == 0) == (compareTexts(b, a) == 0)) << a << "|" << b;
        if (ab <= 0 && compareTexts(b, c) <= 0) {
            ASSERT_TRUE(compareTexts(a, c) <= 0) << a << "|" << b << "|" << c;
        }
    }
}

}  // namespace
}  // namespace kap
