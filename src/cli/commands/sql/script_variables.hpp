#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace kap::cli {

// The variables of scripts, which stand in them as $(NAME), and the lines of a script that are for
// the command line and not for the database:
//
//     :setvar NAME value      :setvar NAME "a value"      :r FILE
class ScriptVariables {
public:
    // Throws UsageError for a name that cannot stand in a script.
    void set(const std::string& name, const std::string& value);
    void forget(const std::string& name);
    [[nodiscard]] const std::map<std::string, std::string>& all() const noexcept { return values_; }

    // A text with the values in place of the names; a name that is not set stays as it is.
    [[nodiscard]] std::string expanded(std::string_view text) const;

    // A script as the database is to run it: its own lines are obeyed in their order, and empty
    // then. Throws UsageError for one that cannot be, or grows beyond what a script may have.
    [[nodiscard]] std::string prepared(std::string_view script);

private:
    struct Prepared {
        std::string text;
        int files = 0;  // that were included
    };

    void expand(std::string_view text, std::string& result) const;
    void prepare(std::string_view script, int depth, Prepared& result);
    // Writes what stands instead of a line; that of the database stays.
    void obey(std::string_view line, int depth, Prepared& result);

    std::map<std::string, std::string> values_;  // by the names in upper case
};

// "NAME=VALUE". Throws UsageError.
void setVariable(ScriptVariables& variables, std::string_view assignment);

// The words of a line; one with blanks in it stands in quotes.
[[nodiscard]] std::vector<std::string> wordsOfLine(std::string_view line);

}  // namespace kap::cli
