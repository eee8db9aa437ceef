#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "data/driver.hpp"
#include "drivers/odbc/api.hpp"

namespace kap::ado::odbc {

// What a driver announces of itself and its server when it has connected.
struct DriverTraits {
    // What becomes of a name that is written without quotes.
    enum class Folding : std::uint8_t { AsWritten, Lower, Upper };

    std::string product;       // what the server calls itself
    std::string quote = "\"";  // around names; empty: there is none
    Folding folding = Folding::AsWritten;
    bool concurrent = false;  // several results may be open at once
    bool cellPieces = false;  // any cell of a fetched block can be read again, in pieces
    // When the first statement of a text fails, what comes behind it is thrown away.
    bool losesBehindFailure = false;
    // The isolation levels of transactions that there are, as the interface's bits.
    SQLULEN isolationLevels = 0;

    [[nodiscard]] static DriverTraits of(SQLHDBC connection);
};

// What the server says of itself; asked for when somebody wants to know.
[[nodiscard]] Product productOf(SQLHDBC connection);

}  // namespace kap::ado::odbc
