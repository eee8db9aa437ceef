#include "platform/random_name.hpp"

#include <cstdint>
#include <random>
#include <string_view>

#include "base/hexadecimal.hpp"

namespace kap::platform {

std::string randomUuid() {
    // Where the digits are random, and in one place only of four.
    constexpr std::string_view kPattern = "rrrrrrrr-rrrr-4rrr-vrrr-rrrrrrrrrrrr";
    constexpr std::uint32_t kVariant = 8;
    std::random_device source;
    std::uniform_int_distribution<std::uint32_t> digit(0, 15);
    std::string text;
    for (const char place : kPattern) {
        if (place == 'r') {
            text.push_back(hex::digit(digit(source), hex::Case::Lower));
        } else if (place == 'v') {
            text.push_back(hex::digit(kVariant + digit(source) % 4, hex::Case::Lower));
        } else {
            text.push_back(place);
        }
    }
    return text;
}

}  // namespace kap::platform
