#pragma once

#include <string_view>

#include <kaputil/catalogue/documentation.hpp>

// Reads a file of src/catalogue/reference, one a class, which holds both languages:
//
//     # CProprieta
//     en: What the class is for. The first sentence stands where there is place for one line.
//     it: Lo stesso in italiano.
//     en: A second paragraph.
//     it: Un secondo capoverso.
//     setup
//         what every example of the class begins with
//     example
//         a script
//     ## Leggi
//     en: ...
//     it: ...
//     - sNomeProprieta
//     en: ...
//     it: ...
//     = "DEFAULT"
//     en: what this value of the parameter means
//     it: ...
//     result
//     en: ...
//     it: ...
//     = 0
//     en: what this value of the result means
//     it: ...
//     error 13
//     en: when it is raised
//     it: ...
//     error
//     en: errors of something else that pass through
//     it: ...
//     example
//         ...
//
// Values in front of any parameter are those of a property. A text goes on in the following lines,
// up to one that begins like one of these; the lines of scripts are indented.
namespace kap {

// Raises std::invalid_argument, with the number of the line, for a text that is not written so, and
// for one that lacks what it has in the other language.
[[nodiscard]] ClassDocumentation readReference(std::string_view text,
                                               DocumentationLanguage language);

}  // namespace kap
