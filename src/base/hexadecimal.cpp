#include "base/hexadecimal.hpp"

namespace kap::hex {

std::string ofBytes(std::span<const std::uint8_t> bytes, Case letters) {
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const std::uint8_t byte : bytes) {
        text.push_back(digit(byte >> 4U, letters));
        text.push_back(digit(byte, letters));
    }
    return text;
}

std::string ofBytes(std::string_view bytes, Case letters) {
    return ofBytes(std::span(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()),
                   letters);
}

std::optional<std::string> toBytes(std::string_view digits) {
    constexpr int kBase = 16;
    if (digits.size() % 2 != 0) return std::nullopt;
    std::string bytes;
    bytes.reserve(digits.size() / 2);
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        const int high = valueOf(static_cast<unsigned char>(digits[i]));
        const int low = valueOf(static_cast<unsigned char>(digits[i + 1]));
        if (high < 0 || low < 0) return std::nullopt;
        bytes += static_cast<char>(high * kBase + low);
    }
    return bytes;
}

std::string ofNumber(std::uint64_t number, Case letters, std::size_t digits) {
    std::string text;
    for (; number != 0 || text.size() < digits; number >>= 4U) {
        text.insert(text.begin(), digit(number, letters));
    }
    return text;
}

}  // namespace kap::hex
