#include "cli/commands/classes/classes_options.hpp"

#include <memory>

#include "cli/commands/classes/classes_command.hpp"
#include "cli/language_option.hpp"

namespace kap::cli {

CommandDescription classesOptions() {
    const auto classes = std::make_shared<ClassesCommand>();
    return {
        .name = "classes",
        .summary = "Show the classes and their members, with their documentation.",
        .details =
            "Without a name all classes are listed. Names are compared ignoring case; the classes\n"
            "of the platform are called by their whole name, for example ADODB.Connection.",
        .options = {{.name = "name",
                     .target = &classes->name,
                     .help = "A class, CLASS.MEMBER, or an enumeration."},
                    {.name = "--json", .target = &classes->json, .help = "Print one JSON object."},
                    {.name = "--names",
                     .target = &classes->names,
                     .help = "Print names only, one a line: of the classes, of a class's members, "
                             "of a member's parameters.",
                     .apart = {"--json"}},
                    languageOption(classes->language,
                                   "The language of the texts, that of the locale unless given."),
                    {.name = "--html",
                     .placeholder = "FOLDER",
                     .target = &classes->html,
                     .help = "Write the whole reference into this folder: a page a class in both "
                             "languages, and an index to search in.",
                     .apart = {"--json", "--names", "name"}}},
        .run = [classes] { return classes->run(); }};
}

}  // namespace kap::cli
