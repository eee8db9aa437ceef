#include "cli/commands/batch/batch_options.hpp"

#include <memory>

#include "cli/commands/batch/batch_command.hpp"
#include "cli/connection_option.hpp"

namespace kap::cli {

CommandDescription batchOptions() {
    const auto batch = std::make_shared<BatchCommand>();
    return {.name = "batch",
            .summary = {"Run statements as one script: all happen or none.",
                        "Esegue le istruzioni come un solo script: o tutte o nessuna."},
            .details =
                {R"(FILE is a script as for "kaputil sql"; lines that hold only GO stand between the
statements. A statement may begin with a line that holds its error message:

  -- message: Addebito fallito
  UPDATE Conti SET Saldo = Saldo - 50 WHERE Codice = 1
  GO
  UPDATE Conti SET Saldo = Saldo + 50 WHERE Codice = 2

When a statement fails, the server's error, the message and the statement go to
standard error, and nothing is changed.
Exit codes: 0 done, 1 a statement failed, 2 wrong usage, 3 no database.)",
                 R"(FILE è uno script come per "kaputil sql"; righe con il solo GO stanno fra le
istruzioni. Un'istruzione può cominciare con una riga che ne dà il messaggio d'errore:

  -- message: Addebito fallito
  UPDATE Conti SET Saldo = Saldo - 50 WHERE Codice = 1
  GO
  UPDATE Conti SET Saldo = Saldo + 50 WHERE Codice = 2

Se un'istruzione fallisce, l'errore del server, il messaggio e l'istruzione vanno
sullo standard error, e nulla viene modificato.
Codici d'uscita: 0 eseguito, 1 un'istruzione è fallita, 2 uso errato, 3 nessuna base
dati.)"},
            .options = {{.name = "FILE",
                         .target = &batch->file,
                         .help = {"The file of statements.", "Il file delle istruzioni."},
                         .required = true},
                        connectionOption(batch->connection),
                        {.name = "--dry-run",
                         .target = &batch->dryRun,
                         .help = {"Print the script instead of running it.",
                                  "Stampa lo script invece di eseguirlo."}},
                        {.name = "--json",
                         .target = &batch->json,
                         .help = {"Print one JSON object a line.",
                                  "Stampa un oggetto JSON per riga."}}},
            .run = [batch] { return batch->run(); }};
}

}  // namespace kap::cli
