#include "drivers/odbc/query_analysis.hpp"

#include <algorithm>
#include <array>

#include "base/ascii.hpp"
#include "platform/stack.hpp"
#include "tsql/server_error.hpp"

namespace kap::ado::odbc {
namespace {

// What a text begins with that is worth reading; a long script of writes is not.
bool beginsAsQuery(std::string_view text) {
    const std::size_t start = text.find_first_not_of(" \t\r\n(;");
    if (start == std::string_view::npos) {
        return false;
    }
    const std::string_view word = text.substr(start, 6);
    return equalsIgnoringCase(word, "select") || equalsIgnoringCase(word.substr(0, 4), "with") ||
           word.starts_with("--") || word.starts_with("/*");
}

bool isOfWord(char letter) {
    return isAsciiDigit(letter) || (letter >= 'a' && letter <= 'z') ||
           (letter >= 'A' && letter <= 'Z') || letter == '_' || letter == '@' || letter == '#' ||
           letter == '$' || static_cast<unsigned char>(letter) >= 0x80;
}

// The words of a text, in small letters and in their order, without what is quoted or a comment.
std::vector<std::string> wordsOf(std::string_view text) {
    std::vector<std::string> words;
    for (std::size_t i = 0; i < text.size();) {
        const char letter = text[i];
        const std::string_view rest = text.substr(i);
        if (rest.starts_with("--")) {
            i = std::min(text.find('\n', i), text.size());
        } else if (rest.starts_with("/*")) {
            i = std::min(text.find("*/", i), text.size() - 2) + 2;
        } else if (letter == '\'' || letter == '"' || letter == '[') {
            const std::size_t end = text.find(letter == '[' ? ']' : letter, i + 1);
            i = std::min(end, text.size() - 1) + 1;
        } else if (isOfWord(letter)) {
            const std::size_t start = i;
            while (i < text.size() && isOfWord(text[i])) {
                ++i;
            }
            words.push_back(asciiLower(text.substr(start, i - start)));
        } else {
            ++i;
        }
    }
    return words;
}

// INTO makes a table behind the items of a query, but not where rows go to one that is there, or to
// a variable.
bool makesTable(const std::vector<std::string>& words, std::size_t into) {
    if (into > 0 && (words[into - 1] == "insert" || words[into - 1] == "merge")) {
        return false;
    }
    return into + 1 >= words.size() || !words[into + 1].starts_with('@');
}

bool mayChangeTables(std::string_view text) {
    constexpr std::array<std::string_view, 6> kWords = {"create", "alter", "drop",
                                                        "rename", "exec",  "execute"};
    const std::vector<std::string> words = wordsOf(text);
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (std::ranges::find(kWords, words[i]) != kWords.end() || words[i].starts_with("sp_") ||
            (words[i] == "into" && makesTable(words, i))) {
            return true;
        }
    }
    return false;
}

// Nothing but one statement that reads or writes rows is known to leave nothing.
bool mayLeaveState(std::string_view text, bool isOneQuery) {
    constexpr std::array<std::string_view, 16> kWords = {
        "create", "alter",    "drop", "exec",    "execute",    "declare",  "use",    "begin",
        "commit", "rollback", "open", "waitfor", "set_config", "truncate", "select", "merge"};
    const std::vector<std::string> words = wordsOf(text);
    if (words.empty()) {
        return true;
    }
    const std::string& first = words.front();
    const bool writes = first == "insert" || first == "update" || first == "delete";
    const auto settings = std::ranges::count(words, "set");
    if ((!isOneQuery && !writes) || settings > (first == "update" ? 1 : 0)) {
        return true;
    }
    return std::ranges::any_of(words, [&](const std::string& word) {
        const bool known = std::ranges::find(kWords, word) != kWords.end();
        return word.starts_with('#') || word.starts_with("pg_advisory") ||
               word.starts_with("pg_try_advisory") || word.starts_with("sp_") ||
               (known && !(isOneQuery && word == "select"));
    });
}

// What must be alone or the first in its text has another word at its beginning, or asks for plans.
// What asks for the last statement's outcome means that of the text before.
bool mayFollowQuery(std::string_view text) {
    constexpr std::array<std::string_view, 15> kFirst = {
        "insert",  "update", "delete", "merge", "exec", "execute", "raiserror", "print",
        "declare", "if",     "while",  "begin", "set",  "select",  "with"};
    constexpr std::array<std::string_view, 4> kOutcome = {"@@rowcount", "@@error", "rowcount_big",
                                                          "@@total_errors"};
    const std::vector<std::string> words = wordsOf(text);
    return !words.empty() && std::ranges::find(kFirst, words.front()) != kFirst.end() &&
           std::ranges::none_of(words, [&](const std::string& word) {
               return word.starts_with("showplan") ||
                      std::ranges::find(kOutcome, word) != kOutcome.end();
           });
}

// Whether every statement is a query, a variable or a message, as far as words can tell. Functions
// of sequences, of settings and of locks write, too; what some servers quote in ways of their own
// may hide a word.
bool readsAlone(std::string_view text) {
    constexpr std::array<std::string_view, 4> kFirst = {"select", "with", "declare", "print"};
    constexpr std::array<std::string_view, 35> kWrites = {
        "insert",  "update", "delete", "merge",      "into",     "exec",      "execute",
        "call",    "do",     "create", "alter",      "drop",     "truncate",  "rename",
        "grant",   "revoke", "deny",   "begin",      "start",    "commit",    "rollback",
        "save",    "use",    "copy",   "lock",       "waitfor",  "raiserror", "throw",
        "nextval", "setval", "value",  "set_config", "get_lock", "openquery", "openrowset"};
    const bool quotesOtherwise =
        text.find('\\') != std::string_view::npos || text.find("/*!") != std::string_view::npos;
    const std::vector<std::string> words = wordsOf(text);
    if (quotesOtherwise || words.empty() ||
        std::ranges::find(kFirst, words.front()) == kFirst.end()) {
        return false;
    }
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i];
        const bool sets =
            word == "set" && (i + 1 == words.size() || !words[i + 1].starts_with('@'));
        if (sets || std::ranges::find(kWrites, word) != kWrites.end() || word.starts_with("pg_") ||
            word.starts_with("sp_") || word.starts_with("xp_") || word.starts_with("dblink")) {
            return false;
        }
    }
    return true;
}

QueryAnalysis read(std::string_view text) {
    QueryAnalysis found;
    if (beginsAsQuery(text)) {
        platform::learnStack();
        try {
            static_cast<tsql::QuerySources&>(found) = tsql::sourcesOf(text);
        } catch (const tsql::ServerError&) {
            found = {};  // not the dialect, but perhaps the server's: then only the driver can tell
        }
    }
    found.changesTables = !found.isOneQuery && mayChangeTables(text);
    return found;
}

}  // namespace

QueryAnalysis analyse(std::string_view text) {
    QueryAnalysis found = read(text);
    found.mayFollow = !found.isOneQuery && mayFollowQuery(text);
    found.onlyReads = found.isOneQuery || readsAlone(text);
    found.leavesState = found.changesTables || mayLeaveState(text, found.isOneQuery);
    return found;
}

}  // namespace kap::ado::odbc
