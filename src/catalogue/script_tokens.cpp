#include "catalogue/script_tokens.hpp"

#include <stdexcept>

#include "base/ascii.hpp"

namespace kap {
namespace {

bool isWordUnit(char unit) {
    return isAsciiLetter(unit) || isAsciiDigit(unit) || unit == '_';
}

// The text that begins behind its quote; a quote in it is doubled.
std::string textFrom(std::string_view line, std::size_t& at) {
    std::string text;
    while (at < line.size()) {
        const char unit = line[at++];
        if (unit != '"') {
            text += unit;
        } else if (at < line.size() && line[at] == '"') {
            text += line[at++];
        } else {
            return text;
        }
    }
    throw std::invalid_argument("a text does not end: " + std::string(line));
}

std::string signFrom(std::string_view line, std::size_t& at) {
    constexpr std::string_view kSigns = "().,&=<>+-*/";
    if (kSigns.find(line[at]) == std::string_view::npos) {
        throw std::invalid_argument("what is not known: " + std::string(line.substr(at)));
    }
    const std::string_view two = line.substr(at, 2);
    const std::size_t size = two == "<>" || two == "<=" || two == ">=" ? 2 : 1;
    at += size;
    return std::string(two.substr(0, size));
}

std::string wordFrom(std::string_view line, std::size_t& at) {
    const std::size_t from = at;
    while (at < line.size() && isWordUnit(line[at])) {
        ++at;
    }
    return std::string(line.substr(from, at - from));
}

std::string numberFrom(std::string_view line, std::size_t& at) {
    const std::size_t from = at;
    while (at < line.size() && (isAsciiDigit(line[at]) || line[at] == '.')) {
        ++at;
    }
    return std::string(line.substr(from, at - from));
}

}  // namespace

std::vector<ScriptToken> scriptTokens(std::string_view line) {
    std::vector<ScriptToken> tokens;
    bool apart = true;
    for (std::size_t at = 0; at < line.size();) {
        const char unit = line[at];
        if (unit == ' ') {
            apart = true;
            ++at;
            continue;
        }
        if (unit == '\'') {
            tokens.push_back({ScriptTokenKind::Comment, std::string(line.substr(at + 1)), apart});
            break;
        }
        if (unit == '"') {
            tokens.push_back({ScriptTokenKind::Text, textFrom(line, ++at), apart});
        } else if (isAsciiDigit(unit)) {
            tokens.push_back({ScriptTokenKind::Number, numberFrom(line, at), apart});
        } else if (isWordUnit(unit)) {
            tokens.push_back({ScriptTokenKind::Word, wordFrom(line, at), apart});
        } else {
            tokens.push_back({ScriptTokenKind::Sign, signFrom(line, at), apart});
        }
        apart = false;
    }
    return tokens;
}

}  // namespace kap
