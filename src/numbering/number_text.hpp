#pragma once

#include <kaputil/automation/string.hpp>

namespace kap::numbering {

// A number as it stands in a statement: plain decimal, whatever the user's language.
[[nodiscard]] String numberText(double number);

}  // namespace kap::numbering
