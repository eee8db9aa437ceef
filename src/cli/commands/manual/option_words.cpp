#include "cli/commands/manual/option_words.hpp"

#include <functional>
#include <string_view>
#include <variant>

#include "base/ascii.hpp"

namespace kap::cli {
namespace {

std::vector<std::string> partsOf(std::string_view text, char mark) {
    std::vector<std::string> parts;
    while (true) {
        const std::size_t end = text.find(mark);
        parts.emplace_back(text.substr(0, end));
        if (end == std::string_view::npos) {
            return parts;
        }
        text.remove_prefix(end + 1);
    }
}

}  // namespace

OptionWords wordsOf(const Option& option) {
    OptionWords words;
    for (std::string& name : partsOf(option.name, ',')) {
        if (name.starts_with('-')) {
            words.names.push_back(std::move(name));
        } else {
            words.place = std::move(name);
        }
    }
    words.takesText = !std::holds_alternative<bool*>(option.target) &&
                      !std::holds_alternative<std::function<void()>>(option.target);
    if (option.placeholder.find('|') != std::string::npos) {
        words.texts = partsOf(option.placeholder, '|');
    }
    const std::string kind = asciiUpper(words.place.empty() ? option.placeholder : words.place);
    words.takesFile = words.takesText && (kind == "F" || kind == "FILE" || kind == "DATABASE");
    words.takesFolder = words.takesText && kind == "FOLDER";
    words.takesClass = words.place == "name";  // only those of the catalogue are so called
    words.takesMember = words.place.starts_with("MEMBER");
    return words;
}

}  // namespace kap::cli
