#pragma once

#include <cstddef>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace kap::numbering::test {

using Words = std::vector<std::string>;

inline Words wordsOf(const std::string& text) {
    std::istringstream in(text);
    Words words;
    for (std::string word; in >> word;) {
        words.push_back(word);
    }
    return words;
}

// One line of a decision table: for each condition a value, several (a|b) or any (*), and what then
// is expected.
struct Rule {
    const char* when;
    const char* then;
};

inline bool matches(const std::string& pattern, const std::string& value) {
    return pattern == "*" || ("|" + pattern + "|").find("|" + value + "|") != std::string::npos;
}

// What the table says of one case; exactly one line of it must know the case.
inline std::string expectedOf(const std::vector<Rule>& rules, const Words& values) {
    std::string expected;
    int found = 0;
    for (const Rule& rule : rules) {
        const Words patterns = wordsOf(rule.when);
        bool all = patterns.size() == values.size();
        for (std::size_t i = 0; all && i < values.size(); ++i) {
            all = matches(patterns[i], values[i]);
        }
        if (all) {
            expected = rule.then;
            ++found;
        }
    }
    return found == 1 ? expected
                      : "lines of the table that know the case: " + std::to_string(found);
}

// Calls `check` with every combination of the conditions' values.
inline void forEachCase(const std::vector<Words>& conditions,
                        const std::function<void(const Words&)>& check, const Words& begun = {}) {
    if (begun.size() == conditions.size()) {
        check(begun);
        return;
    }
    for (const std::string& value : conditions[begun.size()]) {
        Words next = begun;
        next.push_back(value);
        forEachCase(conditions, check, next);
    }
}

inline std::string joined(const Words& words) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : " ") + word;
    }
    return text;
}

}  // namespace kap::numbering::test
