#pragma once

#include "cli/command.hpp"
#include "cli/output/language.hpp"

namespace kap::cli {

// "--language it|en", which goes into `language`; `help` tells what it is without.
[[nodiscard]] Option languageOption(Language& language,
                                    BothLanguages help = {
                                        "The language of the page, Italian unless given.",
                                        "La lingua della pagina; se manca, l'italiano."});

// The language of the user's locale: Italian, or English for every other one.
[[nodiscard]] Language userLanguage();

}  // namespace kap::cli
