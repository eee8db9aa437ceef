#include "cli/commands/config/config_options.hpp"

#include "cli/table_name.hpp"

namespace kap::cli {
namespace {

void addSource(CLI::App& command, ConfigurationSource& source) {
    command
        .add_option("--connection", source.connection,
                    "For example \"Provider=KapLocal;Data Source=azienda.db\".")
        ->type_name("STRING")
        ->required();
    command.add_option("--table", source.table, "The configuration table.")
        ->type_name("NAME")
        ->check([](const std::string& name) { return tableNameFault(name); })
        ->capture_default_str();
}

void addDeclaration(CLI::App& command, ConfigurationSource& source) {
    command
        .add_option("--declaration", source.declaration,
                    "The file in which the program declares its fields; without it the table "
                    "alone tells which there are.")
        ->type_name("FILE");
}

void addPath(CLI::App& command, ConfigurationSource& source) {
    command
        .add_option("--path", source.path,
                    "Only what is below it, for example 'Vendite\\Documenti'.")
        ->type_name("PATH");
}

void addGroup(CLI::App& command, std::string& group) {
    command.add_option("--group", group, "The group of users; DEFAULT is everybody's.")
        ->type_name("NAME")
        ->required();
}

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

}  // namespace

void ConfigOptions::addTo(CLI::App& app) {
    command_ = app.add_subcommand("config", "Show, compare and carry the settings of groups.");
    command_->require_subcommand(1);
    command_->footer(kFileForm);
    addShow();
    addDiff();
    addExport();
    addImport();
}

void ConfigOptions::addShow() {
    showCommand_ = command_->add_subcommand("show", "Show what is in force for a group, and why.");
    addSource(*showCommand_, show_.source);
    addGroup(*showCommand_, show_.group);
    addPath(*showCommand_, show_.source);
    addDeclaration(*showCommand_, show_.source);
    showCommand_->add_flag("--json", show_.json, "Print one JSON object.");
}

void ConfigOptions::addDiff() {
    diffCommand_ = command_->add_subcommand("diff", "Show where two groups differ.");
    diffCommand_->add_option("GROUP1", diff_.first, "A group of users.")->type_name("")->required();
    diffCommand_->add_option("GROUP2", diff_.second, "Another one.")->type_name("")->required();
    addSource(*diffCommand_, diff_.source);
    addPath(*diffCommand_, diff_.source);
    addDeclaration(*diffCommand_, diff_.source);
    diffCommand_->add_flag("--json", diff_.json, "Print one JSON object.");
}

void ConfigOptions::addExport() {
    exportCommand_ = command_->add_subcommand("export", "Write the rows of a group into a file.");
    addSource(*exportCommand_, export_.source);
    addGroup(*exportCommand_, export_.group);
    addPath(*exportCommand_, export_.source);
    exportCommand_->add_option("--file", export_.file, "The file; else standard output.")
        ->type_name("FILE");
    exportCommand_->add_flag("--json", export_.json, "Write one JSON object instead.");
}

void ConfigOptions::addImport() {
    importCommand_ = command_->add_subcommand(
        "import", "Write a file into the rows of a group, all of it or nothing.");
    addSource(*importCommand_, import_.source);
    addGroup(*importCommand_, import_.group);
    addDeclaration(*importCommand_, import_.source);
    importCommand_->add_option("--file", import_.file, "The file; else standard input.")
        ->type_name("FILE");
    importCommand_->add_flag("--replace", import_.replace, "Remove the group's other rows.");
    importCommand_->add_flag("--json", import_.json, "Print one JSON object.");
}

int ConfigOptions::run() const {
    if (showCommand_->parsed()) {
        return show_.run();
    }
    if (diffCommand_->parsed()) {
        return diff_.run();
    }
    return exportCommand_->parsed() ? export_.run() : import_.run();
}

}  // namespace kap::cli
