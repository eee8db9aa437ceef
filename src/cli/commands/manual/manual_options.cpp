#include "cli/commands/manual/manual_options.hpp"

#include <memory>

#include "cli/commands/manual/manual_command.hpp"
#include "cli/language_option.hpp"

namespace kap::cli {

CommandDescription manualOptions() {
    const auto manual = std::make_shared<ManualCommand>();
    return {
        .name = "manual",
        .summary = {"Print the page of the manual on a command or a class.",
                    "Stampa la pagina di manuale di un comando o di una classe."},
        .details = {R"(The page is for man: kaputil manual sql | man -l -
With --folder those on commands are in section 1, those on classes in section 3.
Exit codes: 0 done, 2 wrong usage.)",
                    R"(La pagina è per man: kaputil manual sql | man -l -
Con --folder quelle dei comandi sono nella sezione 1, quelle delle classi nella 3.
Codici d'uscita: 0 eseguito, 2 uso errato.)"},
        .options = {{.name = "COMMAND",
                     .target = &manual->command,
                     .help = {"The command or class; without it the page on all commands.",
                              "Il comando o la classe; se manca, la pagina su tutti i comandi."}},
                    {.name = "--folder",
                     .placeholder = "FOLDER",
                     .target = &manual->folder,
                     .help = {"Write all pages as files into this folder.",
                              "Scrive tutte le pagine come file in questa cartella."}},
                    languageOption(manual->language,
                                   {"The language of the pages, that of the locale unless given.",
                                    "La lingua delle pagine; se manca, quella dell'utente."})},
        .run = [manual] { return manual->run(); }};
}

CommandDescription completionOptions() {
    const auto completion = std::make_shared<CompletionCommand>();
    return {
        .name = "completion",
        .summary = {"Print what completes the command line in a shell.",
                    "Stampa quello che completa la riga di comando in una shell."},
        .details = {R"(For zsh: kaputil completion zsh > ~/.zfunc/_kaputil, with ~/.zfunc in fpath.
For fish: kaputil completion fish > ~/.config/fish/completions/kaputil.fish
The package brings both, and the one for bash.
Exit codes: 0 done, 2 wrong usage.)",
                    R"(Per zsh: kaputil completion zsh > ~/.zfunc/_kaputil, con ~/.zfunc in fpath.
Per fish: kaputil completion fish > ~/.config/fish/completions/kaputil.fish
Il pacchetto contiene tutti e due, e quello per bash.
Codici d'uscita: 0 eseguito, 2 uso errato.)"},
        .options = {{.name = "SHELL",
                     .target = &completion->shell,
                     .help = {"zsh or fish.", "zsh o fish."},
                     .required = true,
                     .fault = oneOf({"zsh", "fish"})},
                    languageOption(completion->language,
                                   {"The language of what is shown beside the words, that of the "
                                    "locale unless given.",
                                    "La lingua di quello che compare accanto alle parole; se "
                                    "manca, quella dell'utente."})},
        .run = [completion] { return completion->run(); }};
}

}  // namespace kap::cli
