#pragma once

#include <string>
#include <utility>
#include <vector>

#include <kaputil/automation/string.hpp>
#include <kaputil/core/cproprieta.hpp>

namespace kap::sqlscript {

// The columns that a transfer writes, in their order: name and expression. Expressions are SQL of
// the client's and hold any characters, also those that mean something in a property string.
using ColumnMap = std::vector<std::pair<String, String>>;

// Whether a parameter is absent or blank.
[[nodiscard]] bool isBlank(const CProprieta& parameters, const String& name);
// A parameter that is not absent.
[[nodiscard]] String textOf(const CProprieta& parameters, const String& name);

// The statement that copies rows from the table FROM into the table TO, as the parameters say, with
// the lines around it that let it fail.
[[nodiscard]] std::u16string insertText(const CProprieta& parameters, const ColumnMap& columns);

// The statement that deletes the rows that were copied.
[[nodiscard]] std::u16string deleteText(const CProprieta& parameters);

}  // namespace kap::sqlscript
