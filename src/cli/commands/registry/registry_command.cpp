#include "cli/commands/registry/registry_command.hpp"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>

#include <nlohmann/json.hpp>

#include <kaputil/automation/error.hpp>
#include <kaputil/platform/registry.hpp>

#include "cli/commands/registry/registry_value_text.hpp"
#include "cli/output/exit_codes.hpp"
#include "cli/output/shown_text.hpp"
#include "cli/output/terminal.hpp"
#include "cli/output/usage_error.hpp"
#include "cli/text_file.hpp"

namespace kap::cli {
namespace {

namespace registry = platform::registry;

int fail(const std::string& sentence) {
    std::cout.flush();
    std::cerr << "kaputil: " << shownText(sentence) << '\n';
    return kFailed;
}

int noSuchKey(const std::string& key) {
    return fail("there is no key " + key);
}

int noSuchValue(const RegistryCommand& command) {
    const std::string name = command.name.value_or("");
    return fail("the key " + command.key + " has no value " +
                (name.empty() ? "without a name" : name));
}

// The unnamed value as registration texts write it.
std::string nameText(const String& name) {
    return name.empty() ? "@" : shownText(name.utf8());
}

nlohmann::ordered_json listJson(const RegistryCommand& command) {
    nlohmann::ordered_json keys = nlohmann::ordered_json::array();
    for (const String& key : registry::keysBelow(String(command.key))) {
        keys.push_back(key.utf8());
    }
    nlohmann::ordered_json values = nlohmann::ordered_json::array();
    if (!command.key.empty()) {
        for (const registry::NamedValue& one : registry::valuesOf(String(command.key))) {
            values.push_back({{"name", one.name.utf8()},
                              {"type", registryTypeText(one.value.type)},
                              {"data", registryDataJson(one.value)}});
        }
    }
    return {{"key", command.key}, {"keys", keys}, {"values", values}};
}

void printList(const RegistryCommand& command) {
    const Terminal terminal = Terminal::ofStandardOutput();
    for (const String& key : registry::keysBelow(String(command.key))) {
        std::cout << terminal.styled(Style::Bold, shownText(key.utf8()) + "\\") << '\n';
    }
    if (command.key.empty()) {
        return;
    }
    const auto values = registry::valuesOf(String(command.key));
    std::size_t names = 0;
    std::size_t types = 0;
    for (const registry::NamedValue& one : values) {
        names = std::max(names, columnsOf(nameText(one.name)));
        types = std::max(types, columnsOf(registryTypeText(one.value.type)));
    }
    for (const registry::NamedValue& one : values) {
        std::cout << padded(nameText(one.name), names) << "  "
                  << padded(registryTypeText(one.value.type), types) << "  "
                  << shownText(registryDataText(one.value)) << '\n';
    }
}

int list(const RegistryCommand& command) {
    if (!command.key.empty() && !registry::hasKey(String(command.key))) {
        return noSuchKey(command.key);
    }
    if (command.json) {
        std::cout << listJson(command).dump(2) << '\n';
    } else {
        printList(command);
    }
    return kSuccess;
}

int get(const RegistryCommand& command) {
    if (!registry::hasKey(String(command.key))) {
        return noSuchKey(command.key);
    }
    const auto value = registry::value(String(command.key), String(command.name.value_or("")));
    if (!value) {
        return noSuchValue(command);
    }
    if (command.json) {
        const nlohmann::ordered_json object = {{"type", registryTypeText(value->type)},
                                               {"data", registryDataJson(*value)}};
        std::cout << object.dump() << '\n';
    } else {
        std::cout << registryDataText(*value) << '\n';
    }
    return kSuccess;
}

int set(const RegistryCommand& command) {
    const registry::Value value = registryValue(command.type, command.data);
    if (!registry::setValue(String(command.key), String(*command.name), value)) {
        return fail("there is no key " + command.key + "; \"kaputil registry create\" makes it");
    }
    return kSuccess;
}

int remove(const RegistryCommand& command) {
    if (!command.name) {
        return registry::deleteKey(String(command.key)) ? kSuccess : noSuchKey(command.key);
    }
    return registry::deleteValue(String(command.key), String(*command.name)) ? kSuccess
                                                                             : noSuchValue(command);
}

int importFile(const RegistryCommand& command) {
    try {
        registry::importText(bytesOfFile(command.file));
    } catch (const AutomationError& error) {
        if (error.number() != errors::kInvalidArgument) {
            throw;
        }
        return fail(command.file + ", " + error.what());
    }
    return kSuccess;
}

int exportKey(const RegistryCommand& command) {
    if (!command.key.empty() && !registry::hasKey(String(command.key))) {
        return noSuchKey(command.key);
    }
    if (command.file.empty()) {
        std::cout << registry::exportText(String(command.key));
        return kSuccess;
    }
    errno = 0;
    std::ofstream out(command.file, std::ios::binary);
    out << registry::exportForEditors(String(command.key));
    if (!out.flush()) {
        return fail("cannot write " + command.file + ": " + std::strerror(errno));
    }
    return kSuccess;
}

void checkUtf8(const std::string& argument) {
    try {
        const String text(argument);
    } catch (const AutomationError&) {
        throw UsageError("an argument is not UTF-8");
    }
}

int perform(const RegistryCommand& command) {
    switch (command.action) {
        case RegistryCommand::Action::List:
            return list(command);
        case RegistryCommand::Action::Get:
            return get(command);
        case RegistryCommand::Action::Set:
            return set(command);
        case RegistryCommand::Action::Create:
            registry::createKey(String(command.key));
            return kSuccess;
        case RegistryCommand::Action::Delete:
            return remove(command);
        case RegistryCommand::Action::Import:
            return importFile(command);
        case RegistryCommand::Action::Export:
            break;
    }
    return exportKey(command);
}

}  // namespace

int RegistryCommand::run() const {
    for (const std::string& argument : {key, name.value_or(""), data}) {
        checkUtf8(argument);
    }
    try {
        return perform(*this);
    } catch (const AutomationError& error) {
        return fail(error.what());
    }
}

}  // namespace kap::cli
