#include "cli/commands/sql/sql_options.hpp"

#include <memory>
#include <utility>

#include "cli/commands/sql/sql_command.hpp"
#include "cli/connection_option.hpp"
#include "cli/language_option.hpp"
#include "cli/output/usage_error.hpp"
#include "cli/text_file.hpp"

namespace kap::cli {
namespace {

// "kaputil sql azienda.db" is enough.
Option database(std::string& target) {
    Option option = connectionOption(target);
    option.name = "DATABASE," + option.name;
    return option;
}

// Of a few forms one can be chosen.
Option formFlag(SqlCommand& sql, const char* name, AnswerForm form, BothLanguages help) {
    return {.name = name,
            .target = std::function<void()>([&sql, form] {
                if (sql.form && *sql.form != form) {
                    throw UsageError("answers are printed in one form, not in two");
                }
                sql.form = form;
            }),
            .help = std::move(help)};
}

}  // namespace

CommandDescription sqlOptions() {
    const auto sql = std::make_shared<SqlCommand>();
    return {
        .name = "sql",
        .summary = {"Run a script in the dialect on a database.",
                    "Esegue uno script nel dialetto su una base dati."},
        .details =
            {R"(Without --file and --command the script is read from standard input; on a terminal a
shell reads statements. The script is UTF-8, UTF-16 or, when it is neither, in code page
1252; lines that hold only GO cut it into batches. It ends at the first batch with an
error. What it prints goes to standard error.
Exit codes: 0 done, 1 an error in the script, 2 wrong usage, 3 no database.)",
             R"(Senza --file e --command lo script si legge dallo standard input; su un terminale le
istruzioni le legge una shell. Lo script è in UTF-8, UTF-16 o, se non è nessuno dei due,
nella tabella codici 1252; righe con il solo GO lo dividono in batch. Finisce al primo
batch con un errore. Quello che stampa va sullo standard error.
Codici d'uscita: 0 eseguito, 1 un errore nello script, 2 uso errato, 3 nessuna base dati.)"},
        .options =
            {database(sql->connection),
             {.name = "--file",
              .placeholder = "F",
              .target = &sql->file,
              .help = {"The file that holds the script.", "Il file che contiene lo script."}},
             encodingOption(sql->encoding),
             {.name = "--command",
              .placeholder = "TEXT",
              .target = &sql->command,
              .help = {"The script itself.", "Lo script stesso."},
              .apart = {"--file"}},
             formFlag(*sql, "--json", AnswerForm::Json,
                      {"Print one JSON object a line for each result.",
                       "Stampa un oggetto JSON per riga, uno per risultato."}),
             formFlag(*sql, "--csv", AnswerForm::Csv,
                      {"Print rows as comma-separated values, and no counts.",
                       "Stampa le righe come valori separati da virgole, senza i conteggi."}),
             formFlag(*sql, "--json-lines", AnswerForm::JsonLines,
                      {"Print one JSON object a line for each row.",
                       "Stampa un oggetto JSON per riga, uno per riga di dati."}),
             formFlag(*sql, "--tsv", AnswerForm::Tsv,
                      {"Print the rows with tabs between their values.",
                       "Stampa le righe con tabulazioni fra i valori."}),
             formFlag(
                 *sql, "--markdown", AnswerForm::Markdown,
                 {"Print tables as Markdown has them.", "Stampa le tabelle come in Markdown."}),
             formFlag(*sql, "--html", AnswerForm::Html,
                      {"Print one page for browsers.", "Stampa una pagina per il browser."}),
             languageOption(sql->language),
             {.name = "--variable",
              .placeholder = "NAME=VALUE",
              .target = &sql->variables,
              .help =
                  {"What stands for $(NAME) in the script; several may be given.",
                   "Che cosa sta al posto di $(NOME) nello script; se ne possono dare più d'una."}},
             {.name = "--keep-going",
              .target = &sql->keepGoing,
              .help = {"Go on behind a batch with an error.",
                       "Prosegue dopo un batch con un errore."}},
             {.name = "--plan",
              .target = &sql->plan,
              .help = {"Print how each statement would be gone about instead of running it.",
                       "Stampa come verrebbe eseguita ogni istruzione invece di eseguirla."}},
             {.name = "--backup",
              .placeholder = "F",
              .target = &sql->backup,
              .help = {"Copy the database to a new file first; it may be in use meanwhile.",
                       "Prima copia la base dati in un file nuovo; intanto può essere in uso."}},
             {.name = "--check",
              .target = &sql->check,
              .help = {"Check the database first.", "Prima controlla la base dati."}}},
        .run = [sql] { return sql->run(); }};
}

}  // namespace kap::cli
