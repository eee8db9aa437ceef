#include "cli/commands/registry/registry_options.hpp"

#include <memory>
#include <utility>

#include "cli/commands/registry/registry_command.hpp"

namespace kap::cli {
namespace {

using Action = RegistryCommand::Action;
using Registry = std::shared_ptr<RegistryCommand>;

CommandDescription registryAction(const Registry& registry, Action action, std::string name,
                                  std::string summary, std::vector<Option> options) {
    return {.name = std::move(name),
            .summary = std::move(summary),
            .options = std::move(options),
            .run = [registry, action] {
                registry->action = action;
                return registry->run();
            }};
}

Option keyOption(const Registry& registry, bool required) {
    return {.name = "key",
            .target = &registry->key,
            .help = "The path of the key, as in HKCU\\Software\\Vertex.",
            .required = required};
}

Option valueOption(const Registry& registry, std::string help, bool required = false) {
    return {
        .name = "value", .target = &registry->name, .help = std::move(help), .required = required};
}

Option registryJson(const Registry& registry) {
    return {.name = "--json", .target = &registry->json, .help = "Print one JSON object."};
}

CommandDescription setValueAction(const Registry& registry) {
    return registryAction(
        registry, Action::Set, "set", "Set a value of a key that is there.",
        {keyOption(registry, true),
         valueOption(registry, "The name of the value; \"\" for the unnamed one.", true),
         {.name = "data", .target = &registry->data, .help = "What it becomes.", .required = true},
         {.name = "--type",
          .placeholder = "TYPE",
          .target = &registry->type,
          .help = "REG_SZ, REG_EXPAND_SZ, REG_DWORD (12 or 0x0c), REG_BINARY (01 0a ff) or the "
                  "number of another type, with its bytes.",
          .showsDefault = true}});
}

CommandDescription exportKeyAction(const Registry& registry) {
    return registryAction(
        registry, Action::Export, "export",
        "Write a key with everything below it as registration text.",
        {keyOption(registry, false),
         {.name = "--file",
          .placeholder = "FILE",
          .target = &registry->file,
          .help = "The file to write, as registry editors read it; without it the text "
                  "is printed."}});
}

}  // namespace

CommandDescription registryOptions() {
    const auto registry = std::make_shared<RegistryCommand>();
    return {
        .name = "registry",
        .summary = "Look at and change the user's registry.",
        .details =
            "Paths begin with HKEY_CLASSES_ROOT, HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE or\n"
            "HKEY_USERS, or in short HKCR, HKCU, HKLM, HKU. Quote them: the shell, too, reads \\.\n"
            "Exit codes: 0 done, 1 no such key or value, or a failure, 2 wrong usage.",
        .actions = {
            registryAction(registry, Action::List, "list",
                           "Show the keys and values right below a key, or the roots.",
                           {keyOption(registry, false), registryJson(registry)}),
            registryAction(
                registry, Action::Get, "get", "Print a value.",
                {keyOption(registry, true),
                 valueOption(registry, "The name of the value; without it the unnamed one."),
                 registryJson(registry)}),
            setValueAction(registry),
            registryAction(registry, Action::Create, "create", "Make a key and those above it.",
                           {keyOption(registry, true)}),
            registryAction(
                registry, Action::Delete, "delete",
                "Remove a key with everything below it, or one of its values.",
                {keyOption(registry, true),
                 valueOption(registry,
                             "The name of the value to remove; \"\" for the unnamed one.")}),
            registryAction(registry, Action::Import, "import",
                           "Do what a registration file (.reg) says.",
                           {{.name = "file",
                             .target = &registry->file,
                             .help = "The file.",
                             .required = true}}),
            exportKeyAction(registry)}};
}

}  // namespace kap::cli
