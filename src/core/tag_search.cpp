#include "core/tag_search.hpp"

#include <algorithm>
#include <cstddef>

#include <kaputil/automation/error.hpp>

namespace kap::tagsearch {
namespace {

constexpr std::size_t kAbsent = std::u16string_view::npos;

std::u16string tagText(std::u16string_view start, std::u16string_view name) {
    std::u16string tag(start);
    tag += name;
    tag += u'>';
    return tag;
}

// A name's two tags and where each first occurs.
struct Search {
    Search(std::u16string_view text, std::u16string_view name)
        : opening(tagText(u"<", name)),
          closing(tagText(u"</", name)),
          openingAt(text.find(opening)),
          closingAt(text.find(closing)) {}

    std::u16string opening;
    std::u16string closing;
    std::size_t openingAt;
    std::size_t closingAt;
};

std::u16string replaceAll(std::u16string_view text, std::u16string_view wanted,
                          std::u16string_view replacement) {
    std::u16string out;
    std::size_t from = 0;
    for (std::size_t at = text.find(wanted); at != kAbsent; at = text.find(wanted, from)) {
        out += text.substr(from, at - from);
        out += replacement;
        from = at + wanted.size();
    }
    out += text.substr(from);
    return out;
}

}  // namespace

std::optional<std::u16string> read(std::u16string_view text, std::u16string_view name) {
    const Search found(text, name);
    if (found.openingAt == kAbsent) {
        return std::nullopt;
    }
    const std::size_t start = found.openingAt + found.opening.size();
    if (found.closingAt == kAbsent || found.closingAt < start) {
        throw AutomationError(errors::kInvalidArgument);
    }
    return std::u16string(text.substr(start, found.closingAt - start));
}

std::u16string write(std::u16string_view text, std::u16string_view name,
                     std::u16string_view value) {
    const Search found(text, name);
    std::u16string filled = found.opening;
    filled += value;
    filled += found.closing;
    if (found.openingAt == kAbsent) {
        return std::u16string(text) + filled;
    }
    if (found.closingAt == kAbsent) {
        throw AutomationError(errors::kInvalidArgument);
    }
    std::u16string emptied(text.substr(0, found.openingAt + found.opening.size()));
    emptied += text.substr(found.closingAt);
    return replaceAll(emptied, found.opening + found.closing, filled);
}

std::u16string erase(std::u16string_view text, std::u16string_view name) {
    const Search found(text, name);
    if (found.openingAt == kAbsent) {
        return std::u16string(text);
    }
    // Positions count from 1 and an absent tag is at position 0: the rest then begins at position
    // "length of the closing tag", which is one less counted from 0.
    const std::size_t rest =
        (found.closingAt == kAbsent ? 0 : found.closingAt + 1) + found.closing.size() - 1;
    std::u16string out(text.substr(0, found.openingAt));
    out += text.substr(std::min(rest, text.size()));
    return out;
}

}  // namespace kap::tagsearch
