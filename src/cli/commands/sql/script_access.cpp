#include "cli/commands/sql/script_access.hpp"

#include <algorithm>
#include <cstddef>
#include <string>

#include "base/ascii.hpp"

namespace kap::cli {
namespace {

// The words of a script, without its texts, quoted names and comments.
class ScriptWords {
public:
    explicit ScriptWords(std::string_view script) : rest_(script) {}

    // The next one in upper case; empty at the end.
    std::string next() {
        while (!rest_.empty()) {
            const std::size_t length = wordLength();
            if (length > 0) {
                std::string word = asciiUpper(rest_.substr(0, length));
                rest_.remove_prefix(length);
                return word;
            }
            rest_.remove_prefix(std::min(skipped(), rest_.size()));
        }
        return {};
    }

private:
    static bool isInWord(char unit) {
        return isAsciiLetter(unit) || isAsciiDigit(unit) || unit == '_' || unit == '@' ||
               unit == '#' || static_cast<unsigned char>(unit) >= 0x80;
    }

    [[nodiscard]] std::size_t wordLength() const {
        const auto end = std::ranges::find_if_not(rest_, &ScriptWords::isInWord);
        return static_cast<std::size_t>(end - rest_.begin());
    }

    // A missing end is the statement's error: the text goes to the script's end.
    [[nodiscard]] std::size_t through(std::string_view end, std::size_t from) const {
        const std::size_t found = rest_.find(end, from);
        return found == std::string_view::npos ? rest_.size() : found + end.size();
    }

    [[nodiscard]] std::size_t skipped() const {
        switch (rest_.front()) {
            case '\'':
                return through("'", 1);
            case '"':
                return through("\"", 1);
            case '[':
                return through("]", 1);
            default:
                break;
        }
        if (rest_.starts_with("--")) {
            return through("\n", 2);
        }
        return rest_.starts_with("/*") ? through("*/", 2) : 1;
    }

    std::string_view rest_;
};

bool makes(const std::string& word, const std::string& before) {
    if (word == "INTO") {
        return before != "INSERT" && before != "MERGE";
    }
    return word == "CREATE" || word == "EXEC" || word == "EXECUTE" || word == "CALL" ||
           word == "RESTORE" || word.starts_with("SP_") || word.starts_with("XP_");
}

}  // namespace

Access accessOf(std::string_view script) {
    ScriptWords words(script);
    std::string before;
    for (std::string word = words.next(); !word.empty(); word = words.next()) {
        if (makes(word, before)) {
            return Access::Making;
        }
        before = word;
    }
    return Access::Changing;
}

}  // namespace kap::cli
