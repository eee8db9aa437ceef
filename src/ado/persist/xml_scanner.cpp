#include "ado/persist/xml_scanner.hpp"

#include <algorithm>
#include <array>
#include <optional>

#include <kaputil/automation/plain_text.hpp>

#include "base/hexadecimal.hpp"
#include "base/unicode.hpp"
#include "data/failures.hpp"

namespace kap::ado::persist {
namespace {

constexpr std::size_t kDeepestElements = 100;

bool isXmlBlank(char letter) {
    return letter == ' ' || letter == '\t' || letter == '\r' || letter == '\n';
}

bool endsName(char letter) {
    return isXmlBlank(letter) || letter == '=' || letter == '/' || letter == '>' || letter == '<' ||
           letter == '"' || letter == '\'';
}

// What XML 1.0 allows, surrogates and unassigned noncharacters excluded.
bool isXmlCharacter(std::uint32_t code) {
    return code == 0x9 || code == 0xA || code == 0xD || (code >= 0x20 && code <= 0xD7FF) ||
           (code >= 0xE000 && code <= 0xFFFD) || (code >= 0x10000 && code <= 0x10FFFF);
}

std::string utf8Of(std::uint32_t code) {
    std::u16string units;
    if (code >= 0x10000) {
        const std::uint32_t rest = code - 0x10000;
        units += static_cast<char16_t>(0xD800 + (rest >> 10U));
        units += static_cast<char16_t>(0xDC00 + (rest & 0x3FFU));
    } else {
        units += static_cast<char16_t>(code);
    }
    return unicode::displayUtf8(units);
}

std::optional<std::uint32_t> numberOf(std::string_view digits, std::uint32_t base) {
    std::uint32_t code = 0;
    for (const char letter : digits) {
        const int digit = hex::valueOf(static_cast<unsigned char>(letter));
        constexpr std::uint32_t kLargest = 0x10FFFF;
        if (digit < 0 || static_cast<std::uint32_t>(digit) >= base || code > kLargest) {
            return std::nullopt;
        }
        code = code * base + static_cast<std::uint32_t>(digit);
    }
    return !digits.empty() && isXmlCharacter(code) ? std::optional(code) : std::nullopt;
}

struct Entity {
    std::string_view name;
    char letter;
};
constexpr auto kEntities =
    std::to_array<Entity>({{"lt", '<'}, {"gt", '>'}, {"amp", '&'}, {"quot", '"'}, {"apos", '\''}});

bool isNameStart(char letter) {
    return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') || letter == '_';
}

}  // namespace

const std::string* XmlTag::find(std::string_view attribute) const {
    const auto found = std::ranges::find(attributes, attribute, &XmlAttribute::name);
    return found == attributes.end() ? nullptr : &found->value;
}

void XmlScanner::fail(const std::string& why) const {
    fail::readingFile("at byte " + plain::text(position_) + " " + why);
}

bool XmlScanner::takeSign(std::string_view sign) {
    if (!text_.substr(position_).starts_with(sign)) {
        return false;
    }
    position_ += sign.size();
    return true;
}

void XmlScanner::skipTo(std::string_view sign) {
    const std::size_t found = text_.find(sign, position_);
    if (found == std::string_view::npos) {
        fail("'" + std::string(sign) + "' is missing");
    }
    position_ = found + sign.size();
}

// A document type with an inner part ends behind the bracket of that.
void XmlScanner::skipDeclaration() {
    const std::size_t start = position_;
    skipTo(">");
    if (text_.substr(start, position_ - start).find('[') != std::string_view::npos) {
        fail("a document type with definitions of its own is not read");
    }
}

void XmlScanner::skipBlanks() {
    while (position_ < text_.size() && isXmlBlank(text_[position_])) {
        ++position_;
    }
}

std::string XmlScanner::takeName() {
    const std::size_t start = position_;
    while (position_ < text_.size() && !endsName(text_[position_])) {
        ++position_;
    }
    if (position_ == start) {
        fail("a name is missing");
    }
    return std::string(text_.substr(start, position_ - start));
}

std::string XmlScanner::takeEntity() {
    const std::size_t end = text_.find(';', position_);
    constexpr std::size_t kLongestEntity = 12;
    if (end == std::string_view::npos || end - position_ > kLongestEntity) {
        fail("an entity has no end");
    }
    const std::string_view name = text_.substr(position_, end - position_);
    const auto known = std::ranges::find(kEntities, name, &Entity::name);
    std::optional<std::uint32_t> code;
    if (name.starts_with("#x")) {
        code = numberOf(name.substr(2), 16);
    } else if (name.starts_with("#")) {
        code = numberOf(name.substr(1), 10);
    } else if (known != kEntities.end()) {
        code = static_cast<unsigned char>(known->letter);
    }
    if (!code) {
        fail("the entity '" + std::string(name) + "' is not known");
    }
    position_ = end + 1;
    return utf8Of(*code);
}

// A line end that is not written as an entity is a blank.
std::string XmlScanner::takeValue() {
    skipBlanks();
    const char quote = position_ < text_.size() ? text_[position_] : '\0';
    if (quote != '\'' && quote != '"') {
        fail("a value in quotes is missing");
    }
    ++position_;
    std::string value;
    while (position_ < text_.size() && text_[position_] != quote) {
        const char letter = text_[position_++];
        if (letter == '<') {
            --position_;
            fail("'<' stands in a value");
        }
        if (letter == '&') {
            value += takeEntity();
        } else {
            value += isXmlBlank(letter) ? ' ' : letter;
        }
    }
    if (!takeSign(std::string_view(&quote, 1))) {
        fail("a value has no end");
    }
    return value;
}

void XmlScanner::requireEachOnce(const XmlTag& tag) const {
    std::vector<std::string_view> names;
    for (const XmlAttribute& attribute : tag.attributes) {
        names.emplace_back(attribute.name);
    }
    std::ranges::sort(names);
    const auto twice = std::ranges::adjacent_find(names);
    if (twice != names.end()) {
        fail("the attribute '" + std::string(*twice) + "' stands twice");
    }
}

void XmlScanner::takeAttributes(XmlTag& tag) {
    for (;;) {
        skipBlanks();
        closesAtOnce_ = takeSign("/>");
        if (closesAtOnce_ || takeSign(">")) {
            requireEachOnce(tag);
            return;
        }
        std::string name = takeName();
        skipBlanks();
        if (!takeSign("=")) {
            fail("'=' is missing");
        }
        std::string value = takeValue();
        tag.attributes.push_back({std::move(name), std::move(value)});
    }
}

XmlTag XmlScanner::next() {
    if (closesAtOnce_) {
        closesAtOnce_ = false;
        XmlTag end{XmlTag::Kind::End, open_.back(), {}};
        open_.pop_back();
        return end;
    }
    for (;;) {
        const std::size_t found = text_.find('<', position_);
        if (found == std::string_view::npos) {
            if (!open_.empty()) {
                fail("the end of '" + open_.back() + "' is missing");
            }
            return {};
        }
        position_ = found + 1;
        if (takeSign("!--")) {
            skipTo("-->");
        } else if (takeSign("![CDATA[")) {
            skipTo("]]>");
        } else if (takeSign("?")) {
            skipTo("?>");
        } else if (takeSign("!")) {
            skipDeclaration();
        } else {
            break;
        }
    }
    if (takeSign("/")) {
        XmlTag end{XmlTag::Kind::End, takeName(), {}};
        skipBlanks();
        if (!takeSign(">") || open_.empty() || open_.back() != end.name) {
            fail("'" + end.name + "' ends what has not begun");
        }
        open_.pop_back();
        return end;
    }
    XmlTag begin{XmlTag::Kind::Begin, takeName(), {}};
    if (open_.size() == kDeepestElements) {
        fail("elements stand too deep in each other");
    }
    open_.push_back(begin.name);
    takeAttributes(begin);
    return begin;
}

std::string xmlEscaped(std::string_view utf8, std::string_view what) {
    std::string text;
    text.reserve(utf8.size());
    for (const char letter : utf8) {
        switch (letter) {
            case '<':
                text += "&lt;";
                break;
            case '>':
                text += "&gt;";
                break;
            case '&':
                text += "&amp;";
                break;
            case '\'':
                text += "&apos;";
                break;
            case '"':
                text += "&quot;";
                break;
            case '\t':
            case '\n':
            case '\r':
                text += "&#" + plain::text(static_cast<int>(letter)) + ";";
                break;
            default:
                if (static_cast<unsigned char>(letter) < 0x20) {
                    fail::invalidArgument("The field '" + std::string(what) +
                                          "' holds a control character, which XML cannot hold.");
                }
                text += letter;
        }
    }
    return text;
}

bool isXmlName(std::string_view utf8) noexcept {
    return !utf8.empty() && isNameStart(utf8.front()) && std::ranges::all_of(utf8, [](char letter) {
        return isNameStart(letter) || (letter >= '0' && letter <= '9') || letter == '-' ||
               letter == '.';
    });
}

}  // namespace kap::ado::persist
