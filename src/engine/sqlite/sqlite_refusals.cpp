#include "engine/sqlite/sqlite_refusals.hpp"

#include <algorithm>
#include <array>
#include <string>

namespace kap::engine {
namespace {

using tsql::ServerError;

// What SQLite has a limit of, by how its message begins or what it holds.
struct Limit {
    std::string_view words;
    const char* feature;
};

constexpr std::array kRefusedLimits = std::to_array<Limit>({
    {"at most 64 tables in a join", "more than 64 tables in one query"},
    {"too many FROM clause terms", "more than 64 tables in one query"},
    {"too many columns", "more than 2000 columns in one query"},
    {"too many terms in", "more terms than a query can have here"},
    {"too many arguments on function", "more than 127 arguments of a function"},
    {"too many SQL variables", "more constants than a statement can have here"},
});

struct Said {
    std::string_view words;
    tsql::Message message;
};

constexpr std::string_view kTooLargeTree = "Expression tree is too large";

constexpr std::array kSaid = std::to_array<Said>({
    {kTooLargeTree, tsql::Message::NestedTooDeeply},
    {"parser stack overflow", tsql::Message::NestedTooDeeply},
    {"too many levels of trigger recursion", tsql::Message::NestingLevelExceeded},
    {"integer overflow", tsql::Message::BigIntOverflow},
    {"argument of ntile", tsql::Message::NtileArgument},
    {"foreign key mismatch", tsql::Message::ReferencedKeyMismatch},
});

}  // namespace

bool isTooDeep(std::string_view message) {
    return message.find(kTooLargeTree) != std::string_view::npos;
}

ServerError refusedBySqlite(std::string_view message) {
    const auto holds = [&](const auto& each) {
        return message.find(each.words) != std::string_view::npos;
    };
    if (const auto* limit = std::ranges::find_if(kRefusedLimits, holds);
        limit != kRefusedLimits.end()) {
        return tsql::unsupported(limit->feature, 0);
    }
    // A cursor outlives the batch whose table variable it reads.
    constexpr std::string_view kNoTableVariable = "no such table: temp.@";
    if (message.starts_with(kNoTableVariable)) {
        const std::string_view name = message.substr(kNoTableVariable.size() - 1);
        return ServerError(tsql::Message::UndeclaredTableVariable, {name.substr(0, name.find('/'))})
            .withState(2);
    }
    if (const auto* said = std::ranges::find_if(kSaid, holds); said != kSaid.end()) {
        return {said->message};
    }
    return {tsql::Message::NoQueryPlan};
}

}  // namespace kap::engine
