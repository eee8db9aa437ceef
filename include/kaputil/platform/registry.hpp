#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <kaputil/automation/string.hpp>
#include <kaputil/base/export.hpp>

// The registry: keys in a tree, each with named values of many types.
//
// A key is named by its path from a root, "HKEY_CURRENT_USER\Software\Vertex"; the roots may be
// written short (HKCR, HKCU, HKLM, HKU). Names are compared ignoring case. The unnamed value of a
// key has the empty name.
//
// Where the host has no registry, the user's is one text file in the form that registry editors
// import and export, which people may edit, too. Each change is read, made and written under a
// lock, in one step, so that several processes may write at once and a crash loses nothing. Values
// of every type are kept, and so are comments.
//
// All functions raise 52 for a path that does not begin with a root, the file-system object's
// errors, and 57 for a file that somebody damaged; the description names its line.
namespace kap::platform::registry {

// The types that the library itself reads and writes; any other number is kept as it is.
inline constexpr std::uint32_t kText = 1;    // UTF-16, low byte first, with a NUL behind
inline constexpr std::uint32_t kNumber = 4;  // four bytes, low byte first

struct Value {
    std::uint32_t type = 0;
    std::vector<std::uint8_t> data;
    friend bool operator==(const Value&, const Value&) = default;
};

struct NamedValue {
    String name;
    Value value;
};

// Values made of a text and of a number, and the text of one of type text: without the NUL at its
// end.
[[nodiscard]] KAPUTIL_EXPORT Value textValue(std::u16string_view text);
[[nodiscard]] KAPUTIL_EXPORT Value numberValue(std::int32_t number);
[[nodiscard]] KAPUTIL_EXPORT String textOf(const Value& value);
[[nodiscard]] KAPUTIL_EXPORT std::int32_t numberOf(const Value& value);

// The name of the root with this predefined handle (-2147483647 is HKEY_CURRENT_USER); nullopt for
// any other number.
[[nodiscard]] KAPUTIL_EXPORT std::optional<String> rootName(std::int32_t handle);

[[nodiscard]] KAPUTIL_EXPORT bool hasKey(std::u16string_view key);
// The value; nullopt when the key or the value is not there.
[[nodiscard]] KAPUTIL_EXPORT std::optional<Value> value(std::u16string_view key,
                                                        std::u16string_view name);

// The names of the keys right below a key and its values, in the order of the store. Empty when the
// key is not there. Of the empty path the keys are the roots.
[[nodiscard]] KAPUTIL_EXPORT std::vector<String> keysBelow(std::u16string_view key);
[[nodiscard]] KAPUTIL_EXPORT std::vector<NamedValue> valuesOf(std::u16string_view key);

// Sets a value of a key; false, and nothing written, when the key is not there.
[[nodiscard]] KAPUTIL_EXPORT bool setValue(std::u16string_view key, std::u16string_view name,
                                           const Value& value);

// Makes a key and those above it; false when it was there.
KAPUTIL_EXPORT bool createKey(std::u16string_view key);

// Removes a key with everything below it, or one of its values; false when it was not there. A root
// cannot be removed (5).
KAPUTIL_EXPORT bool deleteKey(std::u16string_view key);
KAPUTIL_EXPORT bool deleteValue(std::u16string_view key, std::u16string_view name);

// Does what a registration text says: sets values, makes keys, removes those with a '-'. It may be
// in UTF-8, in UTF-16 or, in the older form, in code page 1252. Raises 5, and changes nothing, for
// a text that is none; the description names the line.
KAPUTIL_EXPORT void importText(std::string_view bytes);

// A key with everything below it, or with an empty path everything, as a registration text in
// UTF-8. Raises 76 when the key is not there.
[[nodiscard]] KAPUTIL_EXPORT std::string exportText(std::u16string_view key);

// The same in the bytes that registry editors read: UTF-16 with CR LF.
[[nodiscard]] KAPUTIL_EXPORT std::string exportForEditors(std::u16string_view key);

}  // namespace kap::platform::registry
