#include <kaputil/automation/error.hpp>
#include <kaputil/automation/plain_text.hpp>
#include <kaputil/platform/registry.hpp>

#include "base/unicode.hpp"
#include "platform/registry/registration_text.hpp"
#include "platform/text_encoding.hpp"

// Registration texts from and to the system's registry.
namespace kap::platform::registry {
namespace {

void load(std::u16string_view path, Tree& tree, bool everythingBelow) {
    if (!hasKey(path)) {
        return;
    }
    Tree::Key& key = tree.createLast(path);
    for (NamedValue& one : valuesOf(path)) {
        putValue(key, one.name, std::move(one.value));
    }
    if (everythingBelow) {
        for (const String& name : keysBelow(path)) {
            load(std::u16string(path) + u"\\" + name.units(), tree, true);
        }
    }
}

// Of the registry what a text speaks of: the keys it names, and all of those it removes.
Tree concerned(std::string_view bytes) {
    Tree tree;
    const std::u16string text = decodeText(encodingOf(bytes), bytes);
    std::u16string_view rest = text;
    while (!rest.empty()) {
        const std::size_t length = std::min(rest.find(u'\n'), rest.size());
        const std::u16string_view line = unicode::trim(rest.substr(0, length));
        rest.remove_prefix(std::min(length + 1, rest.size()));
        const std::size_t end = line.rfind(u']');
        if (line.starts_with(u'[') && end != std::u16string_view::npos) {
            const bool removing = line.substr(1).starts_with(u'-');
            const std::size_t begin = removing ? 2 : 1;
            load(normalPath(line.substr(begin, end - begin)), tree, removing);
        }
    }
    return tree;
}

void removeWhatIsGone(const Tree& before, const Tree& after) {
    for (const Tree::Key& key : before.keys()) {
        const Tree::Key* left = after.find(key.path);
        if (left == nullptr) {
            if (!parentOf(key.path).empty()) {
                deleteKey(key.path);
            }
            continue;
        }
        for (const Tree::Entry& entry : key.values) {
            if (findValue(*left, entry.name) == nullptr) {
                deleteValue(key.path, entry.name);
            }
        }
    }
}

void writeWhatIsThere(const Tree& after) {
    for (const Tree::Key& key : after.keys()) {
        createKey(key.path);
        for (const Tree::Entry& entry : key.values) {
            if (!setValue(key.path, entry.name, entry.value)) {
                throw AutomationError(errors::kPathNotFound);
            }
        }
    }
}

}  // namespace

void importText(std::string_view bytes) {
    Tree unused;
    try {
        applyText(bytes, unused);
    } catch (const MalformedText& fault) {
        throw AutomationError(errors::kInvalidArgument,
                              u"line " + String(plain::text(fault.line())) + u": " +
                                  String(std::string_view(fault.what())));
    }
    const Tree before = concerned(bytes);
    Tree after = before;
    applyText(bytes, after);
    removeWhatIsGone(before, after);
    writeWhatIsThere(after);
}

std::string exportText(std::u16string_view key) {
    Tree tree;
    if (key.empty()) {
        for (const std::u16string_view root : roots()) {
            load(root, tree, true);
        }
        return String(textOf(tree)).utf8();
    }
    const std::u16string path = normalPath(key);
    if (!hasKey(path)) {
        throw AutomationError(errors::kPathNotFound);
    }
    load(path, tree, true);
    return String(textOf(tree, path)).utf8();
}

}  // namespace kap::platform::registry
