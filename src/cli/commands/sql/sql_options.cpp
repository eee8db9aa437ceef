#include "cli/commands/sql/sql_options.hpp"

#include <memory>

#include "cli/commands/sql/sql_command.hpp"
#include "cli/connection_option.hpp"
#include "cli/language_option.hpp"
#include "cli/output/usage_error.hpp"
#include "cli/text_file.hpp"

namespace kap::cli {
namespace {

// "kaputil sql azienda.db" is enough.
Option database(std::string& target) {
    Option option = connectionOption(target);
    option.name = "DATABASE," + option.name;
    return option;
}

// Of a few forms one can be chosen.
Option formFlag(SqlCommand& sql, const char* name, AnswerForm form, const char* help) {
    return {.name = name,
            .target = std::function<void()>([&sql, form] {
                if (sql.form && *sql.form != form) {
                    throw UsageError("answers are printed in one form, not in two");
                }
                sql.form = form;
            }),
            .help = help};
}

}  // namespace

CommandDescription sqlOptions() {
    const auto sql = std::make_shared<SqlCommand>();
    return {
        .name = "sql",
        .summary = "Run a script in the dialect on a database.",
        .details =
            "Without --file and --command the script is read from standard input; on a terminal "
            "a\n"
            "shell reads statements. The script is UTF-8, UTF-16 or, when it is neither, in code "
            "page\n"
            "1252; lines that hold only GO cut it into batches. It ends at the first batch with "
            "an\n"
            "error. What it prints goes to standard error.\n"
            "Exit codes: 0 done, 1 an error in the script, 2 wrong usage, 3 no database.",
        .options = {database(sql->connection),
                    {.name = "--file",
                     .placeholder = "F",
                     .target = &sql->file,
                     .help = "The file that holds the script."},
                    encodingOption(sql->encoding),
                    {.name = "--command",
                     .placeholder = "TEXT",
                     .target = &sql->command,
                     .help = "The script itself.",
                     .apart = {"--file"}},
                    formFlag(*sql, "--json", AnswerForm::Json,
                             "Print one JSON object a line for each result."),
                    formFlag(*sql, "--csv", AnswerForm::Csv,
                             "Print rows as comma-separated values, and no counts."),
                    formFlag(*sql, "--json-lines", AnswerForm::JsonLines,
                             "Print one JSON object a line for each row."),
                    formFlag(*sql, "--tsv", AnswerForm::Tsv,
                             "Print the rows with tabs between their values."),
                    formFlag(*sql, "--markdown", AnswerForm::Markdown,
                             "Print tables as Markdown has them."),
                    formFlag(*sql, "--html", AnswerForm::Html, "Print one page for browsers."),
                    languageOption(sql->language),
                    {.name = "--variable",
                     .placeholder = "NAME=VALUE",
                     .target = &sql->variables,
                     .help = "What stands for $(NAME) in the script; several may be given."},
                    {.name = "--keep-going",
                     .target = &sql->keepGoing,
                     .help = "Go on behind a batch with an error."},
                    {.name = "--plan",
                     .target = &sql->plan,
                     .help = "Print how each statement would be gone about instead of running it."},
                    {.name = "--backup",
                     .placeholder = "F",
                     .target = &sql->backup,
                     .help = "Copy the database to a new file first; it may be in use meanwhile."},
                    {.name = "--check",
                     .target = &sql->check,
                     .help = "Check the database first."}},
        .run = [sql] { return sql->run(); }};
}

}  // namespace kap::cli
