#pragma once

#include <optional>
#include <string>
#include <vector>

#include <kaputil/ado/connection.hpp>

#include "cli/commands/sql/answer_writer.hpp"

namespace kap::cli {

// How the shell shows answers.
struct ShellSettings {
    std::optional<AnswerForm> form;  // unset: tables
    bool timing = false;
};

// The word of each form, "table" first.
[[nodiscard]] std::vector<std::string> formNames();
// False when there is no form of that name.
[[nodiscard]] bool chooseForm(const std::string& name, ShellSettings& settings);
// The form that the ending of a file's name stands for.
[[nodiscard]] std::optional<AnswerForm> formOfFile(const std::string& file);

// Runs a script and shows what its statements answered, through the pager where that is longer than
// the screen; errors and messages behind. Ctrl-C ends it. Whether it went through.
bool runStatements(ado::Connection& connection, const std::string& script,
                   const ShellSettings& settings);

// The answers of a script in a file. Throws UsageError when that cannot be written; raises the
// script's error.
void runInto(ado::Connection& connection, const std::string& script, AnswerForm form,
             const std::string& file);

}  // namespace kap::cli
