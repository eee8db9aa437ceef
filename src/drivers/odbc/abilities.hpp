#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "drivers/odbc/api.hpp"
#include "drivers/odbc/server_dialect.hpp"

namespace kap::ado::odbc {

// What the driver says of itself and its server when it has connected.
struct Abilities {
    // What becomes of a name that is written without quotes.
    enum class Folding : std::uint8_t { AsWritten, Lower, Upper };

    std::string quote = "\"";  // around names; empty: there is none
    Folding folding = Folding::AsWritten;
    bool concurrent = false;  // several results may be open at once
    bool cellPieces = false;  // any cell of a fetched block can be read again, in pieces
    // When the first statement of a text fails, what comes behind it is thrown away.
    bool losesBehindFailure = false;
    // The isolation levels of transactions that there are, as the interface's bits.
    SQLULEN isolationLevels = 0;
    // What differs from server to server; holds for ever.
    const ServerDialect* server = &dialectOf({});

    [[nodiscard]] static Abilities of(SQLHDBC connection);

    [[nodiscard]] std::string quoted(std::string_view name) const;
    // A name as the catalogue has it that a text writes without quotes.
    [[nodiscard]] std::string folded(std::string_view name) const;
};

// What the server says of itself; asked for when somebody wants to know.
[[nodiscard]] Product productOf(SQLHDBC connection);

}  // namespace kap::ado::odbc
