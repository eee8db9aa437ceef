#include "cli/commands/copy/copy_options.hpp"

#include <memory>

#include "cli/commands/copy/copy_command.hpp"

namespace kap::cli {

CommandDescription copyOptions() {
    const auto copy = std::make_shared<CopyCommand>();
    return {
        .name = "copy",
        .summary = "Copy the tables of a database to another one.",
        .details =
            "Tables are made with their columns, primary keys and identities; each is compared "
            "with\n"
            "its source at the end, by the number of rows and a checksum. A copy that was "
            "interrupted\n"
            "goes on where it stopped when it is started again.\n"
            "Exit codes: 0 all tables are equal, 1 an error or a difference, 2 wrong usage,\n"
            "3 no database.",
        .options = {{.name = "--from",
                     .placeholder = "DATABASE",
                     .target = &copy->from,
                     .help =
                         "The source: a file, a name from the list of connections, or a connection "
                         "string.",
                     .required = true},
                    {.name = "--to",
                     .placeholder = "DATABASE",
                     .target = &copy->to,
                     .help = "The target, given alike.",
                     .required = true},
                    {.name = "--table",
                     .placeholder = "NAME",
                     .target = &copy->tables,
                     .help = "Only this table; several may be given."},
                    {.name = "--json",
                     .target = &copy->json,
                     .help = "Print one JSON object a line for each table."}},
        .run = [copy] { return copy->run(); }};
}

}  // namespace kap::cli
