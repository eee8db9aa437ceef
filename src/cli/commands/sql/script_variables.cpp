#include "cli/commands/sql/script_variables.hpp"

#include <algorithm>
#include <cstddef>

#include "base/ascii.hpp"
#include "cli/commands/sql/statement_scan.hpp"
#include "cli/output/usage_error.hpp"
#include "cli/text_file.hpp"

namespace kap::cli {
namespace {

constexpr int kDeepestInclusion = 16;

bool isInVariable(char unit) {
    return isAsciiLetter(unit) || isAsciiDigit(unit) || unit == '_' || unit == '-';
}

bool isVariableName(std::string_view name) {
    return !name.empty() && std::ranges::all_of(name, &isInVariable);
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
    while (true) {
        const std::size_t begin = text.find("$(");
        if (begin == std::string_view::npos || values_.empty()) {
            return result.append(text);
        }
        const std::size_t end = text.find(')', begin);
        const std::string_view name =
            end == std::string_view::npos ? "" : text.substr(begin + 2, end - begin - 2);
        const auto found = values_.find(asciiUpper(name));
        if (found == values_.end()) {
            result.append(text.substr(0, begin + 2));
            text.remove_prefix(begin + 2);
        } else {
            result.append(text.substr(0, begin)).append(found->second);
            text.remove_prefix(end + 1);
        }
    }
}

std::string ScriptVariables::prepared(std::string_view script) {
    return prepared(script, 0);
}

std::string ScriptVariables::prepared(std::string_view script, int depth) {
    if (depth > kDeepestInclusion) {
        throw UsageError(":r files name one another");
    }
    if (script.find(':') == std::string_view::npos) {
        return expanded(script);
    }
    std::string result;
    for (std::size_t start = 0; start < script.size();) {
        const std::size_t end = std::min(script.find('\n', start), script.size());
        const std::string_view line = script.substr(start, end - start);
        // Within a text or a comment a line is its own.
        const bool own =
            trimmed(line, " \t").starts_with(':') && !scanned(script.substr(0, start)).open;
        result += own ? obeyed(line, depth) : expanded(line);
        if (end < script.size()) {
            result += '\n';
        }
        start = end + 1;
    }
    return result;
}

std::string ScriptVariables::obeyed(std::string_view line, int depth) {
    const std::vector<std::string> words = wordsOfLine(line);
    const std::string command = asciiLower(words.front());
    if (command == ":setvar" && words.size() == 2) {
        forget(words[1]);
        return {};
    }
    if (command == ":setvar" && words.size() == 3) {
        set(words[1], words[2]);
        return {};
    }
    if (command == ":r" && words.size() == 2) {
        return prepared(textOfFile(expanded(words[1])), depth + 1);
    }
    if (command == ":on") {
        return {};  // "on error exit" is what happens anyway
    }
    if (command == ":setvar" || command == ":r") {
        throw UsageError("\"" + std::string(trimmed(line, " \t\r")) +
                         "\" is written :setvar NAME \"value\" or :r FILE");
    }
    return std::string(line);
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
