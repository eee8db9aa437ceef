#include "cli/commands/manual/man_page.hpp"

#include <string_view>

#include <kaputil/catalogue/catalogue.hpp>

#include "base/ascii.hpp"
#include "cli/commands/manual/option_words.hpp"
#include "cli/variables.hpp"

namespace kap::cli {
namespace {

std::string heading(const std::string& name) {
    return ".TH \"" + asciiUpper(name) + "\" 1 \"\" \"" +
           roff((library().description + u" (" + library().fileVersion + u")").utf8()) + "\"\n";
}

std::string nameSection(const std::string& name, const std::string& summary) {
    return ".SH NAME\n" + roff(name) + " \\- " + roff(trimmed(summary, ".")) + "\n";
}

// Lines stand as they are in the help.
std::string verbatim(const std::string& text) {
    return text.empty() ? "" : ".nf\n" + roff(text) + "\n.fi\n";
}

std::string item(const std::string& term, const std::string& text) {
    return ".TP\n\\fB" + roff(term) + "\\fR\n" + roff(text) + "\n";
}

std::string itemOf(const Option& option) {
    const OptionWords words = wordsOf(option);
    std::string term;
    for (const std::string& name : words.names) {
        term += (term.empty() ? "" : ", ") + name;
    }
    if (term.empty()) {
        term = words.place;
    } else if (!option.placeholder.empty()) {
        term += " " + option.placeholder;
    }
    return item(term, option.help + (option.required ? " Required." : ""));
}

std::string optionItems(const CommandDescription& command) {
    std::string items;
    for (const Option& option : command.options) {
        items += itemOf(option);
    }
    return items + item("--help", "Print a short help and exit.");
}

std::string synopsis(const std::string& name, const CommandDescription& command) {
    std::string line = ".B " + roff(name) + "\n";
    bool any = false;
    for (const Option& option : command.options) {
        const OptionWords words = wordsOf(option);
        any = any || !option.required;
        if (!words.place.empty()) {
            line += (option.required ? roff(words.place) : "[" + roff(words.place) + "]") + "\n";
        } else if (option.required) {
            line += "\\fB" + roff(words.names.front()) + "\\fR " + roff(option.placeholder) + "\n";
        }
    }
    return line + (any ? "[\\fIoptions\\fR]\n" : "") + ".br\n";
}

std::string variableSection() {
    std::string section = ".SH ENVIRONMENT\n";
    for (const EnvironmentVariable& variable : kVariables) {
        section += item(std::string(variable.name), std::string(variable.help) + ".");
    }
    return section;
}

}  // namespace

std::string roff(std::string_view text) {
    std::string escaped;
    bool lineBegins = true;
    for (const char unit : text) {
        if (lineBegins && (unit == '.' || unit == '\'')) {
            escaped += "\\&";
        }
        lineBegins = unit == '\n';
        if (unit == '\\') {
            escaped += "\\e";
        } else if (unit == '-') {
            escaped += "\\-";
        } else {
            escaped += unit;
        }
    }
    return escaped;
}

std::string manPage(const std::vector<CommandDescription>& commands) {
    std::string page =
        heading("kaputil") + nameSection("kaputil", "the command line of KAP Utility");
    page += ".SH SYNOPSIS\n.B kaputil\n\\fIcommand\\fR [\\fIoptions\\fR]\n.SH COMMANDS\n";
    std::string others;
    for (const CommandDescription& command : commands) {
        page += item("kaputil " + command.name, command.summary);
        others +=
            (others.empty() ? "" : ",\n") + (".BR " + roff("kaputil-" + command.name)) + " (1)";
    }
    return page + variableSection() + ".SH SEE ALSO\n" + others + "\n";
}

std::string manPage(const CommandDescription& command) {
    const std::string name = "kaputil " + command.name;
    std::string page = heading("kaputil-" + command.name) +
                       nameSection("kaputil-" + command.name, command.summary) + ".SH SYNOPSIS\n";
    if (command.actions.empty()) {
        page += synopsis(name, command);
    }
    for (const CommandDescription& action : command.actions) {
        page += synopsis(name + " " + action.name, action);
    }
    page += ".SH DESCRIPTION\n" + roff(command.summary) + "\n" + verbatim(command.details);
    if (command.actions.empty()) {
        page += ".SH OPTIONS\n" + optionItems(command);
    }
    for (const CommandDescription& action : command.actions) {
        page += ".SH " + roff(asciiUpper(action.name)) + "\n" + roff(action.summary) + "\n" +
                verbatim(action.details) + optionItems(action);
    }
    return page + variableSection() + ".SH SEE ALSO\n.BR kaputil (1)\n";
}

}  // namespace kap::cli
