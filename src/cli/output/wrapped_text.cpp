#include "cli/output/wrapped_text.hpp"

#include "cli/output/shown_text.hpp"

namespace kap::cli {
namespace {

// However narrow the screen, a line takes some words.
constexpr std::size_t kNarrowest = 20;

}  // namespace

std::string wrappedBehind(std::string_view utf8, std::size_t indent, std::size_t width) {
    const std::size_t room = width > indent + kNarrowest ? width - indent : kNarrowest;
    std::string out;
    std::size_t used = 0;
    while (!utf8.empty()) {
        const std::size_t end = utf8.find(' ');
        const std::string_view word = utf8.substr(0, end);
        utf8.remove_prefix(end == std::string_view::npos ? utf8.size() : end + 1);
        const std::size_t columns = columnsOf(word);
        if (used != 0 && width != 0 && used + 1 + columns > room) {
            out += '\n' + std::string(indent, ' ');
            used = 0;
        } else if (used != 0) {
            out += ' ';
            ++used;
        }
        out += word;
        used += columns;
    }
    return out + '\n';
}

std::string wrapped(std::string_view utf8, std::size_t indent, std::size_t width) {
    return std::string(indent, ' ') + wrappedBehind(utf8, indent, width);
}

}  // namespace kap::cli
