#include "tsql/messages.hpp"

#include <algorithm>
#include <array>
#include <cstddef>

namespace kap::tsql {
namespace {

constexpr auto kMessages = std::to_array<MessageFacts>({
#define KAP_MESSAGE(name, number, severity, state, reach, sqlState, text) \
    {number, severity, state, ErrorReach::reach, sqlState, text},
#include "tsql/messages.def"
#undef KAP_MESSAGE
});

// Numbers are searched for, and what a number says does not depend on its text.
constexpr bool isOrdered() {
    for (std::size_t i = 1; i < kMessages.size(); ++i) {
        const MessageFacts& before = kMessages[i - 1];
        const MessageFacts& here = kMessages[i];
        if (here.number < before.number) return false;
        const bool differs = here.reach != before.reach || here.severity != before.severity ||
                             std::string_view(here.sqlState) != before.sqlState;
        if (here.number == before.number && differs) return false;
    }
    return true;
}
static_assert(isOrdered());

}  // namespace

const MessageFacts& factsOf(Message message) {
    return kMessages.at(static_cast<std::size_t>(message));
}

const MessageFacts* findMessage(int number) {
    const auto* found = std::ranges::lower_bound(kMessages, number, {}, &MessageFacts::number);
    return found == kMessages.end() || found->number != number ? nullptr : found;
}

int numberOf(Message message) {
    return factsOf(message).number;
}

ErrorReach reachOf(int number) {
    const MessageFacts* known = findMessage(number);
    return known == nullptr ? ErrorReach::Statement : known->reach;
}

const char* stateOf(int number) {
    const MessageFacts* known = findMessage(number);
    return known == nullptr || *known->sqlState == '\0' ? "42000" : known->sqlState;
}

std::string textOf(Message message, std::initializer_list<std::string_view> arguments) {
    const std::string_view text = factsOf(message).text;
    std::string made;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::size_t place =
            text[i] == '%' && i + 1 < text.size() ? static_cast<std::size_t>(text[i + 1] - '1') : 9;
        if (place >= arguments.size()) {
            made += text[i];
            continue;
        }
        made += arguments.begin()[place];
        ++i;
    }
    return made;
}

}  // namespace kap::tsql
