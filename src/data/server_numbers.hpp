#pragma once

#include <cstdint>

namespace kap::ado {

// What clients see of an error that a Transact-SQL server numbers so, whoever has raised it.
struct ServerNumber {
    int native;
    std::int32_t number;  // the data-access code that clients compare
    const char* state;    // SQLSTATE
};

// Null: nothing is known of the number but that it is an error of the command's text.
[[nodiscard]] const ServerNumber* findServerNumber(int native);

}  // namespace kap::ado
