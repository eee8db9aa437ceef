#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <random>
#include <ratio>
#include <string>
#include <string_view>

#include "base/code_page.hpp"
#include "base/hexadecimal.hpp"
#include "engine/sqlite/functions/function_support.hpp"
#include "engine/values/text_units.hpp"

// Characters and their codes, and texts that are made of no other.
namespace kap::engine {

namespace {

// kap_char(code): the character of the Western code page.
Value charFunction(const Arguments& arguments) {
    const std::int64_t code = arguments.integer(0);
    if (code < 0 || code > 0xFF) return {};
    return fromUnits(decode(CodePage::Windows1252, std::string(1, static_cast<char>(code))));
}

Value ncharFunction(const Arguments& arguments) {
    const std::int64_t code = arguments.integer(0);
    if (code < 0 || code > 0xFFFF) return {};
    return fromUnits(std::u16string(1, static_cast<char16_t>(code)));
}

// kap_ascii(text): the code of the first character in the Western code page, that of '?' where it
// has none; NULL for an empty text.
Value firstCode(const Arguments& arguments) {
    const std::u16string units = toUnits(arguments.text(0));
    if (units.empty()) return {};
    const auto bytes = encode(CodePage::Windows1252, std::u16string_view(units).substr(0, 1));
    return std::int64_t{static_cast<unsigned char>(bytes ? bytes->front() : '?')};
}

// kap_unicode(text): the code of the first character, NULL for an empty text.
Value firstUnit(const Arguments& arguments) {
    const std::u16string units = toUnits(arguments.text(0));
    if (units.empty()) return {};
    return static_cast<std::int64_t>(units.front());
}

Value newIdentifier(const Arguments& /*arguments*/) {
    thread_local std::random_device source;
    std::string result;
    for (std::size_t i = 0; i < 32; ++i) {
        if (i == 8 || i == 12 || i == 16 || i == 20) result += '-';
        std::uint32_t digit = source() & 0xFU;
        // The two fixed places say that the identifier is a random one.
        if (i == 12) digit = 4;
        if (i == 16) digit = (digit & 0x3U) | 0x8U;
        result += hex::digit(digit, hex::Case::Upper);
    }
    return result;
}

// kap_newsequentialid(): greater than those given before, as texts compare.
Value nextIdentifier(const Arguments& arguments) {
    constexpr int kTimeDigits = 12;
    constexpr std::uint64_t kTimeBits = 4 * kTimeDigits;
    static std::atomic<std::uint64_t> last{0};
    const auto since = std::chrono::system_clock::now().time_since_epoch();
    // Steps of 1/65536 of a second: 48 bits last beyond the year 2100.
    const auto ticks = static_cast<std::uint64_t>(
        std::chrono::duration_cast<std::chrono::duration<double, std::ratio<1, 65536>>>(since)
            .count());
    std::uint64_t given = last.load();
    std::uint64_t next = 0;
    do {
        next = std::max(ticks, given + 1);
    } while (!last.compare_exchange_weak(given, next));
    std::string text = std::get<std::string>(newIdentifier(arguments));
    std::size_t place = 0;
    for (std::uint64_t shift = kTimeBits; shift > 0; ++place) {
        if (text[place] == '-') continue;
        shift -= 4;
        text[place] = hex::digit(next >> shift, hex::Case::Upper);
    }
    return text;
}

}  // namespace

void registerCharacterFunctions(Registrar& registrar) {
    registrar.scalar("kap_char", 1, charFunction);
    registrar.scalar("kap_nchar", 1, ncharFunction);
    registrar.scalar("kap_ascii", 1, firstCode);
    registrar.scalar("kap_unicode", 1, firstUnit);
    registrar.scalar("kap_newid", 0, newIdentifier, OnNull::Call, Stability::PerCall);
    registrar.scalar("kap_newsequentialid", 0, nextIdentifier, OnNull::Call, Stability::PerCall);
}

}  // namespace kap::engine
