#include "cli/command.hpp"

#include <algorithm>
#include <utility>

namespace kap::cli {

std::function<std::string(const std::string&)> oneOf(std::vector<std::string> words) {
    return [words = std::move(words)](const std::string& given) -> std::string {
        if (std::ranges::find(words, given) != words.end()) {
            return {};
        }
        std::string all;
        for (const std::string& word : words) {
            all += (all.empty() ? "" : ", ") + word;
        }
        return "\"" + given + "\" is none of " + all;
    };
}

}  // namespace kap::cli
