#include "cli/commands/import/import_options.hpp"

#include <memory>

#include "cli/commands/import/import_command.hpp"
#include "cli/connection_option.hpp"
#include "cli/text_file.hpp"

namespace kap::cli {

CommandDescription importOptions() {
    const auto import = std::make_shared<ImportCommand>();
    return {
        .name = "import",
        .summary = "Bring the rows of a file into a table, all of them or none.",
        .details =
            "The file holds comma-separated values, or values with tabs or semicolons between; "
            "its\n"
            "first line names the columns. An empty value is Null, \"\" is an empty text. Without\n"
            "--locale numbers are written 1234.56 and dates 2025-03-31 or 20250331, perhaps with\n"
            "the time behind. What cannot be imported is told with its row and column, and then\n"
            "nothing is.\n"
            "Exit codes: 0 done, 1 an error in a row, 2 wrong usage, 3 no database.",
        .options = {{.name = "FILE",
                     .target = &import->file,
                     .help = "The file; without it, or for -, standard input."},
                    connectionOption(import->connection),
                    {.name = "--table",
                     .placeholder = "NAME",
                     .target = &import->table,
                     .help = "The table, which is there already.",
                     .required = true},
                    {.name = "--delimiter",
                     .placeholder = "CHARACTER",
                     .target = &import->delimiter,
                     .help = "What stands between values: a character, or the word tab; else what "
                             "the first line has most of."},
                    {.name = "--quote",
                     .placeholder = "CHARACTER",
                     .target = &import->quote,
                     .help = "What values may stand in; empty: nothing.",
                     .showsDefault = true},
                    encodingOption(import->encoding),
                    {.name = "--locale",
                     .placeholder = "NAME",
                     .target = &import->locale,
                     .help =
                         "Numbers and dates are written as in this country, for example it-IT."},
                    {.name = "--columns",
                     .placeholder = "NAMES",
                     .target = &import->columns,
                     .help = "The columns that the values are for, in their order, whatever the "
                             "first line calls them; commas between."},
                    {.name = "--no-header",
                     .target = &import->noHeader,
                     .help = "The first line is a row, too."},
                    {.name = "--null",
                     .placeholder = "TEXT",
                     .target = &import->null,
                     .help = "What stands for Null, out of quotes; else nothing at all does."},
                    {.name = "--max-errors",
                     .placeholder = "N",
                     .target = &import->mostErrors,
                     .help = "How many errors are told before it is given up.",
                     .showsDefault = true},
                    {.name = "--dry-run",
                     .target = &import->dryRun,
                     .help = "Check the rows against the database, and keep none."},
                    {.name = "--json", .target = &import->json, .help = "Print one JSON object."}},
        .run = [import] { return import->run(); }};
}

}  // namespace kap::cli
