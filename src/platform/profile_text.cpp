#include "platform/profile_text.hpp"

#include <algorithm>
#include <utility>

#include "base/unicode.hpp"

namespace kap::platform {
namespace {

constexpr std::u16string_view kBlanks = u" \t\r\n\v\f";

std::u16string_view trimmed(std::u16string_view text) {
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::u16string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::vector<std::u16string> linesOf(std::u16string_view text) {
    std::vector<std::u16string> lines;
    while (!text.empty()) {
        const std::size_t length = std::min(text.find(u'\n'), text.size() - 1) + 1;
        lines.emplace_back(text.substr(0, length));
        text.remove_prefix(length);
    }
    return lines;
}

// As the file's first line ends; a new file gets the platform's CR LF.
std::u16string lineEndOf(const std::vector<std::u16string>& lines) {
    const bool plain =
        !lines.empty() && lines.front().ends_with(u'\n') && !lines.front().ends_with(u"\r\n");
    return plain ? u"\n" : u"\r\n";
}

// The name of the section that a line begins; nullopt for any other line, also for a bracket that
// is never closed.
std::optional<std::u16string_view> headingOf(std::u16string_view line) {
    line = trimmed(line);
    const std::size_t end = line.rfind(u']');
    if (!line.starts_with(u'[') || end == std::u16string_view::npos) {
        return std::nullopt;
    }
    return trimmed(line.substr(1, end - 1));
}

// Where the value of a key's line begins, behind '='; nullopt for comments and other lines.
std::optional<std::size_t> valuePosition(std::u16string_view line) {
    const std::size_t equals = line.find(u'=');
    if (equals == std::u16string_view::npos || trimmed(line).starts_with(u';')) {
        return std::nullopt;
    }
    return equals + 1;
}

std::u16string_view withoutQuotes(std::u16string_view value) {
    const bool quoted = value.size() >= 2 && value.front() == value.back() &&
                        (value.front() == u'"' || value.front() == u'\'');
    return quoted ? value.substr(1, value.size() - 2) : value;
}

bool isOneLine(std::u16string_view text) {
    return text.find_first_of(std::u16string_view(u"\r\n\0", 3)) == std::u16string_view::npos;
}

bool canBeSection(std::u16string_view name) {
    return !name.empty() && isOneLine(name);
}

bool canBeKey(std::u16string_view name) {
    return !name.empty() && isOneLine(name) && name.find(u'=') == std::u16string_view::npos &&
           !name.starts_with(u';') && !name.starts_with(u'[');
}

std::u16string keyLine(std::u16string_view key, std::u16string_view value) {
    return std::u16string(key) + u'=' + std::u16string(value);
}

}  // namespace

ProfileText::ProfileText(std::string_view bytes)
    : encoding_(sharedEncodingOf(bytes)), lines_(linesOf(decodeText(encoding_, bytes))) {
    lineEnd_ = lineEndOf(lines_);
}

std::optional<ProfileText::Extent> ProfileText::find(std::u16string_view section) const {
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        const auto heading = headingOf(lines_[i]);
        if (!heading || !unicode::sameName(*heading, section)) {
            continue;
        }
        std::size_t end = i + 1;
        while (end < lines_.size() && !headingOf(lines_[end])) {
            ++end;
        }
        return Extent{i + 1, end};
    }
    return std::nullopt;
}

std::optional<std::size_t> ProfileText::findKey(Extent section, std::u16string_view key) const {
    for (std::size_t i = section.first; i < section.end; ++i) {
        const std::u16string_view line = lines_[i];
        const auto position = valuePosition(line);
        if (position && unicode::sameName(trimmed(line.substr(0, *position - 1)), key)) {
            return i;
        }
    }
    return std::nullopt;
}

std::optional<std::u16string> ProfileText::value(std::u16string_view section,
                                                 std::u16string_view key) const {
    key = trimmed(key);
    const auto extent = find(trimmed(section));
    const auto found = extent && !key.empty() ? findKey(*extent, key) : std::nullopt;
    if (!found) {
        return std::nullopt;
    }
    const std::u16string_view line = lines_[*found];
    return std::u16string(withoutQuotes(trimmed(line.substr(*valuePosition(line)))));
}

bool ProfileText::put(std::u16string_view section, std::u16string_view key,
                      std::u16string_view value) {
    section = trimmed(section);
    key = trimmed(key);
    if (!canBeSection(section) || !canBeKey(key) || !isOneLine(value)) {
        return false;
    }
    const auto extent = find(section);
    if (!extent) {
        appendSection(section, keyLine(key, value));
        return true;
    }
    const auto found = findKey(*extent, key);
    if (!found) {
        append(*extent, keyLine(key, value));
        return true;
    }
    std::u16string& line = lines_[*found];
    const std::size_t end = line.find_last_not_of(u"\r\n") + 1;
    const std::size_t begin = std::min(line.find_first_not_of(u" \t", *valuePosition(line)), end);
    line.replace(begin, end - begin, value);
    return true;
}

// Behind the last key of the section: what follows may be about the next one.
void ProfileText::append(Extent section, std::u16string line) {
    std::size_t position = section.end;
    while (position > section.first && !valuePosition(lines_[position - 1])) {
        --position;
    }
    if (position == lines_.size()) {
        endLastLine();
    }
    lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(position),
                  std::move(line) + lineEnd_);
}

void ProfileText::appendSection(std::u16string_view section, std::u16string_view line) {
    endLastLine();
    lines_.push_back(u"[" + std::u16string(section) + u"]" + lineEnd_);
    lines_.push_back(std::u16string(line) + lineEnd_);
}

void ProfileText::endLastLine() {
    if (!lines_.empty() && !lines_.back().ends_with(u'\n')) {
        lines_.back() += lineEnd_;
    }
}

std::optional<std::string> ProfileText::bytes() const {
    std::u16string text;
    for (const std::u16string& line : lines_) {
        text += line;
    }
    auto bytes = encodeText(encoding_, text);
    // The letters of a mark at the beginning would make it another encoding's.
    const bool readsTheSame = bytes && decodeText(sharedEncodingOf(*bytes), *bytes) == text;
    return readsTheSame ? std::move(bytes) : std::nullopt;
}

}  // namespace kap::platform
