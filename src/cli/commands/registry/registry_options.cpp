#include "cli/commands/registry/registry_options.hpp"

#include <memory>
#include <utility>

#include "cli/commands/registry/registry_command.hpp"

namespace kap::cli {
namespace {

using Action = RegistryCommand::Action;
using Registry = std::shared_ptr<RegistryCommand>;

CommandDescription registryAction(const Registry& registry, Action action, std::string name,
                                  BothLanguages summary, std::vector<Option> options) {
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
            .help = {"The path of the key, as in HKCU\\Software\\Vertex.",
                     "Il percorso della chiave, come HKCU\\Software\\Vertex."},
            .required = required};
}

Option valueOption(const Registry& registry, BothLanguages help, bool required = false) {
    return {
        .name = "value", .target = &registry->name, .help = std::move(help), .required = required};
}

Option registryJson(const Registry& registry) {
    return {.name = "--json",
            .target = &registry->json,
            .help = {"Print one JSON object.", "Stampa un oggetto JSON."}};
}

CommandDescription setValueAction(const Registry& registry) {
    return registryAction(
        registry, Action::Set, "set",
        {"Set a value of a key that is there.", "Imposta un valore di una chiave che c'è."},
        {keyOption(registry, true),
         valueOption(registry,
                     {"The name of the value; \"\" for the unnamed one.",
                      "Il nome del valore; \"\" per quello senza nome."},
                     true),
         {.name = "data",
          .target = &registry->data,
          .help = {"What it becomes.", "Che cosa diventa."},
          .required = true},
         {.name = "--type",
          .placeholder = "TYPE",
          .target = &registry->type,
          .help = {"REG_SZ, REG_EXPAND_SZ, REG_DWORD (12 or 0x0c), REG_BINARY (01 0a ff) or the "
                   "number of another type, with its bytes.",
                   "REG_SZ, REG_EXPAND_SZ, REG_DWORD (12 o 0x0c), REG_BINARY (01 0a ff) o il "
                   "numero di un altro tipo, con i suoi byte."},
          .showsDefault = true}});
}

CommandDescription exportKeyAction(const Registry& registry) {
    return registryAction(
        registry, Action::Export, "export",
        {"Write a key with everything below it as registration text.",
         "Scrive una chiave con tutto quello che contiene come testo di registrazione."},
        {keyOption(registry, false),
         {.name = "--file",
          .placeholder = "FILE",
          .target = &registry->file,
          .help = {"The file to write, as registry editors read it; without it the text "
                   "is printed.",
                   "Il file da scrivere, come lo leggono gli editor del registro; se manca, il "
                   "testo viene stampato."}}});
}

}  // namespace

CommandDescription registryOptions() {
    const auto registry = std::make_shared<RegistryCommand>();
    return {
        .name = "registry",
        .summary = {"Look at and change the user's registry.",
                    "Mostra e modifica il registro dell'utente."},
        .details =
            {R"(Paths begin with HKEY_CLASSES_ROOT, HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE or
HKEY_USERS, or in short HKCR, HKCU, HKLM, HKU. Quote them: the shell, too, reads \.
Exit codes: 0 done, 1 no such key or value, or a failure, 2 wrong usage.)",
             R"(I percorsi cominciano con HKEY_CLASSES_ROOT, HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE o
HKEY_USERS, oppure in breve HKCR, HKCU, HKLM, HKU. Vanno fra apici: anche la shell legge \.
Codici d'uscita: 0 eseguito, 1 la chiave o il valore non c'è, o un errore, 2 uso errato.)"},
        .actions = {
            registryAction(registry, Action::List, "list",
                           {"Show the keys and values right below a key, or the roots.",
                            "Mostra le chiavi e i valori subito sotto una chiave, o le radici."},
                           {keyOption(registry, false), registryJson(registry)}),
            registryAction(
                registry, Action::Get, "get", {"Print a value.", "Stampa un valore."},
                {keyOption(registry, true),
                 valueOption(registry, {"The name of the value; without it the unnamed one.",
                                        "Il nome del valore; se manca, quello senza nome."}),
                 registryJson(registry)}),
            setValueAction(registry),
            registryAction(
                registry, Action::Create, "create",
                {"Make a key and those above it.", "Crea una chiave e quelle che la contengono."},
                {keyOption(registry, true)}),
            registryAction(
                registry, Action::Delete, "delete",
                {"Remove a key with everything below it, or one of its values.",
                 "Elimina una chiave con tutto quello che contiene, o uno dei suoi valori."},
                {keyOption(registry, true),
                 valueOption(registry,
                             {"The name of the value to remove; \"\" for the unnamed one.",
                              "Il nome del valore da eliminare; \"\" per quello senza nome."})}),
            registryAction(registry, Action::Import, "import",
                           {"Do what a registration file (.reg) says.",
                            "Esegue quello che dice un file di registrazione (.reg)."},
                           {{.name = "file",
                             .target = &registry->file,
                             .help = {"The file.", "Il file."},
                             .required = true}}),
            exportKeyAction(registry)}};
}

}  // namespace kap::cli
