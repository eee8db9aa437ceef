#include "cli/language_option.hpp"

namespace kap::cli {

Option languageOption(Language& language) {
    return {.name = "--language",
            .placeholder = "it|en",
            .target =
                [&language](const std::string& given) {
                    language = given == "en" ? Language::English : Language::Italian;
                },
            .help = "The language of the page, Italian unless given.",
            .fault = oneOf({"it", "en"})};
}

}  // namespace kap::cli
