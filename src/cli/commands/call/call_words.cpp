#include "cli/commands/call/call_words.hpp"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <utility>

#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>

#include "base/ascii.hpp"
#include "cli/commands/batch/literal_reader.hpp"
#include "cli/names.hpp"
#include "cli/output/usage_error.hpp"

namespace kap::cli {
namespace {

constexpr std::string_view kNextCall = "+";

constexpr std::array kTypes = {VarType::String,  VarType::Integer,  VarType::Long, VarType::Single,
                               VarType::Double,  VarType::Currency, VarType::Date, VarType::Decimal,
                               VarType::Boolean, VarType::Byte};

bool isLetter(char unit) {
    return (unit >= 'a' && unit <= 'z') || (unit >= 'A' && unit <= 'Z') || unit == '_';
}

bool isIdentifier(std::string_view name) {
    return !name.empty() && isLetter(name.front()) && std::ranges::all_of(name, [](char unit) {
        return isLetter(unit) || (unit >= '0' && unit <= '9');
    });
}

Variant textValue(std::string_view word) {
    try {
        return word;
    } catch (const AutomationError&) {  // the bytes are no text
        throw UsageError("an argument is not UTF-8");
    }
}

std::optional<VarType> typeCalled(std::string_view name) {
    const auto found = std::ranges::find_if(
        kTypes, [&](VarType type) { return equalsIgnoringCase(typeName(type), name); });
    return found == kTypes.end() ? std::nullopt : std::optional(*found);
}

// "date:25/12/03"; nullopt when no type is named in front.
std::optional<Variant> readTyped(std::string_view word) {
    const std::size_t colon = word.find(':');
    if (colon == std::string_view::npos) {
        return std::nullopt;
    }
    const std::optional<VarType> type = typeCalled(word.substr(0, colon));
    if (!type) {
        return std::nullopt;
    }
    const std::string_view text = word.substr(colon + 1);
    const Variant value = textValue(text);
    try {
        return convert::changeType(value, *type);
    } catch (const AutomationError& error) {
        throw UsageError("\"" + std::string(text) + "\" is no " + std::string(typeName(*type)) +
                         ": " + error.what());
    }
}

Variant readValue(std::string_view word) {
    if (auto literal = readLiteral(word)) {
        return *literal;
    }
    if (auto typed = readTyped(word)) {
        return *typed;
    }
    return textValue(word);
}

GivenArgument readArgument(std::string_view word) {
    constexpr std::string_view kIs = ":=";
    const std::size_t is = word.find(kIs);
    if (is == std::string_view::npos || !isIdentifier(word.substr(0, is))) {
        return {{}, readValue(word)};
    }
    return {std::string(word.substr(0, is)), readValue(word.substr(is + kIs.size()))};
}

std::vector<std::string> readPath(const std::string& word) {
    std::vector<std::string> path;
    for (std::string_view rest = word;;) {
        const std::size_t point = rest.find('.');
        path.emplace_back(rest.substr(0, point));
        if (!isIdentifier(path.back())) {
            throw UsageError("\"" + word + "\" names no member");
        }
        if (point == std::string_view::npos) {
            return path;
        }
        rest.remove_prefix(point + 1);
    }
}

GivenCall readCall(const std::vector<std::string>& words) {
    if (words.empty()) {
        throw UsageError("a member is missing before or after \"+\"");
    }
    GivenCall call;
    call.path = readPath(words.front());
    for (std::size_t i = 1; i < words.size(); ++i) {
        call.arguments.push_back(readArgument(words[i]));
        const bool afterNamed = i > 1 && !call.arguments[i - 2].name.empty();
        if (afterNamed && call.arguments.back().name.empty()) {
            throw UsageError("arguments by position come before named ones: " + words[i]);
        }
    }
    return call;
}

}  // namespace

std::vector<GivenCall> readCalls(const std::vector<std::string>& words) {
    if (words.empty()) {
        throw UsageError("call needs the name of a member (see \"kaputil call --help\")");
    }
    std::vector<GivenCall> calls;
    for (auto begin = words.begin();;) {
        const auto end = std::find(begin, words.end(), kNextCall);
        calls.push_back(readCall({begin, end}));
        if (end == words.end()) {
            return calls;
        }
        begin = end + 1;
    }
}

}  // namespace kap::cli
