#include "engine/values/xml_text.hpp"

#include <algorithm>
#include <array>
#include <cstdint>

#include <kaputil/automation/plain_text.hpp>

#include "base/hexadecimal.hpp"
#include "base/unicode.hpp"
#include "engine/values/text_units.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {
namespace {

using tsql::ServerError;

constexpr std::size_t kUnitDigits = 4;

std::string unitNumber(char16_t unit) {
    return hex::ofNumber(unit, hex::Case::Upper, kUnitDigits);
}

bool isBlankOfXml(char c) {
    return c == '\t' || c == '\n' || c == '\r';
}

std::string characterByNumber(char c) {
    return "&#x" + hex::ofNumber(static_cast<unsigned char>(c), hex::Case::Upper, 2) + ";";
}

const char* entityOf(char c, bool inAttribute) {
    switch (c) {
        case '&':
            return "&amp;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        case '"':
            return inAttribute ? "&quot;" : nullptr;
        default:
            return nullptr;
    }
}

std::string escapedForXml(std::string_view text, bool inAttribute, bool strict,
                          std::string_view node) {
    std::string result;
    result.reserve(text.size());
    for (const char c : text) {
        const bool control = static_cast<unsigned char>(c) < 0x20;
        if (const char* entity = entityOf(c, inAttribute)) {
            result += entity;
        } else if (control && !isBlankOfXml(c)) {
            if (strict) {
                const auto unit = static_cast<char16_t>(static_cast<unsigned char>(c));
                throw ServerError(tsql::Message::XmlCharacterNotAllowed, {node, unitNumber(unit)});
            }
            result += characterByNumber(c);
        } else if (c == '\r' || (inAttribute && control)) {
            result += characterByNumber(c);
        } else {
            result += c;
        }
    }
    return result;
}

// Letters beyond ASCII: from U+00C0 on all but what is punctuation there, and surrogates.
bool isNameStart(char16_t unit) {
    if (unit < 0x80) {
        return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z') || unit == u'_';
    }
    const bool punctuation = unit == 0xD7 || unit == 0xF7 || (unit >= 0x2000 && unit < 0x2070) ||
                             (unit >= 0x2190 && unit < 0x2C00) || (unit >= 0x3000 && unit < 0x3005);
    return unit >= 0xC0 && !punctuation;
}

bool isNamePart(char16_t unit) {
    return isNameStart(unit) || (unit >= u'0' && unit <= u'9') || unit == u'-' || unit == u'.' ||
           unit == 0xB7;
}

// Of names as they are written, with the character at fault.
[[noreturn]] void invalidXmlName(std::string_view kind, std::string_view whole, char16_t unit) {
    throw ServerError(
        tsql::Message::XmlNameInvalid,
        {kind, whole, unicode::displayUtf8(std::u16string_view(&unit, 1)), unitNumber(unit)});
}

void checkNamePart(std::u16string_view part, std::string_view kind, std::string_view whole) {
    if (part.empty()) invalidXmlName(kind, whole, u':');
    for (std::size_t i = 0; i < part.size(); ++i) {
        const bool valid = i == 0 ? isNameStart(part[i]) : isNamePart(part[i]);
        if (!valid) invalidXmlName(kind, whole, part[i]);
    }
}

// The parts of a path between its slashes; those within brackets divide nothing.
std::vector<std::string> stepsOf(std::string_view path) {
    std::vector<std::string> parts(1);
    bool bracketed = false;
    for (const char c : path) {
        bracketed = (bracketed || c == '(') && c != ')';
        if (c == '/' && !bracketed) {
            parts.emplace_back();
        } else {
            parts.back() += c;
        }
    }
    return parts;
}

constexpr std::string_view kInstruction = "processing-instruction(";

// Whether the last step is one that stands for no element.
bool takeLeaf(std::string_view step, std::string_view whole, XmlPath& path) {
    using NamedLeaf = std::pair<std::string_view, XmlPath::Leaf>;
    static constexpr std::array<NamedLeaf, 5> kLeaves{{{"*", XmlPath::Leaf::Content},
                                                       {"node()", XmlPath::Leaf::Content},
                                                       {"text()", XmlPath::Leaf::Text},
                                                       {"data()", XmlPath::Leaf::Data},
                                                       {"comment()", XmlPath::Leaf::Comment}}};
    const auto* known = std::ranges::find(kLeaves, step, &NamedLeaf::first);
    if (known != kLeaves.end()) {
        path.leaf = known->second;
        return true;
    }
    if (step.starts_with('@')) {
        path.leaf = XmlPath::Leaf::Attribute;
        path.name = step.substr(1);
        if (path.name.empty()) invalidXmlName("Column", whole, u'@');
        checkXmlName(path.name, "Column", whole);
        return true;
    }
    if (!step.starts_with("processing-instruction")) return false;
    if (!step.starts_with(kInstruction) || !step.ends_with(')') ||
        step.size() <= kInstruction.size() + 1) {
        throw ServerError(tsql::Message::XmlInstructionInvalid, {whole});
    }
    path.leaf = XmlPath::Leaf::Instruction;
    path.name = step.substr(kInstruction.size(), step.size() - kInstruction.size() - 1);
    checkXmlName(path.name, "Column", whole);
    return true;
}

// The character that "&...;" stands for; empty for what is none.
std::string referredCharacter(std::string_view reference) {
    static constexpr std::array<std::pair<std::string_view, char>, 5> kNamed{
        {{"lt", '<'}, {"gt", '>'}, {"amp", '&'}, {"quot", '"'}, {"apos", '\''}}};
    for (const auto& [name, character] : kNamed) {
        if (name == reference) return std::string(1, character);
    }
    if (!reference.starts_with("#x")) return {};
    char16_t unit = 0;
    for (const char c : reference.substr(2))
        unit = static_cast<char16_t>(unit * 16 + hex::valueOf(static_cast<unsigned char>(c)));
    return unicode::displayUtf8(std::u16string_view(&unit, 1));
}

// The texts of XML one after the other, with how many elements are around each.
class XmlTexts {
public:
    explicit XmlTexts(std::string_view xml) : rest_(xml) {}

    // Whether there was another one.
    bool next() {
        while (!rest_.empty() && rest_.front() == '<')
            skipMarkup();
        if (rest_.empty()) return false;
        text_.clear();
        while (!rest_.empty() && rest_.front() != '<')
            takeCharacter();
        return true;
    }
    [[nodiscard]] const std::string& text() const { return text_; }
    [[nodiscard]] int depth() const { return depth_; }

private:
    void skipMarkup() {
        const bool comment = rest_.starts_with("<!--");
        const std::size_t end = rest_.find(comment ? "-->" : ">");
        const std::string_view tag = rest_.substr(0, end);
        if (rest_.starts_with("</")) {
            --depth_;
        } else if (!comment && !rest_.starts_with("<?") && !tag.ends_with('/')) {
            ++depth_;
        }
        rest_.remove_prefix(std::min(
            rest_.size(), end == std::string_view::npos ? rest_.size() : end + (comment ? 3 : 1)));
    }

    void takeCharacter() {
        if (rest_.front() == '&') {
            // The longest reference is "&#x10FFFF;": no text is searched to its end.
            constexpr std::size_t kLongest = 10;
            const std::size_t end = rest_.substr(0, kLongest).find(';');
            const std::string referred = end == std::string_view::npos
                                             ? std::string()
                                             : referredCharacter(rest_.substr(1, end - 1));
            if (!referred.empty()) {
                text_ += referred;
                rest_.remove_prefix(end + 1);
                return;
            }
        }
        text_ += rest_.front();
        rest_.remove_prefix(1);
    }

    std::string_view rest_;
    std::string text_;
    int depth_ = 0;
};

}  // namespace

std::string xmlContent(std::string_view text, bool strict, std::string_view node) {
    return escapedForXml(text, false, strict, node);
}

std::string xmlAttribute(std::string_view text, bool strict, std::string_view node) {
    return escapedForXml(text, true, strict, node);
}

std::string xmlName(std::string_view text) {
    const std::u16string units = toUnits(text);
    std::string result;
    for (std::size_t i = 0; i < units.size(); ++i) {
        const char16_t unit = units[i];
        const bool surrogate = unit >= 0xD800 && unit < 0xE000;
        const bool looksEncoded = unit == u'_' && i + 1 < units.size() && units[i + 1] == u'x';
        const bool valid = i == 0 ? isNameStart(unit) : isNamePart(unit);
        if (valid && !looksEncoded && !surrogate) {
            result += fromUnits(std::u16string_view(&unit, 1));
        } else {
            result += "_x" + unitNumber(unit) + "_";
        }
    }
    return result;
}

void checkXmlName(std::string_view name, std::string_view kind, std::string_view whole) {
    const std::u16string units = toUnits(name);
    const std::size_t colon = units.find(u':');
    if (colon == std::u16string::npos) {
        checkNamePart(units, kind, whole);
        return;
    }
    checkNamePart(std::u16string_view(units).substr(0, colon), kind, whole);
    checkNamePart(std::u16string_view(units).substr(colon + 1), kind, whole);
    const std::string prefix = fromUnits(std::u16string_view(units).substr(0, colon));
    if (prefix == "xml") return;
    const std::string_view where = kind == "Column" ? "column" : kind == "Row tag" ? "row" : "root";
    throw ServerError(tsql::Message::XmlPrefixUnknown, {prefix, where, whole});
}

XmlPath xmlPath(std::string_view name) {
    XmlPath path;
    if (name.empty()) return path;
    path.steps = stepsOf(name);
    if (std::ranges::any_of(path.steps, [](const std::string& step) { return step.empty(); })) {
        invalidXmlName("Column", name, u'/');
    }
    const std::string last = path.steps.back();
    if (takeLeaf(last, name, path)) path.steps.pop_back();
    for (const std::string& step : path.steps)
        checkXmlName(step, "Column", name);
    return path;
}

std::optional<std::string> xmlValueAt(std::string_view xml, std::string_view path) {
    static constexpr std::array<std::string_view, 4> kWhole{".", ".[1]", "(.)[1]", "/"};
    static constexpr std::array<std::string_view, 4> kFirstText{"text()[1]", "./text()[1]",
                                                                "(text())[1]", "(./text())[1]"};
    std::string bare(path);
    std::erase(bare, ' ');
    XmlTexts texts(xml);
    if (std::ranges::find(kWhole, bare) != kWhole.end()) {
        std::string all;
        while (texts.next())
            all += texts.text();
        return all;
    }
    if (std::ranges::find(kFirstText, bare) == kFirstText.end()) {
        throw tsql::unsupported("the xml path " + std::string(path), 0);
    }
    while (texts.next()) {
        if (texts.depth() == 0) return texts.text();
    }
    return std::nullopt;
}

}  // namespace kap::engine
