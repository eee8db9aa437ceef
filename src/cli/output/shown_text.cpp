#include "cli/output/shown_text.hpp"

#include "base/character_width.hpp"

namespace kap::cli {
namespace {

// U+2400 and on hold a picture for each control character from 0.
void appendPicture(std::string& out, unsigned char control) {
    constexpr unsigned char kDelete = 0x7F;
    const unsigned picture = control == kDelete ? 0x21U : control;
    out += "\xE2\x90";
    out.push_back(static_cast<char>(0x80U + picture));
}

}  // namespace

std::string shownText(std::string_view utf8) {
    std::string out;
    out.reserve(utf8.size());
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        const auto unit = static_cast<unsigned char>(utf8[i]);
        const bool second = i + 1 < utf8.size();
        if (unit < 0x20 || unit == 0x7F) {
            appendPicture(out, unit);
        } else if (unit == 0xC2 && second && static_cast<unsigned char>(utf8[i + 1]) < 0xA0) {
            out += "\xEF\xBF\xBD";  // U+0080 to U+009F have no picture
            ++i;
        } else {
            out.push_back(utf8[i]);
        }
    }
    return out;
}

std::size_t columnsOf(std::string_view utf8) noexcept {
    std::size_t columns = 0;
    while (!utf8.empty()) {
        const unicode::MeasuredCharacter character = unicode::firstCharacter(utf8);
        columns += character.columns;
        utf8.remove_prefix(character.bytes);
    }
    return columns;
}

std::string cutTo(std::string_view utf8, std::size_t columns) {
    if (columnsOf(utf8) <= columns) {
        return std::string(utf8);
    }
    std::size_t end = 0;
    for (std::size_t used = 0;;) {
        const unicode::MeasuredCharacter character = unicode::firstCharacter(utf8.substr(end));
        used += character.columns;
        if (used > columns - 1) {
            return std::string(utf8.substr(0, end)) + "…";
        }
        end += character.bytes;
    }
}

std::string padded(std::string_view utf8, std::size_t columns) {
    const std::size_t used = columnsOf(utf8);
    return std::string(utf8) + std::string(columns > used ? columns - used : 0, ' ');
}

std::string rightAligned(std::string_view utf8, std::size_t columns) {
    const std::size_t used = columnsOf(utf8);
    return std::string(columns > used ? columns - used : 0, ' ') + std::string(utf8);
}

}  // namespace kap::cli
