#pragma once

#include <string_view>

namespace kap::tsql {

// True for a word that the dialect reserves: it names nothing unless quoted. All other words that
// mean something in some place (TRY, FIRST, ROW, TYPE...) stay usable as names. Letter case is
// ignored.
[[nodiscard]] bool isReserved(std::string_view word);

}  // namespace kap::tsql
