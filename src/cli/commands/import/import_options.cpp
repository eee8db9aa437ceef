#include "cli/commands/import/import_options.hpp"

#include <memory>

#include "cli/commands/import/import_command.hpp"
#include "cli/connection_option.hpp"
#include "cli/text_file.hpp"

namespace kap::cli {

CommandDescription importOptions() {
    const auto import = std::make_shared<ImportCommand>();
    return {
        .name = "import",
        .summary = {"Bring the rows of a file into a table, all of them or none.",
                    "Porta le righe di un file in una tabella, tutte o nessuna."},
        .details =
            {R"(The file holds comma-separated values, or values with tabs or semicolons between; its
first line names the columns. An empty value is Null, "" is an empty text. Without
--locale numbers are written 1234.56 and dates 2025-03-31 or 20250331, perhaps with
the time behind. What cannot be imported is told with its row and column, and then
nothing is.
Exit codes: 0 done, 1 an error in a row, 2 wrong usage, 3 no database.)",
             R"(Il file contiene valori separati da virgole, oppure da tabulazioni o da punti e virgola; la
prima riga dà il nome alle colonne. Un valore vuoto è Null, "" è un testo vuoto. Senza
--locale i numeri si scrivono 1234.56 e le date 2025-03-31 o 20250331, eventualmente
seguite dall'ora. Quello che non si può importare viene indicato con riga e colonna, e
allora non si importa niente.
Codici d'uscita: 0 eseguito, 1 un errore in una riga, 2 uso errato, 3 nessuna base dati.)"},
        .options =
            {{.name = "FILE",
              .target = &import->file,
              .help = {"The file; without it, or for -, standard input.",
                       "Il file; se manca, o con -, lo standard input."}},
             connectionOption(import->connection),
             {.name = "--table",
              .placeholder = "NAME",
              .target = &import->table,
              .help = {"The table, which is there already.", "La tabella, che deve già esserci."},
              .required = true},
             {.name = "--delimiter",
              .placeholder = "CHARACTER",
              .target = &import->delimiter,
              .help = {"What stands between values: a character, or the word tab; else what "
                       "the first line has most of.",
                       "Che cosa separa i valori: un carattere, o la parola tab; altrimenti quello "
                       "che nella prima riga compare di più."}},
             {.name = "--quote",
              .placeholder = "CHARACTER",
              .target = &import->quote,
              .help = {"What values may stand in; empty: nothing.",
                       "Che cosa può racchiudere i valori; vuoto: niente."},
              .showsDefault = true},
             encodingOption(import->encoding),
             {.name = "--locale",
              .placeholder = "NAME",
              .target = &import->locale,
              .help = {"Numbers and dates are written as in this country, for example it-IT.",
                       "Numeri e date sono scritti come in questo paese, per esempio it-IT."}},
             {.name = "--columns",
              .placeholder = "NAMES",
              .target = &import->columns,
              .help = {"The columns that the values are for, in their order, whatever the "
                       "first line calls them; commas between.",
                       "Le colonne a cui vanno i valori, nel loro ordine, comunque le chiami la "
                       "prima riga; separate da virgole."}},
             {.name = "--no-header",
              .target = &import->noHeader,
              .help = {"The first line is a row, too.", "Anche la prima riga è di dati."}},
             {.name = "--null",
              .placeholder = "TEXT",
              .target = &import->null,
              .help =
                  {"What stands for Null, out of quotes; else nothing at all does.",
                   "Che cosa sta per Null, fuori dalle virgolette; altrimenti il valore vuoto."}},
             {.name = "--max-errors",
              .placeholder = "N",
              .target = &import->mostErrors,
              .help = {"How many errors are told before it is given up.",
                       "Quanti errori si indicano prima di rinunciare."},
              .showsDefault = true},
             {.name = "--dry-run",
              .target = &import->dryRun,
              .help = {"Check the rows against the database, and keep none.",
                       "Verifica le righe sulla base dati senza conservarne nessuna."}},
             {.name = "--json",
              .target = &import->json,
              .help = {"Print one JSON object.", "Stampa un oggetto JSON."}}},
        .run = [import] { return import->run(); }};
}

}  // namespace kap::cli
