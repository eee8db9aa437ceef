#include "cli/commands/batch/batch_options.hpp"

#include <memory>

#include "cli/commands/batch/batch_command.hpp"
#include "cli/connection_option.hpp"

namespace kap::cli {

CommandDescription batchOptions() {
    const auto batch = std::make_shared<BatchCommand>();
    return {
        .name = "batch",
        .summary = "Run statements as one script: all happen or none.",
        .details =
            "FILE is a script as for \"kaputil sql\"; lines that hold only GO stand between the\n"
            "statements. A statement may begin with a line that holds its error message:\n"
            "\n"
            "  -- message: Addebito fallito\n"
            "  UPDATE Conti SET Saldo = Saldo - 50 WHERE Codice = 1\n"
            "  GO\n"
            "  UPDATE Conti SET Saldo = Saldo + 50 WHERE Codice = 2\n"
            "\n"
            "When a statement fails, the server's error, the message and the statement go to\n"
            "standard error, and nothing is changed.\n"
            "Exit codes: 0 done, 1 a statement failed, 2 wrong usage, 3 no database.",
        .options = {{.name = "FILE",
                     .target = &batch->file,
                     .help = "The file of statements.",
                     .required = true},
                    connectionOption(batch->connection),
                    {.name = "--dry-run",
                     .target = &batch->dryRun,
                     .help = "Print the script instead of running it."},
                    {.name = "--json",
                     .target = &batch->json,
                     .help = "Print one JSON object a line."}},
        .run = [batch] { return batch->run(); }};
}

}  // namespace kap::cli
