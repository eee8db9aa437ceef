#include "cli/commands/call/call_options.hpp"

#include <memory>

#include "cli/commands/call/call_command.hpp"

namespace kap::cli {

CommandDescription callOptions() {
    const auto call = std::make_shared<CallCommand>();
    const auto shownInHelp = std::make_shared<std::string>();  // the words are taken before
    return {
        .name = "call",
        .summary = "Call members and show what they give.",
        .details =
            "MEMBER is one of the general functions (KapRound) or CLASS.MEMBER, of which an "
            "object\n"
            "is made (CProprieta.Leggi); calls behind a + go to the same object:\n"
            "\n"
            "  kaputil call KapRound 2.675 2\n"
            "  kaputil call CProprieta.Scrivi Codice 12 + Leggi codice\n"
            "\n"
            "Arguments:\n"
            "  12  -2.5  1E6       numbers as in program text: Integer, Long or Double\n"
            "  true false null empty missing\n"
            "  '#2003-12-25#'  '#2003-12-25 10:30:00#'\n"
            "  type:text           the text converted in the user's language: double:2,5 "
            "string:12\n"
            "                      integer: long: single: currency: decimal: date: boolean: byte:\n"
            "  NAME:=value         a named argument, behind those by position\n"
            "  anything else       a text; also digits behind a leading zero\n"
            "Words behind -- are never options.\n"
            "\n"
            "Each result is printed with its type, then the by-reference arguments that have a\n"
            "new value. Message boxes go to the system log unless --message-log names a file.\n"
            "Exit codes: 0 done, 1 a member raised an error, 2 wrong usage.",
        .options = {{.name = "MEMBER ARG... + MEMBER ARG...",
                     .target = shownInHelp.get(),
                     .help = "What to call."},
                    {.name = "--locale",
                     .placeholder = "NAME",
                     .target = &call->locale,
                     .help = "The language of conversions: it-IT, en-US, ..."},
                    {.name = "--message-log",
                     .placeholder = "FILE",
                     .target = &call->messageLog,
                     .help = "The file message boxes are added to."},
                    {.name = "--json",
                     .target = &call->json,
                     .help = "Print one JSON object a line for each result."}},
        .run = [call, shownInHelp] { return call->run(); },
        .words = &call->words};
}

}  // namespace kap::cli
