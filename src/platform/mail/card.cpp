#include "platform/mail/card.hpp"

#include <algorithm>
#include <utility>

#include "base/unicode.hpp"
#include "platform/paths.hpp"
#include "platform/random_name.hpp"
#include "platform/text_encoding.hpp"

namespace kap::platform::mail {
namespace {

constexpr std::size_t kLongestLine = 75;

// Names of properties and types are ASCII.
char upperLetter(char unit) {
    return unit >= 'a' && unit <= 'z' ? static_cast<char>(unit - 'a' + 'A') : unit;
}

bool sameWord(std::string_view left, std::string_view right) {
    return std::ranges::equal(left, right, {}, upperLetter, upperLetter);
}

bool containsWord(std::string_view text, std::string_view word) {
    const auto same = [](char left, char right) { return upperLetter(left) == upperLetter(right); };
    return std::search(text.begin(), text.end(), word.begin(), word.end(), same) != text.end();
}

// A line taken apart: "item1.TEL;TYPE=home:0541 123456".
struct Line {
    std::string_view head;  // everything in front of the value and its colon
    std::string_view name;
    std::string_view parameters;
    std::string_view value;
    bool isProperty = false;  // there is a colon: other lines are left alone
};

Line takeApart(std::string_view line) {
    bool quoted = false;
    std::size_t colon = 0;
    while (colon < line.size() && (quoted || line[colon] != ':')) {
        quoted = quoted != (line[colon] == '"');
        ++colon;
    }
    Line parts;
    parts.head = line.substr(0, colon);
    parts.value = line.substr(std::min(colon + 1, line.size()));
    parts.isProperty = colon < line.size();
    const std::size_t semicolon = std::min(parts.head.find(';'), parts.head.size());
    parts.name = parts.head.substr(0, semicolon);
    parts.parameters = parts.head.substr(semicolon);
    const std::size_t group = parts.name.find('.');
    if (group != std::string_view::npos) {
        parts.name.remove_prefix(group + 1);
    }
    return parts;
}

// In values a backslash stands before what would end a part of them.
std::string escaped(std::string_view text) {
    std::string out;
    for (const char unit : text) {
        if (unit == '\n') {
            out += "\\n";
        } else if (unit != '\r') {
            if (unit == '\\' || unit == ',' || unit == ';') {
                out.push_back('\\');
            }
            out.push_back(unit);
        }
    }
    return out;
}

std::string unescaped(std::string_view value) {
    std::string out;
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (value[i] != '\\' || i + 1 == value.size()) {
            out.push_back(value[i]);
            continue;
        }
        ++i;
        out.push_back(value[i] == 'n' || value[i] == 'N' ? '\n' : value[i]);
    }
    return out;
}

// The parts between the semicolons of a value, as they stand.
std::vector<std::string> componentsOf(std::string_view value) {
    std::vector<std::string> components(1);
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (value[i] == ';') {
            components.emplace_back();
            continue;
        }
        components.back().push_back(value[i]);
        if (value[i] == '\\') {
            // One at the very end, which stands before nothing, is meant as itself.
            components.back().push_back(i + 1 < value.size() ? value[++i] : '\\');
        }
    }
    return components;
}

std::string joined(const std::vector<std::string>& components) {
    std::string value;
    for (std::size_t i = 0; i < components.size(); ++i) {
        value += (i > 0 ? ";" : "") + components[i];
    }
    return value;
}

bool isBlank(const std::vector<std::string>& components) {
    return std::ranges::all_of(components, &std::string::empty);
}

// Folds a line without cutting a character.
std::string folded(std::string_view line) {
    std::string out;
    std::size_t room = kLongestLine;
    while (line.size() > room) {
        std::size_t cut = room;
        while (cut > 1 && (static_cast<unsigned char>(line[cut]) & 0xC0U) == 0x80U) {
            --cut;
        }
        out.append(line.substr(0, cut)).append("\r\n ");
        line.remove_prefix(cut);
        room = kLongestLine - 1;  // the blank counts
    }
    return out.append(line).append("\r\n");
}

std::vector<std::string> unfoldedLines(std::string_view text) {
    std::vector<std::string> lines;
    while (!text.empty()) {
        const std::size_t length = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, length);
        text.remove_prefix(std::min(length + 1, text.size()));
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        if (!lines.empty() && (line.starts_with(' ') || line.starts_with('\t'))) {
            lines.back() += line.substr(1);
        } else if (!line.empty()) {  // empty ones mean nothing
            lines.emplace_back(line);
        }
    }
    return lines;
}

}  // namespace

Card::Card()
    : lines_({"BEGIN:VCARD", "VERSION:4.0", "UID:urn:uuid:" + randomUuid(), "FN:", "END:VCARD"}) {}

std::optional<Card> Card::read(std::string_view bytes) {
    const auto utf8 = unicode::utf8(decodeText(encodingOf(bytes), bytes));
    if (!utf8) {
        return std::nullopt;
    }
    Card card(unfoldedLines(*utf8));
    if (card.lines_.empty() || !sameWord(card.lines_.front(), "BEGIN:VCARD") ||
        card.end() == card.lines_.size()) {
        return std::nullopt;
    }
    return card;
}

Card::Place Card::placeOf(ContactField field) {
    switch (field) {
        case ContactField::CustomerId:
            return {"X-KAPUTIL-CUSTOMERID", "", "", {}};
        case ContactField::Email:
            return {"EMAIL", "", "", {}};
        case ContactField::FirstName:
            return {"N", "", "", 1};
        case ContactField::LastName:
            return {"N", "", "", 0};
        case ContactField::Company:
            return {"ORG", "", "", 0};
        case ContactField::HomePhone:
            return {"TEL", ";TYPE=home", "home", {}};
        case ContactField::HomeAddress:
            return {"ADR", ";TYPE=home", "home", 2};
        case ContactField::GovernmentId:
            return {"X-KAPUTIL-GOVERNMENTID", "", "", {}};
        case ContactField::FileAs:
            break;
    }
    return {"FN", "", "", {}};
}

// The line that ends the first card of the file.
std::size_t Card::end() const {
    const auto found = std::ranges::find_if(
        lines_, [](const std::string& line) { return sameWord(line, "END:VCARD"); });
    return static_cast<std::size_t>(found - lines_.begin());
}

std::optional<std::size_t> Card::find(const Place& place) const {
    for (std::size_t i = 0; i < end(); ++i) {
        const Line line = takeApart(lines_[i]);
        if (line.isProperty && sameWord(line.name, place.property) &&
            (place.type.empty() || containsWord(line.parameters, place.type))) {
            return i;
        }
    }
    return std::nullopt;
}

String Card::get(ContactField field) const {
    const Place place = placeOf(field);
    const auto found = find(place);
    if (!found) {
        return {};
    }
    const std::string_view value = takeApart(lines_[*found]).value;
    if (!place.component) {
        return unescaped(value);
    }
    const std::vector<std::string> components = componentsOf(value);
    return *place.component < components.size() ? unescaped(components[*place.component])
                                                : std::string();
}

void Card::put(ContactField field, const String& text) {
    const Place place = placeOf(field);
    const std::string value = escaped(text.utf8());
    const auto found = find(place);
    std::vector<std::string> components = {value};
    if (place.component) {
        components = componentsOf(found ? takeApart(lines_[*found]).value : "");
        components.resize(std::max(components.size(), *place.component + 1));
        components[*place.component] = value;
    }
    if (found && isBlank(components)) {
        lines_.erase(lines_.begin() + static_cast<std::ptrdiff_t>(*found));
    } else if (found) {
        lines_[*found] = std::string(takeApart(lines_[*found]).head) + ":" + joined(components);
    } else if (!isBlank(components)) {
        const std::string line = std::string(place.property) + std::string(place.parameters) + ":";
        lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(end()),
                      line + joined(components));
    }
    keepDisplayName();
}

// Every card must have the name it is shown by; one without takes the first that there is.
void Card::keepDisplayName() {
    if (find(placeOf(ContactField::FileAs))) {
        return;
    }
    lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(std::min<std::size_t>(2, end())),
                  "FN:");
}

std::string Card::uid() const {
    const auto found = find({"UID", "", "", {}});
    return found ? std::string(takeApart(lines_[*found]).value) : std::string();
}

std::string Card::bytes() const {
    std::string text;
    for (const std::string& line : lines_) {
        text += folded(line);
    }
    return text;
}

}  // namespace kap::platform::mail
