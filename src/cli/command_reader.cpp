#include "cli/command_reader.hpp"

#include <algorithm>
#include <iostream>
#include <iterator>
#include <new>
#include <type_traits>
#include <utility>

#include <CLI/CLI.hpp>

#include <kaputil/catalogue/catalogue.hpp>

#include "cli/command_table.hpp"
#include "cli/command_words.hpp"
#include "cli/output/exit_codes.hpp"
#include "cli/output/shown_text.hpp"
#include "cli/output/usage_error.hpp"

namespace kap::cli {
namespace {

std::string versionText() {
    return (library().description + u" (" + library().fileVersion + u")").utf8();
}

CLI::Option* declare(CLI::App& app, const Option& option) {
    return std::visit(
        [&](const auto& target) -> CLI::Option* {
            using Target = std::remove_cvref_t<decltype(target)>;
            if constexpr (std::is_same_v<Target, bool*>) {
                return app.add_flag(option.name, *target, option.help);
            } else if constexpr (std::is_pointer_v<Target>) {
                return app.add_option(option.name, *target, option.help);
            } else {
                return app.add_option_function<std::string>(option.name, target, option.help);
            }
        },
        option.target);
}

void addOption(CLI::App& app, const Option& option) {
    CLI::Option* added = declare(app, option);
    if (!std::holds_alternative<bool*>(option.target)) {
        added->type_name(option.placeholder);
    }
    added->required(option.required);
    if (option.showsDefault) {
        added->capture_default_str();
    }
    if (option.fault) {
        added->check(option.fault);
    }
    for (const std::string& other : option.apart) {
        added->excludes(app.get_option(other));
    }
}

// A command as it was declared, and what was typed of it.
struct Declared {
    const CommandDescription* command;
    CLI::App* app;
    std::vector<Declared> actions = {};
};

Declared declare(CLI::App& above, const CommandDescription& command) {
    Declared declared{&command, above.add_subcommand(command.name, command.summary)};
    declared.app->footer(command.details);
    for (const Option& option : command.options) {
        addOption(*declared.app, option);
    }
    for (const CommandDescription& action : command.actions) {
        declared.actions.push_back(declare(*declared.app, action));
    }
    declared.app->require_subcommand(declared.actions.empty() ? 0 : 1);
    return declared;
}

// The command that was typed; null when there is none.
const CommandDescription* typed(const std::vector<Declared>& commands) {
    const auto found =
        std::ranges::find_if(commands, [](const Declared& each) { return each.app->parsed(); });
    if (found == commands.end()) {
        return nullptr;
    }
    return found->actions.empty() ? found->command : typed(found->actions);
}

// The commands and what was typed for each.
class CommandLine {
public:
    CommandLine() {
        app_.set_version_flag("--version", versionText());
        app_.require_subcommand(0, 1);  // none is told below, after words that are no command
        for (const CommandDescription& command : commands_) {
            declared_.push_back(declare(app_, command));
        }
    }

    int run(std::vector<std::string> arguments) {
        try {
            parse(std::move(arguments));
        } catch (const CLI::ParseError& error) {
            return app_.exit(error) == 0 ? kSuccess : kWrongUsage;
        }
        const CommandDescription* command = typed(declared_);
        if (command == nullptr) {
            return app_.exit(CLI::RequiredError::Subcommand(1)) == 0 ? kSuccess : kWrongUsage;
        }
        return runCommand(*command);
    }

private:
    void parse(std::vector<std::string> arguments) {
        for (const Declared& each : declared_) {
            if (!arguments.empty() && each.command->words != nullptr &&
                arguments.front() == each.command->name) {
                std::vector<std::string> behind(arguments.begin() + 1, arguments.end());
                *each.command->words = takeWords(*each.app, behind);
                arguments.resize(1);
                std::ranges::move(behind, std::back_inserter(arguments));
            }
        }
        std::ranges::reverse(arguments);
        app_.parse(std::move(arguments));
    }

    static int runCommand(const CommandDescription& command) {
        int code = kWrongUsage;
        try {
            code = command.run();
        } catch (const UsageError& error) {
            std::cout.flush();
            std::cerr << "kaputil: " << shownText(error.what()) << '\n';
        } catch (const std::bad_alloc&) {
            std::cerr << "kaputil: there is not enough memory\n";
            code = kFailed;
        }
        // A full disk or a closed pipe shows only here.
        if (!std::cout.flush()) {
            std::cerr << "kaputil: cannot write to standard output\n";
            return kFailed;
        }
        return code;
    }

    CLI::App app_{"The command line of KAP Utility.", "kaputil"};
    const std::vector<CommandDescription> commands_ = allCommands();
    std::vector<Declared> declared_;
};

}  // namespace

int runCommandLine(std::vector<std::string> arguments) {
    return CommandLine().run(std::move(arguments));
}

}  // namespace kap::cli
