#include "cli/commands/sql/sql_options.hpp"

#include <memory>

#include "cli/commands/sql/sql_command.hpp"

namespace kap::cli {

CommandDescription sqlOptions() {
    const auto sql = std::make_shared<SqlCommand>();
    return {
        .name = "sql",
        .summary = "Run a script in the dialect on a database.",
        .details =
            "Without --file and --command the script is read from standard input. The script is\n"
            "UTF-8, or UTF-16 with a byte-order mark; lines that hold only GO cut it into batches. "
            "It\n"
            "ends at the first batch with an error. What it prints goes to standard error.\n"
            "Exit codes: 0 done, 1 an error in the script, 2 wrong usage, 3 no database.",
        .options = {{.name = "--connection",
                     .placeholder = "STRING",
                     .target = &sql->connection,
                     .help = "For example \"Provider=KapLocal;Data Source=azienda.db\".",
                     .required = true},
                    {.name = "--file",
                     .placeholder = "F",
                     .target = &sql->file,
                     .help = "The file that holds the script."},
                    {.name = "--command",
                     .placeholder = "TEXT",
                     .target = &sql->command,
                     .help = "The script itself.",
                     .apart = {"--file"}},
                    {.name = "--json",
                     .target = &sql->json,
                     .help = "Print one JSON object a line for each result."},
                    {.name = "--csv",
                     .target = &sql->csv,
                     .help = "Print rows as comma-separated values, and no counts.",
                     .apart = {"--json"}},
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
