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
        .summary = {"Show what a database is made of.", "Mostra com'è fatta una base dati."},
        .details =
            {R"(Tables with their columns, keys, checks, triggers and numbers of rows; views, procedures
and functions. The page for browsers draws which tables refer to which.
Exit codes: 0 done, 1 an error, 2 wrong usage, 3 no database.)",
             R"(Le tabelle con colonne, chiavi, vincoli, trigger e numero di righe; viste, procedure e
funzioni. La pagina per il browser disegna quali tabelle fanno riferimento a quali.
Codici d'uscita: 0 eseguito, 1 un errore, 2 uso errato, 3 nessuna base dati.)"},
        .options = {connectionOption(describe->connection),
                    {.name = "--table",
                     .placeholder = "NAME",
                     .target = &describe->table,
                     .help = {"Only this table.", "Solo questa tabella."}},
                    {.name = "--json",
                     .target = &describe->json,
                     .help = {"Print one JSON object.", "Stampa un oggetto JSON."}},
                    {.name = "--html",
                     .target = &describe->html,
                     .help = {"Print one page for browsers, which prints well on paper.",
                              "Stampa una pagina per il browser, adatta anche alla carta."},
                     .apart = {"--json"}},
                    languageOption(describe->language),
                    {.name = "--output",
                     .placeholder = "FILE",
                     .target = &describe->output,
                     .help = {"Write to this file instead of printing.",
                              "Scrive in questo file invece di stampare."}}},
        .run = [describe] { return describe->run(); }};
}

}  // namespace kap::cli
