#pragma once

#include <kaputil/automation/string.hpp>
#include <kaputil/automation/variant.hpp>

// Folders of the mail client, reached by late binding.
namespace kap::host {

// The names in a folder's path as a property string, whose properties are read by position. A path
// without "/" has none.
[[nodiscard]] String takePathApart(const String& path);

// The folder of contacts that a member is to work on, by its path from the store; the client's own
// one for "°°°" and the empty text. The unset object for a path without "/". Raises the client's
// errors.
[[nodiscard]] Variant contactFolder(const Variant& mailClient, const String& path);

// How many items that folder has. Every step along a path is taken whether or not the one before
// failed; the error of the last that did is raised at the end.
[[nodiscard]] Variant countItems(const String& path);

// Whether a late-bound call gave no object.
[[nodiscard]] bool isNothing(const Variant& value);

}  // namespace kap::host
