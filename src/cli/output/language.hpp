#pragma once

#include <string>
#include <utility>

#include <kaputil/catalogue/documentation.hpp>

namespace kap::cli {

// Of what is made for people to read.
using Language = DocumentationLanguage;

// A text in both languages. Neither can be left out, so that none is missing where it is shown.
class BothLanguages {
public:
    BothLanguages() = default;
    BothLanguages(std::string english, std::string italian)
        : english_(std::move(english)), italian_(std::move(italian)) {}

    [[nodiscard]] const std::string& in(Language language) const {
        return language == Language::Italian ? italian_ : english_;
    }

private:
    std::string english_;
    std::string italian_;
};

}  // namespace kap::cli
