#pragma once

#include "cli/command.hpp"
#include "cli/output/language.hpp"

namespace kap::cli {

// "--language it|en", which goes into `language`.
[[nodiscard]] Option languageOption(Language& language);

}  // namespace kap::cli
