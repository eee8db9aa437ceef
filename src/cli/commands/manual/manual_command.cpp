#include "cli/commands/manual/manual_command.hpp"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <system_error>
#include <vector>

#include "cli/command_table.hpp"
#include "cli/commands/classes/class_lookup.hpp"
#include "cli/commands/classes/reference_pages.hpp"
#include "cli/commands/manual/class_man_page.hpp"
#include "cli/commands/manual/man_page.hpp"
#include "cli/commands/manual/shell_completion.hpp"
#include "cli/names.hpp"
#include "cli/output/exit_codes.hpp"
#include "cli/output/output_file.hpp"
#include "cli/output/usage_error.hpp"

namespace kap::cli {
namespace {

void writePage(const std::filesystem::path& folder, const std::string& name,
               const std::string& page) {
    writeWholeFile((folder / name).string(), [&](std::ostream& out) { out << page; });
}

void writePages(const std::string& folder, const std::vector<CommandDescription>& commands,
                Language language) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    writePage(folder, "kaputil.1", manPage(commands, language));
    for (const CommandDescription& command : commands) {
        writePage(folder, "kaputil-" + command.name + ".1", manPage(command, language));
    }
    for (const ShownClass* shown : pagedClasses()) {
        writePage(folder, manName(*shown) + ".3", manPage(*shown, language));
    }
}

[[noreturn]] void refuseName(const std::string& name,
                             const std::vector<CommandDescription>& commands) {
    std::vector<std::string> names = classNames();
    for (const CommandDescription& command : commands) {
        names.push_back(command.name);
    }
    throw UsageError("there is no command " + name + suggestion(name, names));
}

}  // namespace

int ManualCommand::run() const {
    const std::vector<CommandDescription> commands = allCommands();
    if (folder) {
        writePages(*folder, commands, language);
        return kSuccess;
    }
    if (command.empty()) {
        std::cout << manPage(commands, language);
        return kSuccess;
    }
    const auto found = std::ranges::find(commands, command, &CommandDescription::name);
    if (found != commands.end()) {
        std::cout << manPage(*found, language);
    } else if (const ShownClass* shown = findClass(command)) {
        std::cout << manPage(*shown, language);
    } else {
        refuseName(command, commands);
    }
    return kSuccess;
}

int CompletionCommand::run() const {
    std::cout << (shell == "zsh" ? zshCompletion(allCommands(), language)
                                 : fishCompletion(allCommands(), language));
    return kSuccess;
}

}  // namespace kap::cli
