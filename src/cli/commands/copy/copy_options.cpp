#include "cli/commands/copy/copy_options.hpp"

#include <memory>

#include "cli/commands/copy/copy_command.hpp"

namespace kap::cli {

CommandDescription copyOptions() {
    const auto copy = std::make_shared<CopyCommand>();
    return {
        .name = "copy",
        .summary = {"Copy the tables of a database to another one.",
                    "Copia le tabelle di una base dati in un'altra."},
        .details =
            {R"(Tables are made with their columns, keys, identities, defaults and indexes, and with what
else the target can say (views, procedures, checks); what stays behind is named on
standard error. Each table is compared with its source, by the number of rows and a
checksum. A copy that was interrupted goes on where it stopped when it is started again.
Exit codes: 0 all tables are equal, 1 an error or a difference, 2 wrong usage,
3 no database.)",
             R"(Le tabelle vengono create con colonne, chiavi, identità, valori predefiniti e indici, e con
quello che la destinazione può esprimere (viste, procedure, vincoli); quello che resta
indietro viene indicato sullo standard error. Ogni tabella viene confrontata con la sua
origine, per numero di righe e somma di controllo. Una copia interrotta, avviata di nuovo,
prosegue da dove era arrivata.
Codici d'uscita: 0 tutte le tabelle sono uguali, 1 un errore o una differenza, 2 uso
errato, 3 nessuna base dati.)"},
        .options =
            {{.name = "--from",
              .placeholder = "DATABASE",
              .target = &copy->from,
              .help = {"The source: a file, a name from the list of connections, or a connection "
                       "string.",
                       "L'origine: un file, un nome dell'elenco delle connessioni o una stringa di "
                       "connessione."},
              .required = true},
             {.name = "--to",
              .placeholder = "DATABASE",
              .target = &copy->to,
              .help = {"The target, given alike.", "La destinazione, indicata allo stesso modo."},
              .required = true},
             {.name = "--table",
              .placeholder = "NAME",
              .target = &copy->tables,
              .help = {"Only this table; several may be given.",
                       "Solo questa tabella; se ne possono dare più d'una."}},
             {.name = "--json",
              .target = &copy->json,
              .help = {"Print one JSON object a line for each table.",
                       "Stampa un oggetto JSON per riga, uno per tabella."}}},
        .run = [copy] { return copy->run(); }};
}

}  // namespace kap::cli
