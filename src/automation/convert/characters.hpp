#pragma once

#include <string_view>

// What the readers of numbers and dates know about single characters.
namespace kap::convert {

constexpr bool isDigit(char16_t unit) noexcept {
    return unit >= u'0' && unit <= u'9';
}

constexpr bool isBlank(char16_t unit) noexcept {
    return unit == u' ' || (unit >= u'\t' && unit <= u'\r') || unit == u'\u00A0';
}

// The runtime reads a text up to its first NUL.
constexpr std::u16string_view upToNull(std::u16string_view text) noexcept {
    return text.substr(0, text.find(u'\0'));
}

}  // namespace kap::convert
