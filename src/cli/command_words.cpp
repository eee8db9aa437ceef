#include "cli/command_words.hpp"

#include <cstddef>
#include <string_view>
#include <utility>

namespace kap::cli {
namespace {

// A dash alone, or in front of a number, begins no option.
bool looksLikeAnOption(std::string_view word) {
    constexpr std::string_view kNumberStart = "0123456789.,";
    return word.size() > 1 && word[0] == '-' &&
           kNumberStart.find(word[1]) == std::string_view::npos;
}

bool takesTheNextWord(const CLI::App& command, const std::string& word) {
    const CLI::Option* option = command.get_option_no_throw(word);
    return option != nullptr && option->get_items_expected_max() > 0;
}

}  // namespace

std::vector<std::string> takeWords(const CLI::App& command, std::vector<std::string>& arguments) {
    std::vector<std::string> words;
    std::vector<std::string> options;
    bool wordsOnly = false;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        std::string& argument = arguments[i];
        if (!wordsOnly && argument == "--") {
            wordsOnly = true;
        } else if (wordsOnly || !looksLikeAnOption(argument)) {
            words.push_back(std::move(argument));
        } else {
            const bool withNext = takesTheNextWord(command, argument) && i + 1 < arguments.size();
            options.push_back(std::move(argument));
            if (withNext) {
                options.push_back(std::move(arguments[++i]));
            }
        }
    }
    arguments = std::move(options);
    return words;
}

}  // namespace kap::cli
