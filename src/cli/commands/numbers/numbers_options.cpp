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
        .summary = {"Show whether every document number can be accounted for.",
                    "Mostra se ogni numero di documento è giustificato."},
        .details =
            {R"(For each counter and year: the last definitive and provisional number given out, who
carries the numbers (documents, invoices, accounting entries, reservations), and what is
amiss: numbers missing, carried twice or beyond the counter, entries without documents
and the reverse, reservations left over, dates that go back, types that changed their
counter. Nothing is changed.
Exit codes: 0 done, 1 a table cannot be read, 2 wrong usage, 3 no database,
4 anomalies, with --fail-on anomalies.)",
             R"(Per ogni contatore e anno: l'ultimo numero definitivo e provvisorio dato, chi porta i
numeri (documenti, fatture, registrazioni contabili, prenotazioni) e che cosa non torna:
numeri mancanti, doppi o oltre il contatore, registrazioni senza documento e viceversa,
prenotazioni rimaste, date che tornano indietro, tipi che hanno cambiato contatore. Nulla
viene modificato.
Codici d'uscita: 0 eseguito, 1 una tabella non si può leggere, 2 uso errato, 3 nessuna
base dati, 4 anomalie, con --fail-on anomalies.)"},
        .options =
            {connectionOption(numbers->connection),
             {.name = "--counter",
              .placeholder = "CODE",
              .target = &numbers->counter,
              .help = {"Only this counter.", "Solo questo contatore."}},
             {.name = "--year",
              .placeholder = "YEAR",
              .target = &numbers->year,
              .help = {"Only this year.", "Solo quest'anno."}},
             {.name = "--from",
              .placeholder = "N",
              .target = &numbers->from,
              .help = {"Only numbers from this one on.", "Solo i numeri da questo in poi."}},
             {.name = "--to",
              .placeholder = "N",
              .target = &numbers->to,
              .help = {"Only numbers up to this one.", "Solo i numeri fino a questo."}},
             {.name = "--register",
              .target = &numbers->everyNumber,
              .help = {"Show every number with who carries it, not only what is amiss.",
                       "Mostra ogni numero con chi lo porta, non solo quello che non torna."}},
             {.name = "--fail-on",
              .placeholder = "anomalies",
              .target = [numbers](const std::string&) { numbers->failOnAnomalies = true; },
              .help = {"What makes the command fail, for scheduled jobs.",
                       "Che cosa fa fallire il comando, per i lavori pianificati."},
              .fault = oneOf({"anomalies"})},
             {.name = "--json",
              .target = &numbers->json,
              .help = {"Print one JSON object.", "Stampa un oggetto JSON."}},
             {.name = "--csv",
              .target = &numbers->csv,
              .help = {"Print the whole register for spreadsheets.",
                       "Stampa l'intero registro per i fogli di calcolo."},
              .apart = {"--json"}},
             {.name = "--html",
              .target = &numbers->html,
              .help = {"Print one page for browsers, which prints well on paper.",
                       "Stampa una pagina per il browser, adatta anche alla carta."},
              .apart = {"--json", "--csv"}},
             languageOption(numbers->language),
             {.name = "--output",
              .placeholder = "FILE",
              .target = &numbers->output,
              .help = {"Write to this file instead of printing.",
                       "Scrive in questo file invece di stampare."}}},
        .run = [numbers] { return numbers->run(); }};
}

}  // namespace kap::cli
