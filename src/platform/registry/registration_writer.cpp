#include <array>

#include "base/hexadecimal.hpp"
#include "platform/registry/registration_text.hpp"

namespace kap::platform::registry {
namespace {

constexpr std::size_t kBytesInALine = 25;

std::u16string hexText(std::uint32_t number, std::size_t digits) {
    const std::string text = hex::ofNumber(number, hex::Case::Lower, digits);
    return {text.begin(), text.end()};
}

std::u16string shortHex(std::uint32_t number) {
    return hexText(number, 1);
}

std::u16string quoted(std::u16string_view text) {
    std::u16string out = u"\"";
    for (const char16_t unit : text) {
        if (unit == u'"' || unit == u'\\') {
            out.push_back(u'\\');
        }
        out.push_back(unit);
    }
    out.push_back(u'"');
    return out;
}

std::u16string nameText(std::u16string_view name) {
    return name.empty() ? u"@" : quoted(name);
}

// Whether a text stands between quotes and comes back the same: one NUL behind it, none in it, one
// line, and characters that every encoding carries.
bool isPlainText(const Value& value) {
    if (value.type != kText || value.data.size() < 2 || value.data.size() % 2 != 0) {
        return false;
    }
    const String text = textOf(value);
    return value == textValue(text) && unicode::utf8(text).has_value() &&
           text.view().find_first_of(std::u16string_view(u"\r\n\0", 3)) ==
               std::u16string_view::npos;
}

std::u16string bytesText(const Value& value) {
    constexpr std::uint32_t kBinary = 3;
    std::u16string text = value.type == kBinary ? u"hex:" : u"hex(" + shortHex(value.type) + u"):";
    for (std::size_t i = 0; i < value.data.size(); ++i) {
        if (i > 0) {
            text += i % kBytesInALine == 0 ? u",\\\n  " : u",";
        }
        text += hexText(value.data[i], 2);
    }
    return text;
}

std::u16string valueText(const Value& value) {
    constexpr std::size_t kNumberSize = 4;
    if (isPlainText(value)) {
        return quoted(textOf(value));
    }
    if (value.type == kNumber && value.data.size() == kNumberSize) {
        return u"dword:" + hexText(static_cast<std::uint32_t>(numberOf(value)), 8);
    }
    return bytesText(value);
}

void write(const Tree::Key& key, std::u16string& text) {
    text += u"\n" + key.comment + u"[" + key.path + u"]\n";
    for (const Tree::Entry& entry : key.values) {
        text += entry.comment + nameText(entry.name) + u"=" + valueText(entry.value) + u"\n";
    }
}

}  // namespace

std::u16string textOf(const Tree& tree, std::u16string_view below) {
    std::u16string text = u"Windows Registry Editor Version 5.00\n";
    for (const Tree::Key& key : tree.keys()) {
        if (below.empty() || isWithin(key.path, below)) {
            write(key, text);
        }
    }
    if (below.empty() && !tree.trailingComment.empty()) {
        text += u"\n" + tree.trailingComment;
    }
    return text;
}

}  // namespace kap::platform::registry
