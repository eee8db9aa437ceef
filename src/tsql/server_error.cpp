#include "tsql/server_error.hpp"

#include <cstddef>

namespace kap::tsql {

namespace {

constexpr int kSyntaxSeverity = 15;

// Characters that a message has at most. Of a longer one, which quotes a client's own text, the
// server shows the first ones and an ellipsis.
constexpr std::size_t kLongestMessage = 2047;
constexpr std::size_t kShownOfLonger = 2044;

bool beginsCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
}

std::string shortened(const std::string& message) {
    if (message.size() <= kLongestMessage) {
        return message;
    }
    std::size_t characters = 0;
    std::size_t end = message.size();
    for (std::size_t i = 0; i < message.size() && characters <= kLongestMessage; ++i) {
        if (!beginsCharacter(message[i])) {
            continue;
        }
        if (characters == kShownOfLonger) {
            end = i;
        }
        ++characters;
    }
    return characters <= kLongestMessage ? message : message.substr(0, end) + "...";
}

}  // namespace

ServerError::ServerError(int number, const std::string& message, int line, int severity, int state)
    : std::runtime_error(shortened(message)),
      number_(number),
      severity_(severity),
      state_(state),
      line_(line) {}

ServerError syntaxError(const std::string& near, int line) {
    return {102, "Incorrect syntax near '" + near + "'.", line, kSyntaxSeverity};
}

ServerError keywordError(const std::string& keyword, int line) {
    return {156, "Incorrect syntax near the keyword '" + keyword + "'.", line, kSyntaxSeverity};
}

ServerError unsupported(const std::string& construct, int line) {
    return {40517,
            "Keyword or statement option '" + construct +
                "' is not supported in this version of the database.",
            line, kSyntaxSeverity};
}

ServerError nestedTooDeeply(int line) {
    return {191,
            "Some part of your SQL statement is nested too deeply. Rewrite the query or break it "
            "up into smaller queries.",
            line, kSyntaxSeverity};
}

ServerError outOfStack(int line) {
    constexpr int kResourceSeverity = 17;
    return {8631,
            "Internal error: Server stack limit has been reached. Please look for potentially deep "
            "nesting in your query, and try to simplify it.",
            line, kResourceSeverity};
}

}  // namespace kap::tsql
