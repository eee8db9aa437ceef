#include <kaputil/platform/registry.hpp>

#include <utility>

#include <kaputil/automation/error.hpp>
#include <kaputil/automation/plain_text.hpp>
#include <kaputil/platform/folders.hpp>

#include "platform/folder_lock.hpp"
#include "platform/paths.hpp"
#include "platform/registry/registration_text.hpp"
#include "platform/text_encoding.hpp"
#include "platform/whole_file.hpp"

// The user's registry as one file in the form of registry editors.
namespace kap::platform::registry {
namespace {

std::filesystem::path storeFile() {
    return settingsFolder() / "registry.reg";
}

Tree load() {
    Tree tree;
    const auto bytes = readFile(storeFile());
    if (!bytes || bytes->empty()) {
        return tree;
    }
    try {
        applyText(*bytes, tree);
    } catch (const MalformedText& fault) {
        throw AutomationError(errors::kDeviceError, pathText(storeFile()) + u", line " +
                                                        String(plain::text(fault.line())) + u": " +
                                                        String(std::string_view(fault.what())));
    }
    return tree;
}

void store(const Tree& tree) {
    const auto bytes = encodeText(TextEncoding::Utf8, textOf(tree));
    if (!bytes) {
        throw AutomationError(errors::kInvalidArgument);
    }
    replaceFile(storeFile(), *bytes, FileAccess::Private);
}

// Reads, changes and writes the store while no other process does. `change` tells whether there is
// anything to write.
template <class Change>
bool update(Change change) {
    makePrivateFolder(settingsFolder());
    const FolderLock lock(settingsFolder());
    Tree tree = load();
    if (!change(tree)) {
        return false;
    }
    store(tree);
    return true;
}

// A root is always there; any other key is when the store has it.
bool isThere(const Tree& tree, std::u16string_view path) {
    return parentOf(path).empty() || tree.find(path) != nullptr;
}

}  // namespace

bool hasKey(std::u16string_view key) {
    const std::u16string path = normalPath(key);
    return isThere(load(), path);
}

std::optional<Value> value(std::u16string_view key, std::u16string_view name) {
    const Tree tree = load();
    const Tree::Key* found = tree.find(normalPath(key));
    const Tree::Entry* entry = found == nullptr ? nullptr : findValue(*found, name);
    return entry == nullptr ? std::nullopt : std::optional(entry->value);
}

std::vector<String> keysBelow(std::u16string_view key) {
    std::vector<String> names;
    if (key.empty()) {
        for (const std::u16string_view root : roots()) {
            names.emplace_back(root);
        }
        return names;
    }
    const std::u16string path = normalPath(key);
    const Tree tree = load();
    for (const Tree::Key& candidate : tree.keys()) {
        if (unicode::sameName(parentOf(candidate.path), path)) {
            names.emplace_back(std::u16string_view(candidate.path).substr(path.size() + 1));
        }
    }
    return names;
}

std::vector<NamedValue> valuesOf(std::u16string_view key) {
    const Tree tree = load();
    std::vector<NamedValue> values;
    if (const Tree::Key* found = tree.find(normalPath(key))) {
        for (const Tree::Entry& entry : found->values) {
            values.push_back({entry.name, entry.value});
        }
    }
    return values;
}

bool setValue(std::u16string_view key, std::u16string_view name, const Value& value) {
    const std::u16string path = normalPath(key);
    if (name.find_first_of(std::u16string_view(u"\r\n\0", 3)) != std::u16string_view::npos ||
        !unicode::utf8(name)) {
        throw AutomationError(errors::kBadFileName, u"The name of a registry value is one line");
    }
    checkValueName(name);
    return update([&](Tree& tree) {
        if (!isThere(tree, path)) {
            return false;
        }
        putValue(tree.create(path), name, value);
        return true;
    });
}

bool createKey(std::u16string_view key) {
    const std::u16string path = normalPath(key);
    return update([&](Tree& tree) {
        const bool isNew = tree.find(path) == nullptr;
        tree.create(path);
        return isNew;
    });
}

bool deleteKey(std::u16string_view key) {
    const std::u16string path = normalPath(key);
    if (parentOf(path).empty()) {
        throw AutomationError(errors::kInvalidArgument, u"A root cannot be removed");
    }
    return update([&](Tree& tree) { return tree.remove(path); });
}

bool deleteValue(std::u16string_view key, std::u16string_view name) {
    const std::u16string path = normalPath(key);
    return update([&](Tree& tree) {
        Tree::Key* found = tree.find(path);
        return found != nullptr && std::erase_if(found->values, [&](const Tree::Entry& entry) {
                                       return unicode::sameName(entry.name, name);
                                   }) > 0;
    });
}

void importText(std::string_view bytes) {
    update([&](Tree& tree) {
        try {
            applyText(bytes, tree);
        } catch (const MalformedText& fault) {
            throw AutomationError(errors::kInvalidArgument,
                                  u"line " + String(plain::text(fault.line())) + u": " +
                                      String(std::string_view(fault.what())));
        }
        return true;
    });
}

std::string exportText(std::u16string_view key) {
    const std::u16string path = key.empty() ? std::u16string() : normalPath(key);
    const Tree tree = load();
    if (!path.empty() && !isThere(tree, path)) {
        throw AutomationError(errors::kPathNotFound);
    }
    return String(textOf(tree, path)).utf8();
}

}  // namespace kap::platform::registry
