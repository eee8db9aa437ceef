#include "cli/commands/manual/manual_command.hpp"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <vector>

#include "cli/command_table.hpp"
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
    writeWholeFile((folder / (name + ".1")).string(), [&](std::ostream& out) { out << page; });
}

void writePages(const std::string& folder, const std::vector<CommandDescription>& commands) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    writePage(folder, "kaputil", manPage(commands));
    for (const CommandDescription& command : commands) {
        writePage(folder, "kaputil-" + command.name, manPage(command));
    }
}

}  // namespace

int ManualCommand::run() const {
    const std::vector<CommandDescription> commands = allCommands();
    if (folder) {
        writePages(*folder, commands);
        return kSuccess;
    }
    if (command.empty()) {
        std::cout << manPage(commands);
        return kSuccess;
    }
    const auto found = std::ranges::find(commands, command, &CommandDescription::name);
    if (found == commands.end()) {
        std::vector<std::string> names;
        names.reserve(commands.size());
        for (const CommandDescription& each : commands) {
            names.push_back(each.name);
        }
        throw UsageError("there is no command " + command + suggestion(command, names));
    }
    std::cout << manPage(*found);
    return kSuccess;
}

int CompletionCommand::run() const {
    std::cout << (shell == "zsh" ? zshCompletion(allCommands()) : fishCompletion(allCommands()));
    return kSuccess;
}

}  // namespace kap::cli
