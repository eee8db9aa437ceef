#pragma once

#include <string>
#include <string_view>

namespace kap::tsql {

// What ends a field or a row, as BULK INSERT and its format files write it: "\t" and "\n" with
// their letters, and "0x0a". Error 102.
[[nodiscard]] std::string bulkTerminator(std::string_view text, int line);

}  // namespace kap::tsql
