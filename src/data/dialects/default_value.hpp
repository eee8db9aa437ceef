#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kap::ado {

// What a column gets that is not given a value, whichever database says it.
struct DefaultValue {
    enum class Kind : std::uint8_t {
        None,
        Constant,    // `text` is the value: a plain number, or what stands between quotes
        Now,         // the present moment
        Identifier,  // a new unique identifier
        Other,       // an expression of the database's dialect, as it is in `text`
    };
    Kind kind = Kind::None;
    std::string text;
};

// Reads a default as the catalogues of databases write it: in brackets, with a type behind.
[[nodiscard]] DefaultValue readDefault(std::string_view text);

}  // namespace kap::ado
