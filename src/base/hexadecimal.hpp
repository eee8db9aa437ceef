#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

// Numbers and bytes in hexadecimal digits, and digits as numbers.
namespace kap::hex {

enum class Case : std::uint8_t { Lower, Upper };

// The digit for a value of which only the last four bits count.
[[nodiscard]] constexpr char digit(std::uint64_t value, Case letters) noexcept {
    return (letters == Case::Lower ? "0123456789abcdef" : "0123456789ABCDEF")[value & 0xFU];
}

// What a digit of either case stands for; -1 for what is none.
[[nodiscard]] constexpr int valueOf(char32_t digit) noexcept {
    if (digit >= U'0' && digit <= U'9') return static_cast<int>(digit - U'0');
    if (digit >= U'a' && digit <= U'f') return static_cast<int>(digit - U'a') + 10;
    if (digit >= U'A' && digit <= U'F') return static_cast<int>(digit - U'A') + 10;
    return -1;
}

// Two digits a byte.
[[nodiscard]] std::string ofBytes(std::string_view bytes, Case letters = Case::Upper);
[[nodiscard]] std::string ofBytes(std::span<const std::uint8_t> bytes, Case letters = Case::Upper);

// The bytes that such digits of either case stand for; nullopt for anything else.
[[nodiscard]] std::optional<std::string> toBytes(std::string_view digits);

// A number without zeros in front, or with so many that it has `digits`.
[[nodiscard]] std::string ofNumber(std::uint64_t number, Case letters, std::size_t digits = 1);

}  // namespace kap::hex
