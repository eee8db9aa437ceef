#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

// Character-level Unicode, the same on every host and in every process locale.
namespace kap::unicode {

// UTF-8 to UTF-16; nullopt when the bytes are not valid UTF-8 (overlong forms, surrogates and
// values above U+10FFFF are not).
[[nodiscard]] std::optional<std::u16string> utf16(std::string_view utf8);
// Whether bytes are valid UTF-8, of which nothing is made.
[[nodiscard]] bool isUtf8(std::string_view bytes) noexcept;
// UTF-16 to UTF-8; nullopt when it holds half of a surrogate pair.
[[nodiscard]] std::optional<std::string> utf8(std::u16string_view text);
// The same for people's eyes: what cannot be carried becomes U+FFFD.
[[nodiscard]] std::string displayUtf8(std::u16string_view text);

// One code unit in upper or lower case by the simple (one to one) mapping.
[[nodiscard]] char16_t upperBeyondAscii(char16_t unit) noexcept;
[[nodiscard]] inline char16_t upper(char16_t unit) noexcept {
    if (unit < 0x80) {
        return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - 32) : unit;
    }
    return upperBeyondAscii(unit);
}
[[nodiscard]] char16_t lower(char16_t unit) noexcept;
[[nodiscard]] std::u16string upper(std::u16string_view text);
[[nodiscard]] std::u16string lower(std::u16string_view text);

// Whether two names are the same, ignoring case.
[[nodiscard]] bool sameName(std::u16string_view left, std::u16string_view right) noexcept;

// Hash and equality of names ignoring case, for keyed containers.
struct NameHash {
    using is_transparent = void;
    std::size_t operator()(std::u16string_view name) const noexcept;
};
struct NameEqual {
    using is_transparent = void;
    bool operator()(std::u16string_view left, std::u16string_view right) const noexcept {
        return sameName(left, right);
    }
};

// The text without leading, trailing or both blanks (U+0020 only, as the runtime trims).
[[nodiscard]] std::u16string_view trimLeft(std::u16string_view text) noexcept;
[[nodiscard]] std::u16string_view trimRight(std::u16string_view text) noexcept;
[[nodiscard]] std::u16string_view trim(std::u16string_view text) noexcept;

}  // namespace kap::unicode
