#include "cli/commands/classes/classes_options.hpp"

#include <memory>

#include "cli/commands/classes/classes_command.hpp"
#include "cli/language_option.hpp"

namespace kap::cli {

CommandDescription classesOptions() {
    const auto classes = std::make_shared<ClassesCommand>();
    return {
        .name = "classes",
        .summary = {"Show the classes and their members, with their documentation.",
                    "Mostra le classi e i loro membri, con la documentazione."},
        .details =
            {R"(Without a name all classes are listed. Names are compared ignoring case; the classes
of the platform are called by their whole name, for example ADODB.Connection.)",
             R"(Senza un nome vengono elencate tutte le classi. I nomi si confrontano senza badare alle
maiuscole; le classi della piattaforma si chiamano con il nome intero, per esempio
ADODB.Connection.)"},
        .options = {{.name = "name",
                     .target = &classes->name,
                     .help = {"A class, CLASS.MEMBER, or an enumeration.",
                              "Una classe, CLASSE.MEMBRO o un'enumerazione."}},
                    {.name = "--json",
                     .target = &classes->json,
                     .help = {"Print one JSON object.", "Stampa un oggetto JSON."}},
                    {.name = "--names",
                     .target = &classes->names,
                     .help = {"Print names only, one a line: of the classes, of a class's members, "
                              "of a member's parameters.",
                              "Stampa solo i nomi, uno per riga: delle classi, dei membri di una "
                              "classe, dei parametri di un membro."},
                     .apart = {"--json"}},
                    languageOption(classes->language,
                                   {"The language of the texts, that of the locale unless given.",
                                    "La lingua dei testi; se manca, quella dell'utente."}),
                    {.name = "--html",
                     .placeholder = "FOLDER",
                     .target = &classes->html,
                     .help = {"Write the whole reference into this folder: a page a class in both "
                              "languages, and an index to search in.",
                              "Scrive in questa cartella l'intero riferimento: una pagina per "
                              "classe nelle due lingue, e un indice in cui cercare."},
                     .apart = {"--json", "--names", "name"}}},
        .run = [classes] { return classes->run(); }};
}

}  // namespace kap::cli
