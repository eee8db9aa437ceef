#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <kaputil/platform/registry.hpp>

#include "base/unicode.hpp"

namespace kap::platform::registry {

// The keys and values of a registry in memory, in the order of its text, with the comments in front
// of each.
class Tree {
public:
    struct Entry {
        std::u16string comment;  // whole lines
        std::u16string name;
        Value value;
    };
    struct Key {
        std::u16string comment;
        std::u16string path;  // from its root, which has its whole name
        std::vector<Entry> values;
    };

    [[nodiscard]] const std::vector<Key>& keys() const noexcept { return keys_; }
    [[nodiscard]] const Key* find(std::u16string_view path) const;
    [[nodiscard]] Key* find(std::u16string_view path);

    // The key, made with those above it when it is missing: behind its relatives.
    Key& create(std::u16string_view path);
    // The same, made at the end: a text is read in its own order.
    Key& createLast(std::u16string_view path);
    // Removes a key with everything below it; false when it was not there.
    bool remove(std::u16string_view path);

    std::u16string trailingComment;

private:
    Key& insert(std::size_t position, std::u16string_view path);
    [[nodiscard]] std::size_t behindRelatives(std::u16string_view path) const;
    void index(std::size_t from);

    std::vector<Key> keys_;
    std::unordered_map<std::u16string, std::size_t, unicode::NameHash, unicode::NameEqual>
        positions_;
};

// The value of a key with this name, or null.
[[nodiscard]] const Tree::Entry* findValue(const Tree::Key& key, std::u16string_view name);

// Sets a value where it stands, or behind the others.
Tree::Entry& putValue(Tree::Key& key, std::u16string_view name, Value value);

// Whether a path is `ancestor` or lies below it.
[[nodiscard]] bool isWithin(std::u16string_view path, std::u16string_view ancestor);

// The path of the key above; empty for a root.
[[nodiscard]] std::u16string_view parentOf(std::u16string_view path);

// How long names may be, and how deep keys: as on Windows.
inline constexpr std::size_t kLongestKeyName = 255;
inline constexpr std::size_t kLongestValueName = 16383;
inline constexpr std::size_t kDeepestKey = 512;

// The path with the whole name of its root and without a '\' at its end. Raises 52 when it does not
// begin with a root, has a name without letters in it, or is beyond the limits above.
[[nodiscard]] std::u16string normalPath(std::u16string_view path);

// Raises 52 for a name of a value that is too long.
void checkValueName(std::u16string_view name);

// The whole names of the roots.
[[nodiscard]] std::vector<std::u16string_view> roots();

}  // namespace kap::platform::registry
