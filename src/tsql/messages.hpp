#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

// The server's messages: what each says, and what is known of its number. They stand in one table,
// messages.def, which everything that raises or reads errors of the dialect uses.
namespace kap::tsql {

enum class Message : std::uint16_t {
#define KAP_MESSAGE(name, number, severity, state, reach, sqlState, text) name,
#include "tsql/messages.def"
#undef KAP_MESSAGE
};

// How far an error goes beyond the statement that it ends.
enum class ErrorReach : std::uint8_t {
    Statement,    // the script goes on behind it
    Scope,        // ends the batch, procedure or trigger; its caller goes on
    Batch,        // ends everything that was sent
    Transaction,  // and undoes the open transaction
};

struct MessageFacts {
    int number;
    int severity;
    int state;
    ErrorReach reach;
    const char* sqlState;  // empty: an error of the command's text, no more is known
    const char* text;      // with %1, %2 ... for the arguments
};

[[nodiscard]] const MessageFacts& factsOf(Message message);

// What is known of a number that a server reports; null: nothing.
[[nodiscard]] const MessageFacts* findMessage(int number);

[[nodiscard]] int numberOf(Message message);

// Of a number that stands in no message: only the statement.
[[nodiscard]] ErrorReach reachOf(int number);

// The SQLSTATE of a number; "42000" when no other is known.
[[nodiscard]] const char* stateOf(int number);

// A message's text with its arguments (UTF-8), at most nine.
[[nodiscard]] std::string textOf(Message message,
                                 std::initializer_list<std::string_view> arguments);

}  // namespace kap::tsql
