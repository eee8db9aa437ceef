#include "cli/commands/manual/man_page.hpp"

#include <string_view>

#include <kaputil/catalogue/catalogue.hpp>

#include "base/ascii.hpp"
#include "cli/commands/manual/option_words.hpp"
#include "cli/output/help_words.hpp"
#include "cli/variables.hpp"

namespace kap::cli {
namespace {

std::string heading(const std::string& name) {
    return ".TH \"" + asciiUpper(name) + "\" 1 \"\" \"" +
           roff((library().description + u" (" + library().fileVersion + u")").utf8()) + "\"\n";
}

std::string nameSection(const std::string& name, const std::string& summary,
                        const HelpWords& words) {
    return ".SH " + std::string(words.manName) + "\n" + roff(name) + " \\- " +
           roff(trimmed(summary, ".")) + "\n";
}

std::string anyOptions(Language language) {
    return asciiLower(helpWords(language).anyOptions);
}

// Lines stand as they are in the help.
std::string verbatim(const std::string& text) {
    return text.empty() ? "" : ".nf\n" + roff(text) + "\n.fi\n";
}

std::string item(const std::string& term, const std::string& text) {
    return ".TP\n\\fB" + roff(term) + "\\fR\n" + roff(text) + "\n";
}

std::string itemOf(const Option& option, Language language) {
    const OptionWords words = wordsOf(option);
    std::string term;
    for (const std::string& name : words.names) {
        term += (term.empty() ? "" : ", ") + name;
    }
    if (term.empty()) {
        term = placeholderIn(words.place, language);
    } else if (!option.placeholder.empty()) {
        term += " " + placeholderIn(option.placeholder, language);
    }
    return item(term,
                option.help.in(language) +
                    (option.required ? " " + std::string(helpWords(language).manRequired) : ""));
}

std::string optionItems(const CommandDescription& command, Language language) {
    std::string items;
    for (const Option& option : command.options) {
        items += itemOf(option, language);
    }
    return items + item("--help", std::string(helpWords(language).helpOption) + ".");
}

std::string synopsis(const std::string& name, const CommandDescription& command,
                     Language language) {
    std::string line = ".B " + roff(name) + "\n";
    bool any = false;
    for (const Option& option : command.options) {
        const OptionWords words = wordsOf(option);
        any = any || !option.required;
        if (!words.place.empty()) {
            const std::string place = roff(placeholderIn(words.place, language));
            line += (option.required ? place : "[" + place + "]") + "\n";
        } else if (option.required) {
            line += "\\fB" + roff(words.names.front()) + "\\fR " +
                    roff(placeholderIn(option.placeholder, language)) + "\n";
        }
    }
    return line + (any ? "[\\fI" + anyOptions(language) + "\\fR]\n" : "") + ".br\n";
}

std::string variableSection(Language language) {
    std::string section = ".SH " + std::string(helpWords(language).manEnvironment) + "\n";
    for (const EnvironmentVariable& variable : kVariables) {
        section += item(std::string(variable.name), std::string(helpOn(variable, language)) + ".");
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

std::string manPage(const std::vector<CommandDescription>& commands, Language language) {
    const HelpWords& words = helpWords(language);
    std::string page =
        heading("kaputil") + nameSection("kaputil", std::string(words.program), words);
    page += ".SH " + std::string(words.manSynopsis) + "\n.B kaputil\n\\fI" +
            asciiLower(words.anyCommand) + "\\fR [\\fI" + anyOptions(language) + "\\fR]\n.SH " +
            std::string(words.manCommands) + "\n";
    std::string others;
    for (const CommandDescription& command : commands) {
        page += item("kaputil " + command.name, command.summary.in(language));
        others +=
            (others.empty() ? "" : ",\n") + (".BR " + roff("kaputil-" + command.name)) + " (1)";
    }
    return page + variableSection(language) + ".SH " + std::string(words.manSeeAlso) + "\n" +
           others + "\n";
}

std::string manPage(const CommandDescription& command, Language language) {
    const HelpWords& words = helpWords(language);
    const std::string& summary = command.summary.in(language);
    const std::string name = "kaputil " + command.name;
    std::string page = heading("kaputil-" + command.name) +
                       nameSection("kaputil-" + command.name, summary, words) + ".SH " +
                       std::string(words.manSynopsis) + "\n";
    if (command.actions.empty()) {
        page += synopsis(name, command, language);
    }
    for (const CommandDescription& action : command.actions) {
        page += synopsis(name + " " + action.name, action, language);
    }
    page += ".SH " + std::string(words.manDescription) + "\n" + roff(summary) + "\n" +
            verbatim(command.details.in(language));
    if (command.actions.empty()) {
        page += ".SH " + std::string(words.manOptions) + "\n" + optionItems(command, language);
    }
    for (const CommandDescription& action : command.actions) {
        page += ".SH " + roff(asciiUpper(action.name)) + "\n" + roff(action.summary.in(language)) +
                "\n" + verbatim(action.details.in(language)) + optionItems(action, language);
    }
    return page + variableSection(language) + ".SH " + std::string(words.manSeeAlso) +
           "\n.BR kaputil (1)\n";
}

}  // namespace kap::cli
