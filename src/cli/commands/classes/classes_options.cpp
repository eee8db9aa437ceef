#include "cli/commands/classes/classes_options.hpp"

#include <memory>

#include "cli/commands/classes/classes_command.hpp"

namespace kap::cli {

CommandDescription classesOptions() {
    const auto classes = std::make_shared<ClassesCommand>();
    return {
        .name = "classes",
        .summary = "Show the classes and their members.",
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
                     .apart = {"--json"}}},
        .run = [classes] { return classes->run(); }};
}

}  // namespace kap::cli
