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

std::string ofNumber(std::uint64_t number, Case letters, std::size_t digits) {
    std::string text;
    for (; number != 0 || text.size() < digits; number >>= 4U) {
        text.insert(text.begin(), digit(number, letters));
    }
    return text;
}

}  // namespace kap::hex
