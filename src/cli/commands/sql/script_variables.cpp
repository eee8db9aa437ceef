#include "cli/commands/sql/script_variables.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "cli/commands/sql/statement_scan.hpp"
#include "cli/output/usage_error.hpp"
#include "cli/text_file.hpp"

namespace kap::cli {
namespace {

constexpr int kDeepestInclusion = 16;
constexpr int kMostInclusions = 1000;

bool isInVariable(char unit) {
    return isAsciiLetter(unit) || isAsciiDigit(unit) || unit == '_' || unit == '-';
}

bool isVariableName(std::string_view name) {
    return !name.empty() && std::ranges::all_of(name, &isInVariable);
}

// Values and files may stand in a script more often than it is long.
void grow(std::string& text, std::string_view part) {
    if (text.size() + part.size() > kLargestScript) {
        throw UsageError("the script has more than " +
                         plain::text(static_cast<std::int64_t>(kLargestScript >> 20U)) +
                         " MB with its variables and files");
    }
    text += part;
}

}  // namespace

std::vector<std::string> wordsOfLine(std::string_view line) {
    std::vector<std::string> words;
    while (true) {
        line = trimmed(line, " \t\r");
        if (line.empty()) {
            return words;
        }
        const char quote = line.front();
        const bool quoted = quote == '"' || quote == '\'';
        const std::size_t start = quoted ? 1 : 0;
        const std::size_t end = quoted ? line.find(quote, start) : line.find_first_of(" \t");
        const std::size_t until = std::min(end, line.size());
        words.emplace_back(line.substr(start, until - start));
        line.remove_prefix(std::min(until + 1, line.size()));
    }
}

void ScriptVariables::set(const std::string& name, const std::string& value) {
    if (!isVariableName(name)) {
        throw UsageError("\"" + name + "\" is no name of a variable: letters, digits, _ and -");
    }
    values_[asciiUpper(name)] = value;
}

void ScriptVariables::forget(const std::string& name) {
    values_.erase(asciiUpper(name));
}

std::string ScriptVariables::expanded(std::string_view text) const {
    std::string result;
    expand(text, result);
    return result;
}

void ScriptVariables::expand(std::string_view text, std::string& result) const {
    while (true) {
        const std::size_t begin = values_.empty() ? text.npos : text.find("$(");
        grow(result, text.substr(0, begin));
        if (begin == text.npos) {
            return;
        }
        text.remove_prefix(begin);
        const std::string_view behind = text.substr(2);
        const auto end = std::ranges::find_if_not(behind, &isInVariable);
        const std::string_view name(behind.begin(), end);
        const auto found =
            end != behind.end() && *end == ')' ? values_.find(asciiUpper(name)) : values_.end();
        if (found == values_.end()) {
            grow(result, "$(");
            text.remove_prefix(2);
        } else {
            grow(result, found->second);
            text.remove_prefix(name.size() + 3);
        }
    }
}

std::string ScriptVariables::prepared(std::string_view script) {
    Prepared result;
    prepare(script, 0, result);
    return std::move(result.text);
}

void ScriptVariables::prepare(std::string_view script, int depth, Prepared& result) {
    if (depth > kDeepestInclusion) {
        throw UsageError(":r files name one another");
    }
    std::string_view open;  // within a text or a comment a line is its own
    for (std::size_t start = 0; start < script.size();) {
        const std::size_t end = std::min(script.find('\n', start), script.size());
        const std::string_view line = script.substr(start, end - start);
        if (open.empty() && trimmed(line, " \t").starts_with(':')) {
            obey(line, depth, result);
        } else {
            expand(line, result.text);
            open = openBehind(line, open);
        }
        if (end < script.size()) {
            grow(result.text, "\n");
        }
        start = end + 1;
    }
}

void ScriptVariables::obey(std::string_view line, int depth, Prepared& result) {
    const std::vector<std::string> words = wordsOfLine(line);
    const std::string command = asciiLower(words.front());
    const std::string file = command == ":r" && words.size() == 2 ? expanded(words[1]) : "";
    if (command == ":setvar" && words.size() == 2) {
        forget(words[1]);
    } else if (command == ":setvar" && words.size() == 3) {
        set(words[1], words[2]);
    } else if (!file.empty() && file != "-") {
        if (++result.files > kMostInclusions) {
            throw UsageError("a script includes at most " + plain::text(kMostInclusions) +
                             " files with :r");
        }
        prepare(textOfFile(file), depth + 1, result);
    } else if (command == ":setvar" || command == ":r") {
        throw UsageError("\"" + std::string(trimmed(line, " \t\r")) +
                         "\" is written :setvar NAME \"value\" or :r FILE");
    } else if (command != ":on") {  // "on error exit" is what happens anyway
        grow(result.text, line);
    }
}

void setVariable(ScriptVariables& variables, std::string_view assignment) {
    const std::size_t equals = assignment.find('=');
    if (equals == std::string_view::npos) {
        throw UsageError("a variable is given as NAME=VALUE");
    }
    variables.set(std::string(assignment.substr(0, equals)),
                  std::string(assignment.substr(equals + 1)));
}

}  // namespace kap::cli
