#pragma once

#include <string>

#include "com/type_libraries.hpp"

namespace kap::com {

// The interface description that a type library is compiled from: every class with its members,
// identifiers, defaults and help texts, and the enumerations. In code page 1252, which is what the
// compiler puts into the type library as it is.
//
// The compiler cannot write the default of a text that is passed by reference; such a parameter is
// optional and no more.
[[nodiscard]] std::string interfaceText(const TypeLibrary& types);

}  // namespace kap::com
