#pragma once

#include <kaputil/catalogue/documentation.hpp>

namespace kap::cli {

// Of what is made for people to read.
using Language = DocumentationLanguage;

}  // namespace kap::cli
