#include "tsql/server_error.hpp"

#include <cstddef>

namespace kap::tsql {

namespace {

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

ServerError::ServerError(Message message, std::initializer_list<std::string_view> arguments,
                         int line)
    : ServerError(numberOf(message), textOf(message, arguments), line, factsOf(message).severity,
                  factsOf(message).state) {}

ServerError::ServerError(int number, const std::string& message, int line, int severity, int state)
    : std::runtime_error(shortened(message)),
      number_(number),
      severity_(severity),
      state_(state),
      line_(line) {}

ServerError syntaxError(const std::string& near, int line) {
    return {Message::SyntaxNear, {near}, line};
}

ServerError keywordError(const std::string& keyword, int line) {
    return {Message::SyntaxNearKeyword, {keyword}, line};
}

ServerError unsupported(const std::string& construct, int line) {
    return {Message::NotSupported, {construct}, line};
}

ServerError nestedTooDeeply(int line) {
    return {Message::NestedTooDeeply, {}, line};
}

ServerError outOfStack(int line) {
    return {Message::OutOfStack, {}, line};
}

}  // namespace kap::tsql
