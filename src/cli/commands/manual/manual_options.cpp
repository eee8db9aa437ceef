#include "cli/commands/manual/manual_options.hpp"

#include <memory>

#include "cli/commands/manual/manual_command.hpp"
#include "cli/language_option.hpp"

namespace kap::cli {

CommandDescription manualOptions() {
    const auto manual = std::make_shared<ManualCommand>();
    return {.name = "manual",
            .summary = "Print the page of the manual on a command or a class.",
            .details =
                "The page is for man: kaputil manual sql | man -l -\n"
                "With --folder those on commands are in section 1, those on classes in section 3.\n"
                "Exit codes: 0 done, 2 wrong usage.",
            .options = {{.name = "COMMAND",
                         .target = &manual->command,
                         .help = "The command or class; without it the page on all commands."},
                        {.name = "--folder",
                         .placeholder = "FOLDER",
                         .target = &manual->folder,
                         .help = "Write all pages as files into this folder."},
                        languageOption(manual->language,
                                       "The language of the pages on classes, that of the locale "
                                       "unless given.")},
            .run = [manual] { return manual->run(); }};
}

CommandDescription completionOptions() {
    const auto completion = std::make_shared<CompletionCommand>();
    return {.name = "completion",
            .summary = "Print what completes the command line in a shell.",
            .details =
                "For zsh: kaputil completion zsh > ~/.zfunc/_kaputil, with ~/.zfunc in "
                "fpath.\n"
                "For fish: kaputil completion fish > "
                "~/.config/fish/completions/kaputil.fish\n"
                "The package brings both, and the one for bash.\n"
                "Exit codes: 0 done, 2 wrong usage.",
            .options = {{.name = "SHELL",
                         .target = &completion->shell,
                         .help = "zsh or fish.",
                         .required = true,
                         .fault = oneOf({"zsh", "fish"})}},
            .run = [completion] { return completion->run(); }};
}

}  // namespace kap::cli
