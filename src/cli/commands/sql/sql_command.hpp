#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/commands/sql/answer_writer.hpp"
#include "cli/output/language.hpp"

namespace kap::cli {

// `kaputil sql`: runs a script and prints what each of its statements answered.
struct SqlCommand {
    std::string connection;               // see connectionTextOf()
    std::optional<std::string> file;      // where the script is ...
    std::optional<std::string> command;   // ... or the script; neither: standard input
    std::optional<std::string> encoding;  // of the script; unset: found
    std::optional<AnswerForm> form;       // unset: tables
    Language language = Language::Italian;
    std::vector<std::string> variables;  // NAME=VALUE, for $(NAME) in the script
    bool plan = false;                   // explain the statements instead of running them
    bool keepGoing = false;              // go on behind a batch that failed
    std::optional<std::string> backup;   // copy the database to this file first
    bool check = false;                  // check the database first

    // Runs the script batch by batch up to the first error, and gives back the exit code. Results
    // go to standard output, errors and what the script prints to standard error.
    [[nodiscard]] int run() const;

    // Whether errors and what the script prints are JSON objects, as the answers are.
    [[nodiscard]] bool tellsErrorsInJson() const {
        return form == AnswerForm::Json || form == AnswerForm::JsonLines;
    }
};

}  // namespace kap::cli
