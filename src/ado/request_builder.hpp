#pragma once

#include <cstdint>

#include <kaputil/automation/string.hpp>
#include <kaputil/data/enumerations.hpp>

#include "data/driver.hpp"

namespace kap::ado {

// The request that runs a text: a script, a table's name or a procedure's name, as `options` say
// (values of CommandTypeEnum, with bits of ExecuteOptionEnum). What says nothing of the kind is a
// script. Raises 3001 for a kind that does not exist.
[[nodiscard]] Request requestFor(const String& text, std::int32_t options);

// How the rows and the results come, as the options of a call say: as they are needed for who reads
// them once, in the background for who asks for that, at once for anybody else.
void comeAsNeeded(Request& request, bool readOnce, std::int32_t options) noexcept;

// Whether the options say what the text is.
[[nodiscard]] bool saysKind(std::int32_t options) noexcept;

// Whether the options ask for the rows to be thrown away.
[[nodiscard]] bool wantsNoRecords(std::int32_t options) noexcept;

// Seconds as the objects hold them; raises 3001 for less than none.
[[nodiscard]] std::int32_t checkedSeconds(std::int32_t seconds);

}  // namespace kap::ado
