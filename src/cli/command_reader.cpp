#include "cli/command_reader.hpp"

#include <algorithm>
#include <iostream>
#include <iterator>
#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <utility>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <kaputil/automation/error.hpp>
#include <kaputil/catalogue/catalogue.hpp>

#include "cli/command_table.hpp"
#include "cli/command_words.hpp"
#include "cli/language_option.hpp"
#include "cli/output/exit_codes.hpp"
#include "cli/output/help_words.hpp"
#include "cli/output/language.hpp"
#include "cli/output/shown_text.hpp"
#include "cli/output/usage_error.hpp"
#include "cli/variables.hpp"

namespace kap::cli {
namespace {

using Json = nlohmann::ordered_json;

std::string versionText() {
    return (library().description + u" (" + library().fileVersion + u")").utf8();
}

CLI::Option* declare(CLI::App& app, const Option& option, Language language) {
    const std::string& help = option.help.in(language);
    return std::visit(
        [&](const auto& target) -> CLI::Option* {
            using Target = std::remove_cvref_t<decltype(target)>;
            if constexpr (std::is_same_v<Target, std::function<void()>>) {
                return app.add_flag_callback(option.name, target, help);
            } else if constexpr (std::is_same_v<Target, bool*>) {
                return app.add_flag(option.name, *target, help);
            } else if constexpr (std::is_pointer_v<Target>) {
                return app.add_option(option.name, *target, help);
            } else {
                return app.add_option_function<std::string>(option.name, target, help);
            }
        },
        option.target);
}

void addOption(CLI::App& app, const Option& option, Language language) {
    CLI::Option* added = declare(app, option, language);
    if (!std::holds_alternative<bool*>(option.target) &&
        !std::holds_alternative<std::function<void()>>(option.target)) {
        added->type_name(placeholderIn(option.placeholder, language));
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

// The help in a language: what CLI11 says by itself, and names of what is known by its place.
class HelpFormatter : public CLI::Formatter {
public:
    explicit HelpFormatter(Language language) : language_(language) {
        const HelpWords& words = helpWords(language);
        label("Usage", std::string(words.usage));
        label("OPTIONS", std::string(words.anyOptions));
        label("Positionals", std::string(words.words));
        label("SUBCOMMAND", std::string(words.anyCommand));
        label("REQUIRED", std::string(words.required));
        label("Excludes", std::string(words.apart));
    }

    std::string make_option_name(const CLI::Option* option, bool byPlace) const override {
        const std::string name = CLI::Formatter::make_option_name(option, byPlace);
        return byPlace ? placeholderIn(name, language_) : name;
    }

private:
    Language language_;
};

// A command as it was declared, and what was typed of it.
struct Declared {
    const CommandDescription* command;
    CLI::App* app;
    std::vector<Declared> actions = {};
};

Declared declare(CLI::App& above, const CommandDescription& command, Language language) {
    Declared declared{&command, above.add_subcommand(command.name, command.summary.in(language))};
    declared.app->footer(command.details.in(language));
    const HelpWords& words = helpWords(language);
    declared.app->group(std::string(words.commands));
    declared.app->get_help_ptr()->group(std::string(words.options));
    for (const Option& option : command.options) {
        addOption(*declared.app, option, language);
    }
    for (const CommandDescription& action : command.actions) {
        declared.actions.push_back(declare(*declared.app, action, language));
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

// Also where the rest of what was typed makes no sense.
bool asksForJson(const std::vector<std::string>& arguments) {
    return std::ranges::any_of(arguments, [](const std::string& argument) {
        return argument == "--json" || argument == "--json-lines";
    });
}

// The commands and what was typed for each.
class CommandLine {
public:
    CommandLine() {
        const HelpWords& words = helpWords(language_);
        app_.formatter(std::make_shared<HelpFormatter>(language_));
        app_.option_defaults()->group(std::string(words.options));
        app_.set_help_flag("-h,--help", std::string(words.helpOption));
        app_.set_version_flag("--version", versionText(), std::string(words.versionOption));
        app_.footer(helpOnVariables(language_));
        app_.require_subcommand(0, 1);  // none is told below, after words that are no command
        for (const CommandDescription& command : commands_) {
            declared_.push_back(declare(app_, command, language_));
        }
    }

    int run(std::vector<std::string> arguments) {
        json_ = asksForJson(arguments);
        try {
            parse(std::move(arguments));
            const CommandDescription* command = typed(declared_);
            if (command == nullptr) {
                throw CLI::RequiredError::Subcommand(1);
            }
            return runCommand(*command);
        } catch (const CLI::ParseError& error) {
            return refuse(error);
        } catch (const UsageError& error) {
            return refuse(error.what());
        }
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

    // Help is asked for like this, too.
    int refuse(const CLI::ParseError& error) {
        if (!json_ || error.get_exit_code() == 0) {
            return app_.exit(error) == 0 ? kSuccess : kWrongUsage;
        }
        return refuse(error.what());
    }

    [[nodiscard]] int refuse(const std::string& reason) const {
        std::cout.flush();
        if (json_) {
            const Json error = {{"number", errors::kInvalidArgument},
                                {"native", 0},
                                {"line", 0},
                                {"description", reason}};  // what was typed may be no UTF-8
            std::cerr << Json{{"error", error}}.dump(-1, ' ', false, Json::error_handler_t::replace)
                      << '\n';
        } else {
            std::cerr << "kaputil: " << shownText(reason) << '\n';
        }
        return kWrongUsage;
    }

    static int runCommand(const CommandDescription& command) {
        int code = kFailed;
        try {
            code = command.run();
        } catch (const std::bad_alloc&) {
            std::cerr << "kaputil: there is not enough memory\n";
        }
        // A full disk or a closed pipe shows only here.
        if (!std::cout.flush()) {
            std::cerr << "kaputil: cannot write to standard output\n";
            return kFailed;
        }
        return code;
    }

    const Language language_ = userLanguage();
    CLI::App app_{std::string(helpWords(language_).program), "kaputil"};
    const std::vector<CommandDescription> commands_ = allCommands();
    std::vector<Declared> declared_;
    bool json_ = false;  // errors are told as JSON
};

}  // namespace

int runCommandLine(std::vector<std::string> arguments) {
    return CommandLine().run(std::move(arguments));
}

}  // namespace kap::cli
