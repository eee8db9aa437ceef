#pragma once

#include <string>

#include "com/type_libraries.hpp"

namespace kap::com {

// Where the system finds a type library: the module's path, with the number of the resource behind
// it unless it is the first.
[[nodiscard]] std::u16string carriedPath(const TypeLibrary& types);

// Gives the objects of the type libraries' classes the type information that the module carries.
void offerTypeInformation();

// Lets the loaded type libraries go: they must not outlive the module.
void dropTypeInformation();

}  // namespace kap::com
