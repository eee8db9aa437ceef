#include "cli/commands/export/export_options.hpp"

#include <memory>

#include "cli/commands/export/export_command.hpp"
#include "cli/connection_option.hpp"

namespace kap::cli {

CommandDescription exportOptions() {
    const auto exporting = std::make_shared<ExportCommand>();
    return {.name = "export",
            .summary = "Write the rows of a query to a text file.",
            .details =
                "The file gets lines of fixed length, described in its section of Schema.ini "
                "beside it,\n"
                "which is written anew; with --keep-schema the section is used as it stands.\n"
                "A column is as wide as the bytes of its type, which is not enough for every\n"
                "number; --fit leaves room for all, and --csv has no widths.\n"
                "Exit codes: 0 done, 1 an error, 2 wrong usage, 3 no database.",
            .options = {connectionOption(exporting->connection),
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
                        {.name = "--fit",
                         .target = &exporting->fit,
                         .help = "Make columns as wide as their values may be: an int takes 11 "
                                 "characters, not 4.",
                         .apart = {"--keep-schema"}},
                        {.name = "--csv",
                         .target = &exporting->csv,
                         .help = "Write comma-separated values in UTF-8, and no Schema.ini.",
                         .apart = {"--keep-schema", "--fit"}},
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
