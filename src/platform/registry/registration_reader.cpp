#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include <kaputil/automation/error.hpp>

#include "base/code_page.hpp"
#include "base/hexadecimal.hpp"
#include "platform/registry/registration_text.hpp"
#include "platform/text_encoding.hpp"

namespace kap::platform::registry {
namespace {

constexpr std::u16string_view kHeading = u"Windows Registry Editor Version 5.00";
// The older form: code page 1252 throughout, also in the bytes of texts.
constexpr std::u16string_view kOldHeading = u"REGEDIT4";

constexpr std::uint32_t kPlainHexType = 3;

bool isBlank(char16_t unit) {
    return unit == u' ' || unit == u'\t';
}

std::u16string_view trimmed(std::u16string_view text) {
    while (!text.empty() && isBlank(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && isBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

// The texts among the types, whose bytes the older form writes in its code page: plain, with
// variables, several.
bool isTextType(std::uint32_t type) {
    constexpr std::uint32_t kExpanded = 2;
    constexpr std::uint32_t kSeveral = 7;
    return type == kText || type == kExpanded || type == kSeveral;
}

class Reader {
public:
    Reader(std::string_view bytes, Tree& tree) : tree_(tree) {
        text_ = decodeText(encodingOf(bytes), bytes);
    }

    void read() {
        readHeading();
        std::u16string comment;
        while (!atEnd()) {
            const std::u16string_view line = nextLine();
            if (line.empty() || line.starts_with(u';')) {
                comment += std::u16string(line) + u'\n';
            } else if (line.starts_with(u'[')) {
                readKey(line, std::exchange(comment, {}));
            } else {
                readValue(line, std::exchange(comment, {}));
            }
        }
        tree_.trailingComment += withoutEmptyLines(comment);
    }

private:
    [[noreturn]] void refuse(const char* reason) const { throw MalformedText(number_, reason); }

    [[nodiscard]] bool atEnd() const { return position_ >= text_.size(); }

    std::u16string_view nextLine() {
        const std::u16string_view rest = std::u16string_view(text_).substr(position_);
        const std::size_t length = std::min(rest.find(u'\n'), rest.size());
        position_ += length + 1;
        ++number_;
        std::u16string_view line = rest.substr(0, length);
        if (line.ends_with(u'\r')) {
            line.remove_suffix(1);
        }
        return trimmed(line);
    }

    void readHeading() {
        std::u16string_view line;
        while (line.empty() && !atEnd()) {
            line = nextLine();
        }
        old_ = line == kOldHeading;
        if (!old_ && line != kHeading) {
            refuse("the text does not begin like a registration text");
        }
    }

    // Empty lines part keys; they are written anew.
    static std::u16string withoutEmptyLines(std::u16string_view comment) {
        std::u16string kept;
        while (!comment.empty()) {
            const std::size_t length = comment.find(u'\n') + 1;
            if (length > 1) {
                kept += comment.substr(0, length);
            }
            comment.remove_prefix(length);
        }
        return kept;
    }

    void readKey(std::u16string_view line, const std::u16string& comment) {
        if (!line.ends_with(u']')) {
            refuse("the name of a key is not closed by ]");
        }
        line = line.substr(1, line.size() - 2);
        const bool removing = line.starts_with(u'-');
        const std::u16string path = pathOf(removing ? line.substr(1) : line);
        if (removing) {
            tree_.remove(path);
            key_.clear();
            removed_ = true;
            return;
        }
        tree_.createLast(path).comment += withoutEmptyLines(comment);
        key_ = path;
        removed_ = false;
    }

    [[nodiscard]] std::u16string pathOf(std::u16string_view path) const {
        try {
            return normalPath(path);
        } catch (const AutomationError& error) {
            refuse(error.what());
        }
    }

    void checkName(std::u16string_view name) const {
        try {
            checkValueName(name);
        } catch (const AutomationError& error) {
            refuse(error.what());
        }
    }

    void readValue(std::u16string_view line, const std::u16string& comment) {
        if (key_.empty()) {
            refuse(removed_ ? "a value follows a key that is removed" : "a value has no key");
        }
        const std::u16string name = takeName(line);
        checkName(name);
        line = trimmed(line);
        if (!line.starts_with(u'=')) {
            refuse("= is missing behind the name of a value");
        }
        line = trimmed(line.substr(1));
        Tree::Key& key = *tree_.find(key_);
        if (line == u"-") {
            std::erase_if(key.values, [&](const Tree::Entry& entry) {
                return unicode::sameName(entry.name, name);
            });
            return;
        }
        putValue(key, name, valueOf(line)).comment += withoutEmptyLines(comment);
    }

    // Takes the name in front of '='; @ is the unnamed value.
    std::u16string takeName(std::u16string_view& line) const {
        if (line.starts_with(u'@')) {
            line.remove_prefix(1);
            return {};
        }
        if (!line.starts_with(u'"')) {
            refuse("a line is no key, value or comment");
        }
        return takeQuoted(line);
    }

    // Takes a text in quotes, in which '\' stands before a quote and before itself.
    std::u16string takeQuoted(std::u16string_view& line) const {
        std::u16string text;
        for (std::size_t i = 1; i < line.size(); ++i) {
            if (line[i] == u'"') {
                line.remove_prefix(i + 1);
                return text;
            }
            if (line[i] == u'\\' && i + 1 < line.size()) {
                ++i;
            }
            text.push_back(line[i]);
        }
        refuse("a quote is not closed");
    }

    Value valueOf(std::u16string_view line) {
        if (line.starts_with(u'"')) {
            Value value = textValue(takeQuoted(line));
            if (!trimmed(line).empty() && !trimmed(line).starts_with(u';')) {
                refuse("something follows a value");
            }
            return value;
        }
        const std::size_t colon = line.find(u':');
        const std::u16string kind =
            unicode::lower(trimmed(line.substr(0, std::min(colon, line.size()))));
        if (colon == std::u16string_view::npos) {
            refuse("a value is no text, number or bytes");
        }
        line = trimmed(line.substr(colon + 1));
        if (kind == u"dword") {
            return numberValue(static_cast<std::int32_t>(hexNumber(line)));
        }
        if (kind == u"hex") {
            return bytesOf(kPlainHexType, line);
        }
        if (kind.starts_with(u"hex(") && kind.ends_with(u")")) {
            return bytesOf(hexNumber(std::u16string_view(kind).substr(4, kind.size() - 5)), line);
        }
        refuse("a value is no text, number or bytes");
    }

    [[nodiscard]] std::uint32_t hexNumber(std::u16string_view digits) const {
        constexpr std::size_t kMost = 8;
        std::uint32_t number = 0;
        if (digits.empty() || digits.size() > kMost) {
            refuse("a number is not one to eight hexadecimal digits");
        }
        for (const char16_t unit : digits) {
            const int digit = hex::valueOf(unit);
            if (digit < 0) {
                refuse("a number is not one to eight hexadecimal digits");
            }
            number = number * 16 + static_cast<std::uint32_t>(digit);
        }
        return number;
    }

    // Bytes in pairs of digits with commas between; '\' at the end of a line goes on in the next.
    Value bytesOf(std::uint32_t type, std::u16string_view line) {
        std::u16string digits(line);
        while (digits.ends_with(u'\\') && !atEnd()) {
            digits.pop_back();
            digits += nextLine();
        }
        Value value{type, {}};
        std::u16string_view rest = trimmed(digits);
        while (!rest.empty()) {
            const std::size_t length = std::min(rest.find(u','), rest.size());
            value.data.push_back(oneByte(trimmed(rest.substr(0, length))));
            rest.remove_prefix(std::min(length + 1, rest.size()));
        }
        return old_ && isTextType(type) ? widened(value) : value;
    }

    [[nodiscard]] std::uint8_t oneByte(std::u16string_view digits) const {
        if (digits.empty() || digits.size() > 2) {
            refuse("a byte is not one or two hexadecimal digits");
        }
        return static_cast<std::uint8_t>(hexNumber(digits));
    }

    static Value widened(const Value& value) {
        const std::string narrow(value.data.begin(), value.data.end());
        const std::string wide = utf16Bytes(decode(CodePage::Windows1252, narrow));
        return {value.type, {wide.begin(), wide.end()}};
    }

    Tree& tree_;
    std::u16string text_;
    std::size_t position_ = 0;
    std::size_t number_ = 0;  // of the line read last, from 1
    bool old_ = false;
    std::u16string key_;  // empty: values have no place
    bool removed_ = false;
};

}  // namespace

void applyText(std::string_view bytes, Tree& tree) {
    Reader(bytes, tree).read();
}

}  // namespace kap::platform::registry
