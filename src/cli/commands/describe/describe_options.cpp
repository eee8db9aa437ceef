#include "cli/commands/describe/describe_options.hpp"

#include <memory>

#include "cli/commands/describe/describe_command.hpp"
#include "cli/connection_option.hpp"
#include "cli/language_option.hpp"

namespace kap::cli {

CommandDescription describeOptions() {
    const auto describe = std::make_shared<DescribeCommand>();
    return {
        .name = "describe",
        .summary = "Show what a database is made of.",
        .details =
            "Tables with their columns, keys, checks, triggers and numbers of rows; views, "
            "procedures\n"
            "and functions. The page for browsers draws which tables refer to which.\n"
            "Exit codes: 0 done, 1 an error, 2 wrong usage, 3 no database.",
        .options = {connectionOption(describe->connection),
                    {.name = "--table",
                     .placeholder = "NAME",
                     .target = &describe->table,
                     .help = "Only this table."},
                    {.name = "--json", .target = &describe->json, .help = "Print one JSON object."},
                    {.name = "--html",
                     .target = &describe->html,
                     .help = "Print one page for browsers, which prints well on paper.",
                     .apart = {"--json"}},
                    languageOption(describe->language),
                    {.name = "--output",
                     .placeholder = "FILE",
                     .target = &describe->output,
                     .help = "Write to this file instead of printing."}},
        .run = [describe] { return describe->run(); }};
}

}  // namespace kap::cli
