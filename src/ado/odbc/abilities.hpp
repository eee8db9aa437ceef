#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "ado/odbc/api.hpp"

namespace kap::ado::odbc {

// What a server and its driver can do and how they differ: the one place that knows. Everything
// else asks here.
struct Abilities {
    // What becomes of a name that is written without quotes.
    enum class Folding : std::uint8_t { AsWritten, Lower, Upper };

    std::string product;       // the server's name for itself
    std::string quote = "\"";  // around names; empty: there is none
    Folding folding = Folding::AsWritten;
    bool concurrent = false;     // several results may be open at once
    bool cellPieces = false;     // any cell of a fetched block can be read again, in pieces
    bool transactNames = false;  // the server speaks Transact-SQL
    // The isolation levels of transactions that there are, as the interface's bits.
    SQLULEN isolationLevels = 0;
    // INSERT, UPDATE and DELETE answer with the rows they touched.
    bool returning = false;
    // A text with parameters may hold several statements.
    bool batches = false;
    // Which expression tells the identity that the statement before it in the batch has given out;
    // empty: none.
    std::string identity;
    // Parameters must be of exactly the type that they are compared with or stored as.
    bool castsParameters = false;
    // What texts without a limit are announced with; 0: they are told apart.
    SQLULEN inventedSize = 0;

    [[nodiscard]] static Abilities of(SQLHDBC connection);

    [[nodiscard]] std::string quoted(std::string_view name) const;
    // The mark of a parameter that is stored in a column of this type.
    [[nodiscard]] std::string markFor(const std::string& typeName) const;
    // A column compared with a parameter, also where the server does not compare its type.
    [[nodiscard]] std::string comparison(const std::string& quotedColumn,
                                         const std::string& typeName) const;
    // A name as the catalogue has it that a text writes without quotes.
    [[nodiscard]] std::string folded(std::string_view name) const;
};

}  // namespace kap::ado::odbc
