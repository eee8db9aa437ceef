#pragma once

#include <string>

#include <kaputil/core/cproprieta.hpp>
#include <kaputil/frame/string.hpp>

namespace kap::sqlscript {

// Whether a parameter is absent or blank.
[[nodiscard]] bool isBlank(const CProprieta& parameters, const String& name);
// A parameter that is not absent.
[[nodiscard]] String textOf(const CProprieta& parameters, const String& name);

// The statement that copies rows from the table FROM into the table TO, as the parameters say, with
// the lines around it that let it fail. `columns` holds the expression of each column to write
// under the column's name.
[[nodiscard]] std::u16string insertText(const CProprieta& parameters, const CProprieta& columns);

// The statement that deletes the rows that were copied.
[[nodiscard]] std::u16string deleteText(const CProprieta& parameters);

}  // namespace kap::sqlscript
