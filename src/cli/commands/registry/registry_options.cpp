#include "cli/commands/registry/registry_options.hpp"

#include <string>

namespace kap::cli {
namespace {

CLI::App* addAction(CLI::App& command, RegistryCommand& registry, const std::string& name,
                    RegistryCommand::Action action, const std::string& text) {
    CLI::App* added = command.add_subcommand(name, text);
    added->callback([&registry, action] { registry.action = action; });
    return added;
}

CLI::Option* addKey(CLI::App& action, RegistryCommand& registry) {
    return action
        .add_option("key", registry.key, "The path of the key, as in HKCU\\Software\\Vertex.")
        ->type_name("");
}

CLI::Option* addName(CLI::App& action, RegistryCommand& registry, const std::string& text) {
    return action.add_option("value", registry.name, text)->type_name("");
}

void addJson(CLI::App& action, RegistryCommand& registry) {
    action.add_flag("--json", registry.json, "Print one JSON object.");
}

}  // namespace

CLI::App* addRegistry(CLI::App& app, RegistryCommand& registry) {
    using Action = RegistryCommand::Action;
    CLI::App* command = app.add_subcommand("registry", "Look at and change the user's registry.");
    command->require_subcommand(1);
    command->footer(
        "Paths begin with HKEY_CLASSES_ROOT, HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE or\n"
        "HKEY_USERS, or in short HKCR, HKCU, HKLM, HKU. Quote them: the shell, too, reads \\.\n"
        "Exit codes: 0 done, 1 no such key or value, or a failure, 2 wrong usage.");

    CLI::App* list = addAction(*command, registry, "list", Action::List,
                               "Show the keys and values right below a key, or the roots.");
    addKey(*list, registry);
    addJson(*list, registry);

    CLI::App* get = addAction(*command, registry, "get", Action::Get, "Print a value.");
    addKey(*get, registry)->required();
    addName(*get, registry, "The name of the value; without it the unnamed one.");
    addJson(*get, registry);

    CLI::App* set =
        addAction(*command, registry, "set", Action::Set, "Set a value of a key that is there.");
    addKey(*set, registry)->required();
    addName(*set, registry, "The name of the value; \"\" for the unnamed one.")->required();
    set->add_option("data", registry.data, "What it becomes.")->type_name("")->required();
    set->add_option("--type", registry.type,
                    "REG_SZ, REG_EXPAND_SZ, REG_DWORD (12 or 0x0c), REG_BINARY (01 0a ff) or the "
                    "number of another type, with its bytes.")
        ->type_name("TYPE")
        ->capture_default_str();

    CLI::App* create =
        addAction(*command, registry, "create", Action::Create, "Make a key and those above it.");
    addKey(*create, registry)->required();

    CLI::App* remove = addAction(*command, registry, "delete", Action::Delete,
                                 "Remove a key with everything below it, or one of its values.");
    addKey(*remove, registry)->required();
    addName(*remove, registry, "The name of the value to remove; \"\" for the unnamed one.");

    CLI::App* import = addAction(*command, registry, "import", Action::Import,
                                 "Do what a registration file (.reg) says.");
    import->add_option("file", registry.file, "The file.")->type_name("")->required();

    CLI::App* exporting = addAction(*command, registry, "export", Action::Export,
                                    "Write a key with everything below it as registration text.");
    addKey(*exporting, registry);
    exporting
        ->add_option("--file", registry.file,
                     "The file to write, as registry editors read it; without it the text is "
                     "printed.")
        ->type_name("FILE");
    return command;
}

}  // namespace kap::cli
