#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

#include <kaputil/data/enumerations.hpp>

// Values as the drivers, the engine and the recordsets hand them to each other.
namespace kap::ado {

struct Blob {
    std::string bytes;

    friend bool operator==(const Blob&, const Blob&) = default;
};

// A value in storage form; monostate is Null. Text is UTF-8. What a number means follows from the
// type that goes with it (see Storage).
//
// Blob must stay a class of its own: the standard library takes a variant of nothing but numbers
// and std::string for one that always has a value, and then fails in ending one whose text it had
// no memory to copy.
using Value = std::variant<std::monostate, std::int64_t, double, std::string, Blob>;

[[nodiscard]] inline bool isNull(const Value& value) noexcept {
    return std::holds_alternative<std::monostate>(value);
}

// How values of a type are kept; it follows from the data type.
enum class Storage : std::uint8_t {
    Integer,  // whole numbers, Boolean (0 or 1), Currency (times 10^4), decimals (times 10^scale)
    Real,     // Single, Double, and dates as linear days from 30 December 1899
    Text,     // UTF-8
    Binary,
};
[[nodiscard]] Storage storageOf(DataTypeEnum type) noexcept;

// Bytes as a value of this storage: a text, or a blob.
[[nodiscard]] inline Value bytesValue(Storage storage, std::string_view bytes) {
    if (storage == Storage::Binary) {
        return Blob{std::string(bytes)};
    }
    return std::string(bytes);
}

// The bytes of a text or a blob; null for anything else.
[[nodiscard]] inline const std::string* bytesOf(const Value& value) noexcept {
    if (const auto* blob = std::get_if<Blob>(&value)) {
        return &blob->bytes;
    }
    return std::get_if<std::string>(&value);
}

}  // namespace kap::ado
