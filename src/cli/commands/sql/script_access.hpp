#pragma once

#include <string_view>

#include "cli/connection_text.hpp"

namespace kap::cli {

// Making for a script that may make something in an empty database (CREATE, SELECT INTO, and
// whatever a procedure may do), else Changing: there is nothing that it could do to a database that
// is not there.
[[nodiscard]] Access accessOf(std::string_view script);

}  // namespace kap::cli
