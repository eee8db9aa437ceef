#include "cli/commands/numbers/numbers_options.hpp"

#include <memory>

#include "cli/commands/numbers/numbers_command.hpp"
#include "cli/connection_option.hpp"
#include "cli/language_option.hpp"

namespace kap::cli {

CommandDescription numbersOptions() {
    const auto numbers = std::make_shared<NumbersCommand>();
    return {
        .name = "numbers",
        .summary = "Show whether every document number can be accounted for.",
        .details =
            "For each counter and year: the last definitive and provisional number given out, who\n"
            "carries the numbers (documents, invoices, accounting entries, reservations), and what "
            "is\n"
            "amiss: numbers missing, carried twice or beyond the counter, entries without "
            "documents\n"
            "and the reverse, reservations left over, dates that go back, types that changed "
            "their\n"
            "counter. Nothing is changed.\n"
            "Exit codes: 0 done, 1 a table cannot be read, 2 wrong usage, 3 no database,\n"
            "4 anomalies, with --fail-on anomalies.",
        .options = {connectionOption(numbers->connection),
                    {.name = "--counter",
                     .placeholder = "CODE",
                     .target = &numbers->counter,
                     .help = "Only this counter."},
                    {.name = "--year",
                     .placeholder = "YEAR",
                     .target = &numbers->year,
                     .help = "Only this year."},
                    {.name = "--from",
                     .placeholder = "N",
                     .target = &numbers->from,
                     .help = "Only numbers from this one on."},
                    {.name = "--to",
                     .placeholder = "N",
                     .target = &numbers->to,
                     .help = "Only numbers up to this one."},
                    {.name = "--register",
                     .target = &numbers->everyNumber,
                     .help = "Show every number with who carries it, not only what is amiss."},
                    {.name = "--fail-on",
                     .placeholder = "anomalies",
                     .target = [numbers](const std::string&) { numbers->failOnAnomalies = true; },
                     .help = "What makes the command fail, for scheduled jobs.",
                     .fault = oneOf({"anomalies"})},
                    {.name = "--json", .target = &numbers->json, .help = "Print one JSON object."},
                    {.name = "--csv",
                     .target = &numbers->csv,
                     .help = "Print the whole register for spreadsheets.",
                     .apart = {"--json"}},
                    {.name = "--html",
                     .target = &numbers->html,
                     .help = "Print one page for browsers, which prints well on paper.",
                     .apart = {"--json", "--csv"}},
                    languageOption(numbers->language),
                    {.name = "--output",
                     .placeholder = "FILE",
                     .target = &numbers->output,
                     .help = "Write to this file instead of printing."}},
        .run = [numbers] { return numbers->run(); }};
}

}  // namespace kap::cli
