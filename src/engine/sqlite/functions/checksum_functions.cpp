#include <bit>
#include <cstdint>
#include <string>
#include <string_view>

#include "engine/sqlite/functions/function_support.hpp"
#include "engine/values/text_units.hpp"

// CHECKSUM and BINARY_CHECKSUM: a number by which rows are compared. Values that are equal have the
// same.
namespace kap::engine {

namespace {

constexpr int kTurn = 4;
constexpr std::uint32_t kOfNull = 0x7FFFFFFF;

std::uint32_t mixed(std::uint32_t sum, std::uint32_t next) {
    return std::rotl(sum, kTurn) ^ next;
}

std::uint32_t ofWhole(std::uint64_t value) {
    const auto high = static_cast<std::uint32_t>(value >> 32);
    const auto low = static_cast<std::uint32_t>(value);
    // A number of 32 bits is its own sum, whatever its sign.
    const bool narrow = high == 0 || (high == ~0U && (low >> 31) == 1);
    return narrow ? low : high ^ low;
}

std::uint32_t ofText(std::string_view text, bool binary) {
    std::uint32_t sum = 0;
    if (binary) {
        for (const char letter : text)
            sum = mixed(sum, static_cast<unsigned char>(letter));
        return sum;
    }
    // Texts that compare as equal have the same sum: letter case and blanks behind do not count.
    for (const char16_t unit : foldedUnits(withoutTrailingBlanks(text)))
        sum = mixed(sum, unit);
    return sum;
}

template <bool kBinary>
std::uint32_t ofArgument(const Arguments& arguments, int index) {
    switch (arguments.kind(index)) {
        case SQLITE_INTEGER:
            return ofWhole(static_cast<std::uint64_t>(arguments.integer(index)));
        case SQLITE_FLOAT:
            // Both zeros are one.
            return ofWhole(std::bit_cast<std::uint64_t>(arguments.real(index) + 0.0));
        case SQLITE_NULL:
            return kOfNull;
        default:
            return ofText(arguments.text(index), kBinary || arguments.kind(index) == SQLITE_BLOB);
    }
}

// kap_checksum(a, b...)
template <bool kBinary>
Value checksum(const Arguments& arguments) {
    std::uint32_t sum = ofArgument<kBinary>(arguments, 0);
    for (int i = 1; i < arguments.count(); ++i)
        sum = mixed(sum, ofArgument<kBinary>(arguments, i));
    return std::int64_t{static_cast<std::int32_t>(sum)};
}

}  // namespace

void registerChecksumFunctions(Registrar& registrar) {
    registrar.scalar("kap_checksum", -1, checksum<false>, OnNull::Call);
    registrar.scalar("kap_binary_checksum", -1, checksum<true>, OnNull::Call);
}

}  // namespace kap::engine
