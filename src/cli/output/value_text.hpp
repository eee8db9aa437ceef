#pragma once

#include <string>

#include <nlohmann/json.hpp>

#include <kaputil/automation/variant.hpp>

// Values as a program's text writes them, the same in every language: 2.5, True,
// #2003-12-25 10:30:00#, "abc", Null.
namespace kap::cli {

// The type as people call it: "Double", "Byte(0 To 7)" for an array.
[[nodiscard]] std::string typeText(const Variant& value);

// The value as a program writes it: texts in quotes, with those inside doubled; objects by the name
// of their class; the elements of an array in parentheses. Of Empty, Null and a missing argument
// it is the word for it.
[[nodiscard]] std::string literalText(const Variant& value);

// The value for programs: numbers, true and false, texts, null; exact decimals and amounts as texts
// ("12.5"), dates as "2003-12-25T10:30:00", objects as the name of their class, arrays as lists.
[[nodiscard]] nlohmann::ordered_json jsonValue(const Variant& value);

}  // namespace kap::cli
