#include "engine/sqlite/sqlite_refusals.hpp"

#include <algorithm>
#include <array>
#include <string>

namespace kap::engine {
namespace {

using tsql::ServerError;

// What SQLite has a limit of, by how its message begins or what it holds.
struct Limit {
    std::string_view message;
    const char* feature;
};

constexpr std::array kRefusedLimits = std::to_array<Limit>({
    {"at most 64 tables in a join", "more than 64 tables in one query"},
    {"too many columns", "more than 2000 columns in one query"},
    {"too many terms in", "more terms than a query can have here"},
    {"too many arguments on function", "more than 127 arguments of a function"},
    {"too many SQL variables", "more constants than a statement can have here"},
});

struct Said {
    std::string_view message;
    int number;
    const char* text;
    int severity;
};

constexpr const char* kTooDeep =
    "Some part of your SQL statement is nested too deeply. Rewrite the query or break it up into "
    "smaller queries.";

constexpr std::string_view kTooLargeTree = "Expression tree is too large";

constexpr std::array kSaid = std::to_array<Said>({
    {kTooLargeTree, 191, kTooDeep, 15},
    {"parser stack overflow", 191, kTooDeep, 15},
    {"too many levels of trigger recursion", 217,
     "Maximum stored procedure, function, trigger, or view nesting level exceeded (limit 32).", 16},
    {"integer overflow", 8115,
     "Arithmetic overflow error converting expression to data type bigint.", 16},
    {"argument of ntile", 4116,
     "The function 'ntile' takes only a positive int or bigint expression as its input.", 15},
    {"foreign key mismatch", 1776,
     "There are no primary or candidate keys in the referenced table that match the referencing "
     "column list in a foreign key of the statement's tables.",
     16},
});

}  // namespace

bool isTooDeep(std::string_view message) {
    return message.find(kTooLargeTree) != std::string_view::npos;
}

ServerError refusedBySqlite(std::string_view message) {
    const auto holds = [&](const auto& each) {
        return message.find(each.message) != std::string_view::npos;
    };
    if (const auto* limit = std::ranges::find_if(kRefusedLimits, holds);
        limit != kRefusedLimits.end()) {
        return tsql::unsupported(limit->feature, 0);
    }
    // A cursor outlives the batch whose table variable it reads.
    constexpr std::string_view kNoTableVariable = "no such table: temp.@";
    if (message.starts_with(kNoTableVariable)) {
        const std::string_view name = message.substr(kNoTableVariable.size() - 1);
        return {1087,
                "Must declare the table variable \"" + std::string(name.substr(0, name.find('/'))) +
                    "\".",
                0, 15, 2};
    }
    if (const auto* said = std::ranges::find_if(kSaid, holds); said != kSaid.end()) {
        return {said->number, said->text, 0, said->severity, 1};
    }
    return {8624,
            "Internal Query Processor Error: The query processor could not produce a query plan. "
            "For more information, contact Customer Support Services.",
            0, 16, 1};
}

}  // namespace kap::engine
