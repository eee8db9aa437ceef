#pragma once

#include <compare>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include <kaputil/base/export.hpp>

namespace kap {

// The counted wide-character text of the automation world.
//
// Lengths, positions and single code units are part of what the library promises, so text is
// UTF-16 throughout: one `char16_t` is one character for every member that counts. C++ callers
// may hand in UTF-8 (a `const char*` or `std::string_view`) and ask for UTF-8 back with `utf8()`;
// the conversion is exact or it is an error (AutomationError 5), never a silent replacement.
class KAPUTIL_EXPORT String {
public:
    String() = default;
    String(std::u16string text) noexcept : text_(std::move(text)) {}
    String(std::u16string_view text) : text_(text) {}
    String(const char16_t* text) : text_(text) {}
    // From UTF-8. Raises 5 (invalid procedure call or argument) when the bytes are not valid UTF-8.
    String(std::string_view utf8);
    String(const char* utf8) : String(std::string_view(utf8)) {}
    String(const std::string& utf8) : String(std::string_view(utf8)) {}

    [[nodiscard]] std::u16string_view view() const noexcept { return text_; }
    operator std::u16string_view() const noexcept { return text_; }
    [[nodiscard]] const std::u16string& units() const& noexcept { return text_; }
    [[nodiscard]] std::u16string units() && noexcept { return std::move(text_); }

    [[nodiscard]] std::size_t size() const noexcept { return text_.size(); }
    [[nodiscard]] bool empty() const noexcept { return text_.empty(); }
    [[nodiscard]] char16_t operator[](std::size_t index) const noexcept { return text_[index]; }

    // The same text as UTF-8. Raises 5 when it holds half of a surrogate pair, which UTF-8 cannot
    // carry.
    [[nodiscard]] std::string utf8() const;

    String& operator+=(std::u16string_view more) {
        text_ += more;
        return *this;
    }

    friend String operator+(String left, std::u16string_view right) {
        left.text_ += right;
        return left;
    }
    // Equality and order are by code unit: exact and independent of any locale.
    friend bool operator==(const String& left, const String& right) noexcept {
        return left.text_ == right.text_;
    }
    friend std::strong_ordering operator<=>(const String& left, const String& right) noexcept {
        return left.text_ <=> right.text_;
    }

private:
    std::u16string text_;
};

}  // namespace kap

template <>
struct std::hash<kap::String> {
    std::size_t operator()(const kap::String& text) const noexcept {
        return std::hash<std::u16string_view>{}(text.view());
    }
};
