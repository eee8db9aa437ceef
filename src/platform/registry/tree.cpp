#include "platform/registry/tree.hpp"

#include <algorithm>
#include <array>
#include <utility>

#include <kaputil/automation/error.hpp>

namespace kap::platform::registry {
namespace {

struct Root {
    std::u16string_view name;
    std::u16string_view brief;
    std::uint32_t handle;
};
constexpr std::array kRoots = {Root{u"HKEY_CLASSES_ROOT", u"HKCR", 0x80000000},
                               Root{u"HKEY_CURRENT_USER", u"HKCU", 0x80000001},
                               Root{u"HKEY_LOCAL_MACHINE", u"HKLM", 0x80000002},
                               Root{u"HKEY_USERS", u"HKU", 0x80000003}};

const Root* findRoot(std::u16string_view name) {
    const auto* found = std::ranges::find_if(kRoots, [&](const Root& root) {
        return unicode::sameName(root.name, name) || unicode::sameName(root.brief, name);
    });
    return found == kRoots.end() ? nullptr : found;
}

// Whether every name of the path has a character, and none breaks a line.
bool isWellFormed(std::u16string_view path) {
    return path.find(u"\\\\") == std::u16string_view::npos &&
           path.find_first_of(std::u16string_view(u"\r\n\0", 3)) == std::u16string_view::npos;
}

// The limits of Windows, without which a short text could ask for very much.
void checkSizes(std::u16string_view path) {
    std::size_t levels = 0;
    while (!path.empty()) {
        const std::size_t length = std::min(path.find(u'\\'), path.size());
        if (length > kLongestKeyName) {
            throw AutomationError(errors::kBadFileName,
                                  u"The name of a registry key has at most 255 characters");
        }
        if (++levels > kDeepestKey) {
            throw AutomationError(errors::kBadFileName,
                                  u"Registry keys are at most 512 levels deep");
        }
        path.remove_prefix(std::min(length + 1, path.size()));
    }
}

}  // namespace

std::optional<String> rootName(std::int32_t handle) {
    for (const Root& root : kRoots) {
        if (root.handle == static_cast<std::uint32_t>(handle)) {
            return String(root.name);
        }
    }
    return std::nullopt;
}

std::vector<std::u16string_view> roots() {
    std::vector<std::u16string_view> names;
    names.reserve(kRoots.size());
    for (const Root& root : kRoots) {
        names.push_back(root.name);
    }
    return names;
}

std::u16string normalPath(std::u16string_view path) {
    if (path.ends_with(u'\\')) {
        path.remove_suffix(1);
    }
    const std::size_t end = std::min(path.find(u'\\'), path.size());
    const Root* root = findRoot(path.substr(0, end));
    if (root == nullptr || !isWellFormed(path) || path.ends_with(u'\\')) {
        throw AutomationError(errors::kBadFileName,
                              u"'" + String(path) + u"' is no path of a registry key");
    }
    checkSizes(path);
    return std::u16string(root->name) + std::u16string(path.substr(end));
}

void checkValueName(std::u16string_view name) {
    if (name.size() > kLongestValueName) {
        throw AutomationError(errors::kBadFileName,
                              u"The name of a registry value has at most 16383 characters");
    }
}

bool isWithin(std::u16string_view path, std::u16string_view ancestor) {
    return path.size() >= ancestor.size() &&
           unicode::sameName(path.substr(0, ancestor.size()), ancestor) &&
           (path.size() == ancestor.size() || path[ancestor.size()] == u'\\');
}

std::u16string_view parentOf(std::u16string_view path) {
    const std::size_t end = path.rfind(u'\\');
    return end == std::u16string_view::npos ? std::u16string_view() : path.substr(0, end);
}

const Tree::Entry* findValue(const Tree::Key& key, std::u16string_view name) {
    const auto found = std::ranges::find_if(
        key.values, [&](const Tree::Entry& entry) { return unicode::sameName(entry.name, name); });
    return found == key.values.end() ? nullptr : &*found;
}

Tree::Entry& putValue(Tree::Key& key, std::u16string_view name, Value value) {
    const auto found = std::ranges::find_if(
        key.values, [&](const Tree::Entry& entry) { return unicode::sameName(entry.name, name); });
    if (found != key.values.end()) {
        found->value = std::move(value);
        return *found;
    }
    return key.values.emplace_back(Tree::Entry{{}, std::u16string(name), std::move(value)});
}

const Tree::Key* Tree::find(std::u16string_view path) const {
    const auto found = positions_.find(std::u16string(path));
    return found == positions_.end() ? nullptr : &keys_[found->second];
}

Tree::Key* Tree::find(std::u16string_view path) {
    const auto found = positions_.find(std::u16string(path));
    return found == positions_.end() ? nullptr : &keys_[found->second];
}

Tree::Key& Tree::create(std::u16string_view path) {
    if (Key* key = find(path)) {
        return *key;
    }
    if (!parentOf(path).empty()) {
        create(parentOf(path));
    }
    return insert(behindRelatives(path), path);
}

Tree::Key& Tree::createLast(std::u16string_view path) {
    if (Key* key = find(path)) {
        return *key;
    }
    if (!parentOf(path).empty()) {
        createLast(parentOf(path));
    }
    return insert(keys_.size(), path);
}

// Behind the last key that has the same parent or is that parent.
std::size_t Tree::behindRelatives(std::u16string_view path) const {
    const std::u16string_view parent = parentOf(path);
    std::size_t position = keys_.size();
    while (position > 0 && !parent.empty() && !isWithin(keys_[position - 1].path, parent)) {
        --position;
    }
    return position;
}

Tree::Key& Tree::insert(std::size_t position, std::u16string_view path) {
    keys_.insert(keys_.begin() + static_cast<std::ptrdiff_t>(position),
                 Key{{}, std::u16string(path), {}});
    index(position);
    return keys_[position];
}

void Tree::index(std::size_t from) {
    for (std::size_t i = from; i < keys_.size(); ++i) {
        positions_.insert_or_assign(keys_[i].path, i);
    }
}

bool Tree::remove(std::u16string_view path) {
    const std::size_t removed =
        std::erase_if(keys_, [&](const Key& key) { return isWithin(key.path, path); });
    if (removed > 0) {
        positions_.clear();
        index(0);
    }
    return removed > 0;
}

}  // namespace kap::platform::registry
