#include "cli/language_option.hpp"

#include <utility>

#include <kaputil/catalogue/documentation.hpp>

namespace kap::cli {

Option languageOption(Language& language, BothLanguages help) {
    return {.name = "--language",
            .placeholder = "it|en",
            .target =
                [&language](const std::string& given) {
                    language = given == "en" ? Language::English : Language::Italian;
                },
            .help = std::move(help),
            .fault = oneOf({"it", "en"})};
}

Language userLanguage() {
    return userDocumentationLanguage();
}

}  // namespace kap::cli
