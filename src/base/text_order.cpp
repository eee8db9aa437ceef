#include "base/text_order.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include <utf8proc.h>

namespace kap {
namespace {

// What kind of character it is decides first, the character itself second.
constexpr std::uint32_t kSign = 0;
constexpr std::uint32_t kDigit = 1U << 24;
constexpr std::uint32_t kLetter = 2U << 24;
// Above every code point: where a byte that is not UTF-8 stands.
constexpr std::uint32_t kStrayByte = 0x110000;

constexpr std::uint32_t asciiWeight(unsigned char letter) {
    if (letter >= 'a' && letter <= 'z') {
        return kLetter | (letter - 'a' + 'A');
    }
    if (letter >= 'A' && letter <= 'Z') {
        return kLetter | letter;
    }
    if (letter >= '0' && letter <= '9') {
        return kDigit | letter;
    }
    return kSign | letter;
}

constexpr auto kAsciiWeights = [] {
    std::array<std::uint32_t, 128> weights{};
    for (unsigned letter = 0; letter < weights.size(); ++letter) {
        weights[letter] = asciiWeight(static_cast<unsigned char>(letter));
    }
    return weights;
}();

// What counts last: an apostrophe or a hyphen.
constexpr bool isWithinWords(std::uint32_t weight) {
    return weight == (kSign | '\'') || weight == (kSign | '-');
}

// The letters that stand for two, in capitals; nothing for all others.
std::u32string_view lettersOf(std::uint32_t point) {
    switch (point) {
        case 0xDF:
        case 0x1E9E:
            return U"SS";
        case 0xC6:
        case 0xE6:
            return U"AE";
        case 0x152:
        case 0x153:
            return U"OE";
        case 0xDE:
        case 0xFE:
            return U"TH";
        default:
            return {};
    }
}

bool isMark(utf8proc_category_t category) {
    return category == UTF8PROC_CATEGORY_MN || category == UTF8PROC_CATEGORY_ME;
}

std::uint32_t weightOf(std::uint32_t point) {
    if (point < kAsciiWeights.size()) {
        return kAsciiWeights[point];
    }
    switch (utf8proc_category(static_cast<utf8proc_int32_t>(point))) {
        case UTF8PROC_CATEGORY_LU:
        case UTF8PROC_CATEGORY_LL:
        case UTF8PROC_CATEGORY_LT:
        case UTF8PROC_CATEGORY_LM:
        case UTF8PROC_CATEGORY_LO:
            return kLetter | point;
        case UTF8PROC_CATEGORY_ND:
        case UTF8PROC_CATEGORY_NL:
        case UTF8PROC_CATEGORY_NO:
            return kDigit | point;
        default:
            return kSign | point;
    }
}

// The base letters and the marks of a text, one after the other, in upper case. By words, some
// letters are two.
template <bool kByWords>
class Elements {
public:
    struct Element {
        std::uint32_t value = 0;
        bool mark = false;  // an accent of the letter before it; `value` is its code point
    };

    explicit Elements(std::string_view text) noexcept : rest_(text) {}

    bool next(Element& element) noexcept {
        if (position_ == count_ && !refill()) {
            return false;
        }
        const auto point = static_cast<std::uint32_t>(parts_[position_++]);
        if (point >= kStrayByte) {
            element = {point, false};
        } else if (isMark(utf8proc_category(static_cast<utf8proc_int32_t>(point)))) {
            element = {point, true};
        } else {
            element = {weightOf(point), false};
        }
        return true;
    }

private:
    bool refill() noexcept {
        if (rest_.empty()) {
            return false;
        }
        position_ = 0;
        count_ = 1;
        utf8proc_int32_t point = -1;
        const auto* bytes = reinterpret_cast<const utf8proc_uint8_t*>(rest_.data());
        const utf8proc_ssize_t length =
            utf8proc_iterate(bytes, static_cast<utf8proc_ssize_t>(rest_.size()), &point);
        if (length <= 0) {
            parts_[0] = static_cast<utf8proc_int32_t>(kStrayByte + bytes[0]);
            rest_.remove_prefix(1);
            return true;
        }
        rest_.remove_prefix(static_cast<std::size_t>(length));
        if constexpr (kByWords) {
            if (const auto letters = lettersOf(static_cast<std::uint32_t>(point));
                !letters.empty()) {
                std::ranges::copy(letters, parts_.begin());
                count_ = letters.size();
                return true;
            }
        }
        const utf8proc_int32_t upper = utf8proc_toupper(point);
        int boundary = 0;
        const utf8proc_ssize_t made = utf8proc_decompose_char(
            upper, parts_.data(), static_cast<int>(parts_.size()), UTF8PROC_DECOMPOSE, &boundary);
        if (made > 0 && made <= static_cast<utf8proc_ssize_t>(parts_.size())) {
            count_ = static_cast<std::size_t>(made);
        } else {
            parts_[0] = upper;
        }
        return true;
    }

    std::string_view rest_;
    // A character falls into four parts at the very most.
    std::array<utf8proc_int32_t, 8> parts_{};
    std::size_t position_ = 0;
    std::size_t count_ = 0;
};

// Zero at the end of the text; every weight is made larger by one for that.
template <bool kByWords>
std::uint32_t nextBase(Elements<kByWords>& elements) noexcept {
    typename Elements<kByWords>::Element element;
    while (elements.next(element)) {
        if (!element.mark && !(kByWords && isWithinWords(element.value))) {
            return element.value + 1;
        }
    }
    return 0;
}

// A base letter is 1 here, so that a letter without a mark stands before the same with one.
template <bool kByWords>
std::uint32_t nextMark(Elements<kByWords>& elements) noexcept {
    typename Elements<kByWords>::Element element;
    while (elements.next(element)) {
        if (element.mark) {
            return element.value;
        }
        if (!(kByWords && isWithinWords(element.value))) {
            return 1;
        }
    }
    return 0;
}

// The next apostrophe or hyphen with the letters before it: one that stands earlier comes first.
std::uint32_t nextWithinWord(Elements<true>& elements, std::uint32_t& letters) noexcept {
    constexpr std::uint32_t kSigns = 2;
    Elements<true>::Element element;
    while (elements.next(element)) {
        if (!element.mark && isWithinWords(element.value)) {
            return 1 + letters * kSigns + (element.value == (kSign | '-') ? 1 : 0);
        }
        letters += element.mark ? 0 : 1;
    }
    return 0;
}

template <bool kByWords, class Next>
std::weak_ordering compareBy(std::string_view left, std::string_view right, Next next) noexcept {
    Elements<kByWords> leftElements(left);
    Elements<kByWords> rightElements(right);
    while (true) {
        const std::uint32_t a = next(leftElements);
        const std::uint32_t b = next(rightElements);
        if (a != b) {
            return a <=> b;
        }
        if (a == 0) {
            return std::weak_ordering::equivalent;
        }
    }
}

std::weak_ordering compareWithinWords(std::string_view left, std::string_view right) noexcept {
    Elements<true> leftElements(left);
    Elements<true> rightElements(right);
    std::uint32_t leftLetters = 0;
    std::uint32_t rightLetters = 0;
    while (true) {
        const std::uint32_t a = nextWithinWord(leftElements, leftLetters);
        const std::uint32_t b = nextWithinWord(rightElements, rightLetters);
        if (a != b) {
            return a <=> b;
        }
        if (a == 0) {
            return std::weak_ordering::equivalent;
        }
    }
}

template <bool kByWords>
std::weak_ordering compareUnicode(std::string_view left, std::string_view right) noexcept {
    const std::weak_ordering byLetters = compareBy<kByWords>(left, right, nextBase<kByWords>);
    if (std::is_neq(byLetters)) {
        return byLetters;
    }
    const std::weak_ordering byMarks = compareBy<kByWords>(left, right, nextMark<kByWords>);
    return kByWords && std::is_eq(byMarks) ? compareWithinWords(left, right) : byMarks;
}

template <bool kByWords>
std::weak_ordering compareAll(std::string_view leftText, std::string_view rightText) noexcept {
    const std::string_view left = withoutTrailingBlanks(leftText);
    const std::string_view right = withoutTrailingBlanks(rightText);
    const std::size_t common = left.size() < right.size() ? left.size() : right.size();
    // Nearly every text is plain Latin: there the first different letter decides.
    for (std::size_t i = 0; i < common; ++i) {
        const auto a = static_cast<unsigned char>(left[i]);
        const auto b = static_cast<unsigned char>(right[i]);
        if ((a | b) >= 0x80) {
            return compareUnicode<kByWords>(left.substr(i), right.substr(i));
        }
        if (kAsciiWeights[a] != kAsciiWeights[b]) {
            if (kByWords && (isWithinWords(kAsciiWeights[a]) || isWithinWords(kAsciiWeights[b]))) {
                return compareUnicode<kByWords>(left.substr(i), right.substr(i));
            }
            return kAsciiWeights[a] <=> kAsciiWeights[b];
        }
    }
    return compareUnicode<kByWords>(left.substr(common), right.substr(common));
}

// 1 for a small letter, 2 for a capital, 0 at the end. What is no letter counts as small.
std::uint32_t nextCase(std::string_view& rest) noexcept {
    while (!rest.empty()) {
        utf8proc_int32_t point = -1;
        const auto* bytes = reinterpret_cast<const utf8proc_uint8_t*>(rest.data());
        const utf8proc_ssize_t length =
            utf8proc_iterate(bytes, static_cast<utf8proc_ssize_t>(rest.size()), &point);
        rest.remove_prefix(length <= 0 ? 1 : static_cast<std::size_t>(length));
        if (length > 0 && isMark(utf8proc_category(point))) {
            continue;
        }
        return length > 0 && utf8proc_tolower(point) != point ? 2 : 1;
    }
    return 0;
}

std::weak_ordering compareCases(std::string_view left, std::string_view right) noexcept {
    while (true) {
        const std::uint32_t a = nextCase(left);
        const std::uint32_t b = nextCase(right);
        if (a != b) {
            return a <=> b;
        }
        if (a == 0) {
            return std::weak_ordering::equivalent;
        }
    }
}

}  // namespace

std::string_view withoutTrailingBlanks(std::string_view text) {
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

std::weak_ordering compareTexts(std::string_view left, std::string_view right) noexcept {
    return compareAll<true>(left, right);
}

std::weak_ordering compareTextsBySigns(std::string_view left, std::string_view right) noexcept {
    return compareAll<false>(left, right);
}

std::weak_ordering compareTextsAs(std::string_view leftText, std::string_view rightText,
                                  TextMatching matching) noexcept {
    const std::string_view left = withoutTrailingBlanks(leftText);
    const std::string_view right = withoutTrailingBlanks(rightText);
    if (matching.binary) {
        return left <=> right;
    }
    std::weak_ordering order = std::weak_ordering::equivalent;
    if (matching.accents) {
        order = compareTexts(left, right);
    } else {
        order = compareBy<true>(left, right, nextBase<true>);
        if (std::is_eq(order)) {
            order = compareWithinWords(left, right);
        }
    }
    return std::is_eq(order) && matching.cases ? compareCases(left, right) : order;
}

char16_t withoutMarks(char16_t unit) noexcept {
    std::array<utf8proc_int32_t, 8> parts{};
    int boundary = 0;
    const utf8proc_ssize_t made = utf8proc_decompose_char(
        unit, parts.data(), static_cast<int>(parts.size()), UTF8PROC_DECOMPOSE, &boundary);
    const bool one = made > 0 && parts[0] > 0 && parts[0] < 0x10000;
    return one ? static_cast<char16_t>(parts[0]) : unit;
}

}  // namespace kap
