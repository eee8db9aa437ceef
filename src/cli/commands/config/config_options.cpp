#include "cli/commands/config/config_options.hpp"

#include <memory>

#include "cli/commands/config/config_command.hpp"
#include "cli/connection_option.hpp"
#include "cli/language_option.hpp"
#include "cli/table_name.hpp"

namespace kap::cli {
namespace {

BothLanguages fileForm() {
    return {R"(A file is UTF-8 and looks like this:

  # a comment
  [Vendite\Documenti\Testata]
  ScontoMassimo = 25
      flag = 1

In a declaration value and flag are the defaults, and below a field there may be
allowed = 15|20|25, flags = 0|1, note = TEXT and mandatory = yes. Texts in quotes are
written as in JSON.)",
            R"(Un file è in UTF-8 e ha questa forma:

  # un commento
  [Vendite\Documenti\Testata]
  ScontoMassimo = 25
      flag = 1

In una dichiarazione valore e flag sono i predefiniti, e sotto un campo possono stare
allowed = 15|20|25, flags = 0|1, note = TESTO e mandatory = yes. I testi fra virgolette si
scrivono come in JSON.)"};
}

void addSource(CommandDescription& command, ConfigurationSource& source) {
    command.options.push_back(connectionOption(source.connection));
    command.options.push_back(
        {.name = "--table",
         .placeholder = "NAME",
         .target = &source.table,
         .help = {"The configuration table.", "La tabella delle impostazioni."},
         .showsDefault = true,
         .fault = &tableNameFault});
}

void addGroup(CommandDescription& command, std::string& group) {
    command.options.push_back({.name = "--group",
                               .placeholder = "NAME",
                               .target = &group,
                               .help = {"The group of users; DEFAULT is everybody's.",
                                        "Il gruppo di utenti; DEFAULT è di tutti."},
                               .required = true});
}

void addPath(CommandDescription& command, ConfigurationSource& source) {
    command.options.push_back(
        {.name = "--path",
         .placeholder = "PATH",
         .target = &source.path,
         .help = {"Only what is below it, for example 'Vendite\\Documenti'.",
                  "Solo quello che sta sotto, per esempio 'Vendite\\Documenti'."}});
}

void addDeclaration(CommandDescription& command, ConfigurationSource& source) {
    command.options.push_back(
        {.name = "--declaration",
         .placeholder = "FILE",
         .target = &source.declaration,
         .help = {"The file in which the program declares its fields; without it the table alone "
                  "tells which there are.",
                  "Il file in cui il programma dichiara i suoi campi; senza, li dice la sola "
                  "tabella."}});
}

void addJson(CommandDescription& command, bool& json,
             const BothLanguages& help = {"Print one JSON object.", "Stampa un oggetto JSON."}) {
    command.options.push_back({.name = "--json", .target = &json, .help = help});
}

CommandDescription showAction() {
    const auto show = std::make_shared<ConfigShow>();
    CommandDescription command{.name = "show",
                               .summary = {"Show what is in force for a group, and why.",
                                           "Mostra che cosa vale per un gruppo, e perché."},
                               .run = [show] { return show->run(); }};
    addSource(command, show->source);
    addGroup(command, show->group);
    addPath(command, show->source);
    addDeclaration(command, show->source);
    addJson(command, show->json);
    return command;
}

CommandDescription diffAction() {
    const auto diff = std::make_shared<ConfigDiff>();
    CommandDescription command{
        .name = "diff",
        .summary = {"Show where groups differ.", "Mostra dove i gruppi differiscono."},
        .options = {{.name = "GROUP",
                     .target = &diff->groups,
                     .help = {"The groups of users, two or more.",
                              "I gruppi di utenti, due o più."},
                     .required = true}},
        .run = [diff] { return diff->run(); }};
    addSource(command, diff->source);
    addPath(command, diff->source);
    addDeclaration(command, diff->source);
    addJson(command, diff->json);
    command.options.push_back({.name = "--html",
                               .target = &diff->html,
                               .help = {"Print a page for browsers: every field, a column for each "
                                        "group, what differs marked.",
                                        "Stampa una pagina per il browser: ogni campo, una colonna "
                                        "per gruppo, le differenze evidenziate."},
                               .apart = {"--json"}});
    command.options.push_back(languageOption(diff->language));
    return command;
}

CommandDescription groupsAction() {
    const auto groups = std::make_shared<ConfigGroups>();
    CommandDescription command{.name = "groups",
                               .summary = {"List the groups, and how much is their own.",
                                           "Elenca i gruppi, e quanto hanno di proprio."},
                               .run = [groups] { return groups->run(); }};
    addSource(command, groups->source);
    addPath(command, groups->source);
    addDeclaration(command, groups->source);
    addJson(command, groups->json);
    return command;
}

CommandDescription declaredAction() {
    const auto declared = std::make_shared<ConfigDeclared>();
    CommandDescription command{
        .name = "declared",
        .summary = {"Show what a program declares against the rows of all groups.",
                    "Confronta quello che un programma dichiara con le righe di tutti i gruppi."},
        .details =
            {"Exit codes: 0 done, 1 an error, 2 wrong usage, 3 no database, 4 a row would end\n"
             "the program's load.",
             "Codici d'uscita: 0 eseguito, 1 un errore, 2 uso errato, 3 nessuna base dati, 4 una "
             "riga\n"
             "fermerebbe il caricamento del programma."},
        .run = [declared] { return declared->run(); }};
    addSource(command, declared->source);
    addPath(command, declared->source);
    addDeclaration(command, declared->source);
    command.options.back().required = true;
    addJson(command, declared->json);
    return command;
}

CommandDescription exportAction() {
    const auto exporting = std::make_shared<ConfigExport>();
    CommandDescription command{.name = "export",
                               .summary = {"Write the rows of a group into a file.",
                                           "Scrive le righe di un gruppo in un file."},
                               .run = [exporting] { return exporting->run(); }};
    addSource(command, exporting->source);
    addGroup(command, exporting->group);
    addPath(command, exporting->source);
    command.options.push_back(
        {.name = "--file",
         .placeholder = "FILE",
         .target = &exporting->file,
         .help = {"The file; else standard output.", "Il file; altrimenti lo standard output."}});
    addJson(command, exporting->json,
            {"Write one JSON object instead.", "Scrive invece un oggetto JSON."});
    return command;
}

CommandDescription importAction() {
    const auto import = std::make_shared<ConfigImport>();
    CommandDescription command{
        .name = "import",
        .summary = {"Write a file into the rows of a group, all of it or nothing.",
                    "Porta un file nelle righe di un gruppo, tutto o niente."},
        .run = [import] { return import->run(); }};
    addSource(command, import->source);
    addGroup(command, import->group);
    addDeclaration(command, import->source);
    command.options.push_back(
        {.name = "--file",
         .placeholder = "FILE",
         .target = &import->file,
         .help = {"The file; else standard input.", "Il file; altrimenti lo standard input."}});
    command.options.push_back(
        {.name = "--replace",
         .target = &import->replace,
         .help = {"Remove the group's other rows.", "Toglie le altre righe del gruppo."}});
    addJson(command, import->json);
    return command;
}

}  // namespace

CommandDescription configOptions() {
    return {.name = "config",
            .summary = {"Show, compare and carry the settings of groups.",
                        "Mostra, confronta e porta altrove le impostazioni dei gruppi."},
            .details = fileForm(),
            .actions = {groupsAction(), showAction(), declaredAction(), diffAction(),
                        exportAction(), importAction()}};
}

}  // namespace kap::cli
