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

// How the rows may come for who reads them once, or for anybody else.
[[nodiscard]] inline Request::Streaming streamingFor(bool readOnce) noexcept {
    return readOnce ? Request::Streaming::OfReading : Request::Streaming::Never;
}

// Whether the options ask for the rows to be thrown away.
[[nodiscard]] bool wantsNoRecords(std::int32_t options) noexcept;

// Seconds as the objects hold them; raises 3001 for less than none.
[[nodiscard]] std::int32_t checkedSeconds(std::int32_t seconds);

}  // namespace kap::ado
