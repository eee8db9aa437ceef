#pragma once

#include <string>
#include <string_view>

namespace kap::com {

// What is built into the module beside its code: the type libraries and what the system shows of
// the file (versions, description). For the resource compiler.
[[nodiscard]] std::string resourceText();

// The manifest for using the module without registering it: a program that names it in its own
// manifest finds the classes in the module beside it. `architecture` is the system's name for the
// module's ("amd64", "x86").
[[nodiscard]] std::string manifestText(std::string_view architecture);

}  // namespace kap::com
