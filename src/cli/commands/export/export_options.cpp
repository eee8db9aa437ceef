#include "cli/commands/export/export_options.hpp"

#include <memory>

#include "cli/commands/export/export_command.hpp"

namespace kap::cli {

CommandDescription exportOptions() {
    const auto exporting = std::make_shared<ExportCommand>();
    return {.name = "export",
            .summary = "Write the rows of a query to a text file.",
            .details =
                "The file gets lines of fixed length, described in its section of Schema.ini "
                "beside it,\n"
                "which is written anew; with --keep-schema the section is used as it stands.\n"
                "Exit codes: 0 done, 1 an error, 2 wrong usage, 3 no database.",
            .options = {{.name = "--connection",
                         .placeholder = "STRING",
                         .target = &exporting->connection,
                         .help = "The connection string.",
                         .required = true},
                        {.name = "--query",
                         .placeholder = "TEXT",
                         .target = &exporting->query,
                         .help = "The query whose rows are written.",
                         .required = true},
                        {.name = "--folder",
                         .placeholder = "FOLDER",
                         .target = &exporting->folder,
                         .help = "The folder of the file.",
                         .showsDefault = true},
                        {.name = "--name",
                         .placeholder = "NAME",
                         .target = &exporting->name,
                         .help = "The name of the file, as in EXPORT.TXT.",
                         .required = true},
                        {.name = "--keep-schema",
                         .target = &exporting->keepSchema,
                         .help = "Use the Schema.ini that is there."},
                        {.name = "--message-log",
                         .placeholder = "FILE",
                         .target = &exporting->messageLog,
                         .help = "The file message boxes are added to."},
                        {.name = "--json",
                         .target = &exporting->json,
                         .help = "Print one JSON object."}},
            .run = [exporting] { return exporting->run(); }};
}

}  // namespace kap::cli
