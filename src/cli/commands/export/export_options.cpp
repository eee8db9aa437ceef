#include "cli/commands/export/export_options.hpp"

#include <memory>

#include "cli/commands/export/export_command.hpp"
#include "cli/connection_option.hpp"

namespace kap::cli {

CommandDescription exportOptions() {
    const auto exporting = std::make_shared<ExportCommand>();
    return {
        .name = "export",
        .summary = {"Write the rows of a query to a text file.",
                    "Scrive le righe di una query in un file di testo."},
        .details =
            {R"(The file gets lines of fixed length, described in its section of Schema.ini beside it,
which is written anew; with --keep-schema the section is used as it stands.
A column is as wide as the bytes of its type, which is not enough for every
number; --fit leaves room for all, and --csv has no widths.
Exit codes: 0 done, 1 an error, 2 wrong usage, 3 no database.)",
             R"(Il file ha righe di lunghezza fissa, descritte nella sua sezione dello Schema.ini che gli
sta accanto e che viene riscritta; con --keep-schema la sezione vale così com'è.
Una colonna è larga quanto i byte del suo tipo, che non bastano per ogni numero;
--fit fa posto a tutti, e --csv non ha larghezze.
Codici d'uscita: 0 eseguito, 1 un errore, 2 uso errato, 3 nessuna base dati.)"},
        .options = {connectionOption(exporting->connection),
                    {.name = "--query",
                     .placeholder = "TEXT",
                     .target = &exporting->query,
                     .help = {"The query whose rows are written.",
                              "La query di cui si scrivono le righe."},
                     .required = true},
                    {.name = "--folder",
                     .placeholder = "FOLDER",
                     .target = &exporting->folder,
                     .help = {"The folder of the file.", "La cartella del file."},
                     .showsDefault = true},
                    {.name = "--name",
                     .placeholder = "NAME",
                     .target = &exporting->name,
                     .help = {"The name of the file, as in EXPORT.TXT.",
                              "Il nome del file, come EXPORT.TXT."},
                     .required = true},
                    {.name = "--keep-schema",
                     .target = &exporting->keepSchema,
                     .help = {"Use the Schema.ini that is there.", "Usa lo Schema.ini che c'è."}},
                    {.name = "--fit",
                     .target = &exporting->fit,
                     .help = {"Make columns as wide as their values may be: an int takes 11 "
                              "characters, not 4.",
                              "Fa le colonne larghe quanto possono essere i valori: un int prende "
                              "11 caratteri, non 4."},
                     .apart = {"--keep-schema"}},
                    {.name = "--csv",
                     .target = &exporting->csv,
                     .help = {"Write comma-separated values in UTF-8, and no Schema.ini.",
                              "Scrive valori separati da virgole in UTF-8, e nessuno Schema.ini."},
                     .apart = {"--keep-schema", "--fit"}},
                    {.name = "--message-log",
                     .placeholder = "FILE",
                     .target = &exporting->messageLog,
                     .help = {"The file message boxes are added to.",
                              "Il file a cui si aggiungono i messaggi a video."}},
                    {.name = "--json",
                     .target = &exporting->json,
                     .help = {"Print one JSON object.", "Stampa un oggetto JSON."}}},
        .run = [exporting] { return exporting->run(); }};
}

}  // namespace kap::cli
