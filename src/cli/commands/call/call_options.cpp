#include "cli/commands/call/call_options.hpp"

#include <memory>

#include "cli/commands/call/call_command.hpp"

namespace kap::cli {

CommandDescription callOptions() {
    const auto call = std::make_shared<CallCommand>();
    const auto shownInHelp = std::make_shared<std::string>();  // the words are taken before
    return {
        .name = "call",
        .summary = {"Call members and show what they give.",
                    "Chiama membri e mostra che cosa danno."},
        .details =
            {R"(MEMBER is one of the general functions (KapRound) or CLASS.MEMBER, of which an object
is made (CProprieta.Leggi); calls behind a + go to the same object:

  kaputil call KapRound 2.675 2
  kaputil call CProprieta.Scrivi Codice 12 + Leggi codice

Arguments:
  12  -2.5  1E6       numbers as in program text: Integer, Long or Double
  true false null empty missing
  '#2003-12-25#'  '#2003-12-25 10:30:00#'
  type:text           the text converted in the user's language: double:2,5 string:12
                      integer: long: single: currency: decimal: date: boolean: byte:
  NAME:=value         a named argument, behind those by position
  anything else       a text; also digits behind a leading zero
Words behind -- are never options.

Each result is printed with its type, then the by-reference arguments that have a
new value. Message boxes go to the system log unless --message-log names a file.
Exit codes: 0 done, 1 a member raised an error, 2 wrong usage.)",
             R"(MEMBRO è una delle funzioni generali (KapRound) oppure CLASSE.MEMBRO, di cui si crea un
oggetto (CProprieta.Leggi); le chiamate dopo un + vanno allo stesso oggetto:

  kaputil call KapRound 2.675 2
  kaputil call CProprieta.Scrivi Codice 12 + Leggi codice

Argomenti:
  12  -2.5  1E6       numeri come nei programmi: Integer, Long o Double
  true false null empty missing
  '#2003-12-25#'  '#2003-12-25 10:30:00#'
  tipo:testo          il testo convertito secondo la lingua dell'utente: double:2,5 string:12
                      integer: long: single: currency: decimal: date: boolean: byte:
  NOME:=valore        un argomento per nome, dopo quelli per posizione
  ogni altra cosa     un testo; anche cifre dopo uno zero iniziale
Le parole dopo -- non sono mai opzioni.

Ogni risultato viene stampato con il suo tipo, poi gli argomenti per riferimento che hanno
un valore nuovo. I messaggi a video vanno nel registro di sistema, a meno che
--message-log indichi un file.
Codici d'uscita: 0 eseguito, 1 un membro ha sollevato un errore, 2 uso errato.)"},
        .options = {{.name = "MEMBER ARG... + MEMBER ARG...",
                     .target = shownInHelp.get(),
                     .help = {"What to call.", "Che cosa chiamare."}},
                    {.name = "--locale",
                     .placeholder = "NAME",
                     .target = &call->locale,
                     .help = {"The language of conversions: it-IT, en-US, ...",
                              "La lingua delle conversioni: it-IT, en-US, ..."}},
                    {.name = "--message-log",
                     .placeholder = "FILE",
                     .target = &call->messageLog,
                     .help = {"The file message boxes are added to.",
                              "Il file a cui si aggiungono i messaggi a video."}},
                    {.name = "--json",
                     .target = &call->json,
                     .help = {"Print one JSON object a line for each result.",
                              "Stampa un oggetto JSON per riga, uno per risultato."}}},
        .run = [call, shownInHelp] { return call->run(); },
        .words = &call->words};
}

}  // namespace kap::cli
