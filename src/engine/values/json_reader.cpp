#include <cstdint>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "base/hexadecimal.hpp"
#include "base/unicode.hpp"
#include "engine/values/formatted_value.hpp"
#include "engine/values/json_text.hpp"
#include "engine/values/text_units.hpp"
#include "engine/values/variant.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {
namespace {

using tsql::ServerError;

constexpr int kDeepestJson = 128;

// A character as messages show it, at its place counted from 0; the end of a text is a point.
ServerError unexpectedIn(tsql::Message message, std::string_view text, std::size_t at) {
    const std::size_t place = unitLength(text.substr(0, at));
    const std::string shown = at < text.size() ? std::string(unitSlice(text, place, 1)) : ".";
    return {message, {shown, plain::text(static_cast<std::int64_t>(place))}};
}

class JsonTextReader {
public:
    explicit JsonTextReader(std::string_view text) : text_(text) {}

    JsonNode whole() {
        skipBlanks();
        if (!at('{') && !at('[')) unexpected();
        JsonNode root = value(1);
        skipBlanks();
        if (at_ < text_.size()) unexpected();
        return root;
    }

private:
    [[noreturn]] void unexpected() const {
        throw unexpectedIn(tsql::Message::JsonInvalid, text_, at_);
    }
    [[nodiscard]] bool at(char c) const { return at_ < text_.size() && text_[at_] == c; }
    [[nodiscard]] bool atDigit() const { return at_ < text_.size() && isAsciiDigit(text_[at_]); }
    void expect(char c) {
        if (!at(c)) unexpected();
        ++at_;
    }
    void skipBlanks() {
        while (at(' ') || at('\t') || at('\n') || at('\r'))
            ++at_;
    }

    JsonNode value(int depth) {
        if (depth > kDeepestJson) unexpected();
        JsonNode node;
        node.begin = at_;
        if (at('{')) {
            structure(node, '}', depth);
        } else if (at('[')) {
            structure(node, ']', depth);
        } else if (at('"')) {
            node.kind = JsonKind::Text;
            skipText();
        } else if (at('-') || atDigit()) {
            node.kind = JsonKind::Number;
            skipNumber();
        } else {
            node.kind = word();
        }
        node.end = at_;
        return node;
    }

    void structure(JsonNode& node, char end, int depth) {
        const bool object = end == '}';
        node.kind = object ? JsonKind::Object : JsonKind::Array;
        ++at_;
        skipBlanks();
        if (at(end)) {
            ++at_;
            return;
        }
        while (true) {
            skipBlanks();
            const std::size_t nameBegin = at_;
            std::string name = object ? memberName() : std::string();
            JsonNode& child = node.children.emplace_back(value(depth + 1));
            child.nameBegin = nameBegin;
            child.name = std::move(name);
            skipBlanks();
            if (!at(',')) break;
            ++at_;
        }
        expect(end);
    }

    std::string memberName() {
        JsonNode name;
        name.kind = JsonKind::Text;
        name.begin = at_;
        if (!at('"')) unexpected();
        skipText();
        name.end = at_;
        skipBlanks();
        expect(':');
        skipBlanks();
        return name.scalarIn(text_);
    }

    void skipText() {
        constexpr int kHexDigits = 4;
        ++at_;
        while (!at('"')) {
            if (at_ >= text_.size() || static_cast<unsigned char>(text_[at_]) < 0x20) unexpected();
            if (text_[at_++] != '\\') continue;
            if (at('u')) {
                for (int i = 0; i < kHexDigits; ++i) {
                    ++at_;
                    if (at_ >= text_.size() ||
                        hex::valueOf(static_cast<unsigned char>(text_[at_])) < 0) {
                        unexpected();
                    }
                }
            } else if (at_ >= text_.size() ||
                       std::string_view("\"\\/bfnrt").find(text_[at_]) == std::string_view::npos) {
                unexpected();
            }
            ++at_;
        }
        ++at_;
    }

    void skipDigits() {
        if (!atDigit()) unexpected();
        while (atDigit())
            ++at_;
    }

    void skipNumber() {
        if (at('-')) ++at_;
        if (at('0')) {
            ++at_;
        } else {
            skipDigits();
        }
        if (at('.')) {
            ++at_;
            skipDigits();
        }
        if (!at('e') && !at('E')) return;
        ++at_;
        if (at('+') || at('-')) ++at_;
        skipDigits();
    }

    JsonKind word() {
        for (const auto& [text, kind] :
             {std::pair<std::string_view, JsonKind>{"null", JsonKind::Null},
              {"true", JsonKind::Boolean},
              {"false", JsonKind::Boolean}}) {
            if (!at(text.front())) continue;
            for (const char c : text)
                expect(c);
            return kind;
        }
        unexpected();
    }

    std::string_view text_;
    std::size_t at_ = 0;
};

class JsonPathReader {
public:
    explicit JsonPathReader(std::string_view text) : text_(text) {}

    JsonPath read(bool modifies) {
        JsonPath path;
        skipBlanks();
        path.append = modifies && acceptWord("append");
        path.strict = acceptWord("strict");
        if (!path.strict) acceptWord("lax");
        if (!accept('$')) unexpected();
        while (true) {
            skipBlanks();
            if (at_ >= text_.size()) return path;
            if (accept('.')) {
                path.steps.push_back({memberName(), std::nullopt});
            } else if (accept('[')) {
                path.steps.push_back({"", index()});
            } else {
                unexpected();
            }
        }
    }

private:
    [[noreturn]] void unexpected() const {
        throw unexpectedIn(tsql::Message::JsonPathInvalid, text_, at_);
    }
    bool accept(char c) {
        const bool found = at_ < text_.size() && text_[at_] == c;
        if (found) ++at_;
        return found;
    }
    bool acceptWord(std::string_view word) {
        if (!text_.substr(at_).starts_with(word)) return false;
        at_ += word.size();
        skipBlanks();
        return true;
    }
    void skipBlanks() {
        while (at_ < text_.size() && text_[at_] == ' ')
            ++at_;
    }

    std::string memberName() {
        skipBlanks();
        const std::size_t begin = at_;
        if (accept('"')) {
            while (at_ < text_.size() && text_[at_] != '"')
                at_ += std::size_t{text_[at_] == '\\' ? 2U : 1U};
            if (!accept('"')) {
                at_ = text_.size();
                unexpected();
            }
            JsonNode name;
            name.kind = JsonKind::Text;
            name.begin = begin;
            name.end = at_;
            return name.scalarIn(text_);
        }
        while (at_ < text_.size() && isNameCharacter(text_[at_], at_ == begin))
            ++at_;
        if (at_ == begin) unexpected();
        return std::string(text_.substr(begin, at_ - begin));
    }

    static bool isNameCharacter(char c, bool first) {
        return isAsciiLetter(c) || c == '_' || c == '$' || static_cast<unsigned char>(c) >= 0x80 ||
               (!first && isAsciiDigit(c));
    }

    std::size_t index() {
        skipBlanks();
        const std::size_t begin = at_;
        while (at_ < text_.size() && isAsciiDigit(text_[at_]))
            ++at_;
        const auto number = plain::readWhole(text_.substr(begin, at_ - begin));
        if (!number) unexpected();
        skipBlanks();
        if (!accept(']')) unexpected();
        return static_cast<std::size_t>(*number);
    }

    std::string_view text_;
    std::size_t at_ = 0;
};

char16_t unitAt(std::string_view digits) {
    char16_t unit = 0;
    for (const char c : digits)
        unit = static_cast<char16_t>(unit * 16 + hex::valueOf(static_cast<unsigned char>(c)));
    return unit;
}

char escapedCharacter(char c) {
    switch (c) {
        case 'b':
            return '\b';
        case 'f':
            return '\f';
        case 'n':
            return '\n';
        case 'r':
            return '\r';
        case 't':
            return '\t';
        default:
            return c;
    }
}

// A text without its quotes and escapes. Escaped units that follow each other may be a pair.
std::string unescapedJson(std::string_view quoted) {
    constexpr std::size_t kEscape = 6;
    const std::string_view text = quoted.substr(1, quoted.size() - 2);
    std::string result;
    std::u16string units;
    std::size_t at = 0;
    while (at < text.size()) {
        if (text.substr(at).starts_with("\\u")) {
            units += unitAt(text.substr(at + 2, kEscape - 2));
            at += kEscape;
            continue;
        }
        result += fromUnits(units);
        units.clear();
        if (text[at] == '\\' && at + 1 < text.size()) {
            result += escapedCharacter(text[at + 1]);
            at += 2;
        } else {
            result += text[at++];
        }
    }
    return result + fromUnits(units);
}

}  // namespace

std::string JsonNode::scalarIn(std::string_view json) const {
    return kind == JsonKind::Text ? unescapedJson(textIn(json)) : std::string(textIn(json));
}

JsonNode parseJson(std::string_view json) {
    return JsonTextReader(json).whole();
}

bool isJson(std::string_view json) {
    try {
        (void)parseJson(json);
        return true;
    } catch (const ServerError&) {
        return false;
    }
}

JsonPath parseJsonPath(std::string_view path, bool modifies) {
    return JsonPathReader(path).read(modifies);
}

std::string jsonString(std::string_view text) {
    constexpr std::size_t kDigits = 4;
    static constexpr std::string_view kEscaped = "\"\\/\b\f\n\r\t";
    static constexpr std::string_view kLetters = "\"\\/bfnrt";
    std::string result = "\"";
    for (const char c : text) {
        const std::size_t known = kEscaped.find(c);
        if (known != std::string_view::npos) {
            result += '\\';
            result += kLetters[known];
        } else if (static_cast<unsigned char>(c) < 0x20) {
            result +=
                "\\u" + hex::ofNumber(static_cast<unsigned char>(c), hex::Case::Lower, kDigits);
        } else {
            result += c;
        }
    }
    return result + "\"";
}

std::string jsonOf(const Value& value, const tsql::TypeSpec& type, Markup markup) {
    if (isNull(value)) return "null";
    if (tsql::isVariant(type.type)) {
        const TypedValue typed = valueOfVariant(std::get<std::string>(value));
        return jsonOf(typed.value, typed.type, markup);
    }
    if (type.type == tsql::SqlType::Bit) {
        return std::get<std::int64_t>(value) != 0 ? "true" : "false";
    }
    std::string text = formattedValue(value, type);
    return markup == Markup::Json || tsql::isNumber(type.type) ? text : jsonString(text);
}

}  // namespace kap::engine
