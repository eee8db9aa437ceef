// Every fuzzing target for a moment, without the fuzzer: texts from the seed corpus, mutated from a
// printed seed.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/format.hpp>

#include "fuzz/targets.hpp"
#include "support/build_folders.hpp"
#include "support/seed.hpp"

namespace kap::fuzz {
namespace {

constexpr int kTexts = 4000;

using Bytes = std::vector<unsigned char>;

std::vector<Bytes> corpus() {
    std::vector<Bytes> seeds;
    for (const auto& entry : std::filesystem::directory_iterator(test::kFuzzingSamples)) {
        std::ifstream file(entry.path(), std::ios::binary);
        seeds.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    return seeds;
}

class Mutator {
public:
    Mutator(std::vector<Bytes> seeds, std::uint64_t seed)
        : seeds_(std::move(seeds)), random_(seed) {}

    Bytes next() {
        Bytes text = seeds_[below(seeds_.size())];
        for (std::size_t changes = below(6); changes > 0; --changes) {
            change(text);
        }
        return text;
    }

private:
    std::size_t below(std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random_);
    }

    void change(Bytes& text) {
        const std::size_t units = text.size() / 2;
        const std::size_t at = 2 * below(units + 1);
        switch (below(4)) {
            case 0: {  // any unit
                const Bytes unit = {static_cast<unsigned char>(below(256)),
                                    static_cast<unsigned char>(below(256))};
                text.insert(text.begin() + static_cast<std::ptrdiff_t>(at), unit.begin(),
                            unit.end());
                break;
            }
            case 1:
                if (at + 2 <= text.size()) {
                    text.erase(text.begin() + static_cast<std::ptrdiff_t>(at),
                               text.begin() + static_cast<std::ptrdiff_t>(at) + 2);
                }
                break;
            case 2:  // a nearby character
                if (at < text.size()) {
                    text[at] = static_cast<unsigned char>(text[at] + below(5) - 2);
                }
                break;
            default: {  // a piece of another seed
                const Bytes& other = seeds_[below(seeds_.size())];
                const std::size_t from = 2 * below(other.size() / 2 + 1);
                text.insert(
                    text.begin() + static_cast<std::ptrdiff_t>(at),
                    other.begin() + static_cast<std::ptrdiff_t>(std::min(from, other.size())),
                    other.end());
            }
        }
    }

    std::vector<Bytes> seeds_;
    std::mt19937_64 random_;
};

class ShortRun : public testing::TestWithParam<std::string> {};

TEST_P(ShortRun, HoldsForMutatedTexts) {
    Mutator mutator(corpus(), test::randomSeed());
    const auto target = std::find_if(targets().begin(), targets().end(),
                                     [](const Target& one) { return one.name == GetParam(); });
    ASSERT_NE(target, targets().end());
    for (int i = 0; i < kTexts / target->slowness; ++i) {
        target->run(textOf(mutator.next()));
    }
}

std::vector<std::string> names() {
    std::vector<std::string> found;
    for (const Target& target : targets()) {
        found.emplace_back(target.name);
    }
    return found;
}

INSTANTIATE_TEST_SUITE_P(Fuzz, ShortRun, testing::ValuesIn(names()),
                         [](const auto& one) { return one.param; });

// A million characters are read once, whatever they are: a reader that looks back would not end.
TEST(LongTexts, AreReadInOnePass) {
    constexpr std::size_t kUnits = 1 << 20;
    for (const char16_t unit :
         {u'1', u'0', u' ', u'.', u',', u'/', u'a', u'd', u'#', u'"', u'\xD800'}) {
        const String text(std::u16string(kUnits, unit));
        static_cast<void>(convert::isNumeric(text));
        static_cast<void>(convert::isDate(text));
        static_cast<void>(convert::leadingNumber(text));
        static_cast<void>(convert::format(1.5, text.view().substr(0, 1 << 14)));
    }
    SUCCEED();
}

}  // namespace
}  // namespace kap::fuzz
