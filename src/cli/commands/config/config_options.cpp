#include "cli/commands/config/config_options.hpp"

#include <memory>

#include "cli/commands/config/config_command.hpp"
#include "cli/connection_option.hpp"
#include "cli/language_option.hpp"
#include "cli/table_name.hpp"

namespace kap::cli {
namespace {

constexpr const char* kFileForm =
    "A file is UTF-8 and looks like this:\n"
    "\n"
    "  # a comment\n"
    "  [Vendite\\Documenti\\Testata]\n"
    "  ScontoMassimo = 25\n"
    "      flag = 1\n"
    "\n"
    "In a declaration value and flag are the defaults, and below a field there may be\n"
    "allowed = 15|20|25, flags = 0|1, note = TEXT and mandatory = yes. Texts in quotes are\n"
    "written as in JSON.";

void addSource(CommandDescription& command, ConfigurationSource& source) {
    command.options.push_back(connectionOption(source.connection));
    command.options.push_back({.name = "--table",
                               .placeholder = "NAME",
                               .target = &source.table,
                               .help = "The configuration table.",
                               .showsDefault = true,
                               .fault = &tableNameFault});
}

void addGroup(CommandDescription& command, std::string& group) {
    command.options.push_back({.name = "--group",
                               .placeholder = "NAME",
                               .target = &group,
                               .help = "The group of users; DEFAULT is everybody's.",
                               .required = true});
}

void addPath(CommandDescription& command, ConfigurationSource& source) {
    command.options.push_back({.name = "--path",
                               .placeholder = "PATH",
                               .target = &source.path,
                               .help = "Only what is below it, for example 'Vendite\\Documenti'."});
}

void addDeclaration(CommandDescription& command, ConfigurationSource& source) {
    command.options.push_back(
        {.name = "--declaration",
         .placeholder = "FILE",
         .target = &source.declaration,
         .help = "The file in which the program declares its fields; without it the table alone "
                 "tells which there are."});
}

void addJson(CommandDescription& command, bool& json, const char* help = "Print one JSON object.") {
    command.options.push_back({.name = "--json", .target = &json, .help = help});
}

CommandDescription showAction() {
    const auto show = std::make_shared<ConfigShow>();
    CommandDescription command{.name = "show",
                               .summary = "Show what is in force for a group, and why.",
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
    CommandDescription command{.name = "diff",
                               .summary = "Show where groups differ.",
                               .options = {{.name = "GROUP",
                                            .target = &diff->groups,
                                            .help = "The groups of users, two or more.",
                                            .required = true}},
                               .run = [diff] { return diff->run(); }};
    addSource(command, diff->source);
    addPath(command, diff->source);
    addDeclaration(command, diff->source);
    addJson(command, diff->json);
    command.options.push_back({.name = "--html",
                               .target = &diff->html,
                               .help = "Print a page for browsers: every field, a column for each "
                                       "group, what differs marked.",
                               .apart = {"--json"}});
    command.options.push_back(languageOption(diff->language));
    return command;
}

CommandDescription groupsAction() {
    const auto groups = std::make_shared<ConfigGroups>();
    CommandDescription command{.name = "groups",
                               .summary = "List the groups, and how much is their own.",
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
        .summary = "Show what a program declares against the rows of all groups.",
        .details =
            "Exit codes: 0 done, 1 an error, 2 wrong usage, 3 no database, 4 a row would end\n"
            "the program's load.",
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
                               .summary = "Write the rows of a group into a file.",
                               .run = [exporting] { return exporting->run(); }};
    addSource(command, exporting->source);
    addGroup(command, exporting->group);
    addPath(command, exporting->source);
    command.options.push_back({.name = "--file",
                               .placeholder = "FILE",
                               .target = &exporting->file,
                               .help = "The file; else standard output."});
    addJson(command, exporting->json, "Write one JSON object instead.");
    return command;
}

CommandDescription importAction() {
    const auto import = std::make_shared<ConfigImport>();
    CommandDescription command{
        .name = "import",
        .summary = "Write a file into the rows of a group, all of it or nothing.",
        .run = [import] { return import->run(); }};
    addSource(command, import->source);
    addGroup(command, import->group);
    addDeclaration(command, import->source);
    command.options.push_back({.name = "--file",
                               .placeholder = "FILE",
                               .target = &import->file,
                               .help = "The file; else standard input."});
    command.options.push_back({.name = "--replace",
                               .target = &import->replace,
                               .help = "Remove the group's other rows."});
    addJson(command, import->json);
    return command;
}

}  // namespace

CommandDescription configOptions() {
    return {.name = "config",
            .summary = "Show, compare and carry the settings of groups.",
            .details = kFileForm,
            .actions = {groupsAction(), showAction(), declaredAction(), diffAction(),
                        exportAction(), importAction()}};
}

}  // namespace kap::cli
