#include <kaputil/core/cproprieta.hpp>

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>

#include "support/seed.hpp"
#include "support/shown.hpp"

namespace kap {
namespace {

// The operations as positions in a text, character by character: no index, no tags. Positions
// count from 1; 0 is "not found".
class PlainBag {
public:
    [[nodiscard]] std::string leggi(const std::u16string& name) const {
        const std::size_t opening = find(open(name));
        if (opening == 0) {
            return "Null";
        }
        const std::size_t start = opening + open(name).size();
        const std::size_t closing = find(close(name));
        if (closing < start) {
            return "error 5";
        }
        return "String " + String(text_.substr(start - 1, closing - start)).utf8();
    }

    std::string scrivi(const std::u16string& name, const std::u16string& value) {
        if (name.empty()) {
            text_ = value;
            return "done";
        }
        const std::size_t opening = find(open(name));
        if (opening == 0) {
            text_ += open(name) + value + close(name);
            return "done";
        }
        const std::size_t closing = find(close(name));
        if (closing == 0) {
            return "error 5";
        }
        std::u16string working = text_.substr(0, opening + open(name).size() - 1);
        working += text_.substr(closing - 1);
        const std::u16string empty = open(name) + close(name);
        const std::u16string full = open(name) + value + close(name);
        for (std::size_t at = working.find(empty); at != working.npos;
             at = working.find(empty, at + full.size())) {
            working.replace(at, empty.size(), full);
        }
        text_ = working;
        return "done";
    }

    void elimina(const std::u16string& name) {
        const std::size_t opening = find(open(name));
        if (opening == 0) {
            return;
        }
        const std::size_t rest = find(close(name)) + close(name).size();
        const std::u16string before = text_.substr(0, opening - 1);
        text_ = before + (rest > text_.size() ? std::u16string() : text_.substr(rest - 1));
    }

    [[nodiscard]] int count() const {
        int count = 0;
        for (std::size_t at = find(u"</"); at != 0; at = find(u"</", at + 1)) {
            ++count;
        }
        return count;
    }

    [[nodiscard]] std::string nomeProprieta(int position) const {
        std::size_t at = 0;
        for (int i = 0; i < position; ++i) {
            at = find(u"</", at + 1);
        }
        if (at == 0) {
            return "String ";
        }
        const std::size_t end = find(u">", at + 2);
        if (end == 0) {
            return "error 5";
        }
        return "String " + String(text_.substr(at + 1, end - at - 2)).utf8();
    }

    [[nodiscard]] const std::u16string& text() const { return text_; }

private:
    static std::u16string open(const std::u16string& name) { return u"<" + name + u">"; }
    static std::u16string close(const std::u16string& name) { return u"</" + name + u">"; }

    [[nodiscard]] std::size_t find(const std::u16string& wanted, std::size_t from = 1) const {
        const std::size_t at = text_.find(wanted, from - 1);
        return at == text_.npos ? 0 : at + 1;
    }

    std::u16string text_;
};

// What an operation of the bag comes to, in the words of PlainBag.
template <class Operation>
std::string outcome(Operation&& operation) {
    try {
        return operation();
    } catch (const AutomationError& error) {
        return "error " + std::to_string(error.number());
    }
}

class Chooser {
public:
    explicit Chooser(std::uint32_t seed) : random_(seed) {}

    int below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(random_); }

    template <std::size_t Size>
    std::u16string fromPieces(const std::array<const char16_t*, Size>& pieces, int most) {
        std::u16string text;
        for (int count = below(most + 1); count > 0; --count) {
            text += pieces[static_cast<std::size_t>(below(static_cast<int>(Size)))];
        }
        return text;
    }

private:
    std::mt19937 random_;
};

constexpr std::array<const char16_t*, 12> kPieces = {
    u"<", u">", u"/", u"A", u"B", u"<A>", u"</A>", u"<B>", u"</B>", u"</", u"<A></A>", u"x"};
constexpr std::array<const char16_t*, 5> kNamePieces = {u"A", u"B", u"A", u"B", u"AB"};
constexpr std::array<const char16_t*, 5> kOddNamePieces = {u"A", u"<", u">", u"/", u"</"};

std::u16string randomName(Chooser& chooser) {
    return chooser.below(4) == 0 ? chooser.fromPieces(kOddNamePieces, 4)
                                 : chooser.fromPieces(kNamePieces, 1);
}

void doOne(Chooser& chooser, PlainBag& plain, CProprieta& bag) {
    const std::u16string name = randomName(chooser);
    switch (chooser.below(6)) {
        case 0:
        case 1:
        case 2: {
            const bool whole = chooser.below(8) == 0;
            const std::u16string value = chooser.fromPieces(kPieces, whole ? 12 : 4);
            const std::u16string target = whole ? std::u16string() : name;
            EXPECT_EQ(outcome([&] { return bag.Scrivi(target, String(value)), "done"; }),
                      plain.scrivi(target, value));
            break;
        }
        case 3:
            plain.elimina(name);
            bag.Elimina(name);
            break;
        case 4:
            EXPECT_EQ(outcome([&] { return test::shown(bag.Leggi(String(name))); }),
                      plain.leggi(name));
            break;
        default: {
            const int position = chooser.below(plain.count() * 2 + 4) - 1;
            EXPECT_EQ(
                outcome([&] {
                    return test::shown(bag.NomeProprieta(static_cast<std::int16_t>(position)));
                }),
                plain.nomeProprieta(position));
        }
    }
    EXPECT_EQ(String(plain.text()).utf8(), bag.Leggi().as<String>().utf8());
    EXPECT_EQ(plain.count(), bag.Count());
}

TEST(CProprietaRandom, DoesWithEveryTextWhatTheSearchesInPlainTextDo) {
    Chooser chooser(test::randomSeed());
    for (int round = 0; round < 3000 && !testing::Test::HasFailure(); ++round) {
        PlainBag plain;
        const auto bag = make<CProprieta>();
        for (int step = 0; step < 14 && !testing::Test::HasFailure(); ++step) {
            doOne(chooser, plain, *bag);
        }
    }
}

}  // namespace
}  // namespace kap
