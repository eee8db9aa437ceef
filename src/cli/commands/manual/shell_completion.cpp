#include "cli/commands/manual/shell_completion.hpp"

#include <string_view>

#include "cli/commands/manual/option_words.hpp"
#include "cli/output/help_words.hpp"

namespace kap::cli {
namespace {

// A text between single quotes.
std::string quotedForShell(std::string_view text, std::string_view quote) {
    std::string quoted = "'";
    for (const char unit : text) {
        quoted += unit == '\'' ? quote : std::string_view(&unit, 1);
    }
    return quoted + "'";
}

std::string zshQuoted(std::string_view text) {
    return quotedForShell(text, "'\\''");
}

std::string fishQuoted(std::string_view text) {
    return quotedForShell(text, "\\'");
}

// In a description of _arguments, brackets and colons are signs of their own.
std::string zshDescription(std::string_view text) {
    std::string escaped;
    for (const char unit : text) {
        if (unit == '[' || unit == ']' || unit == ':' || unit == '\\') {
            escaped += '\\';
        }
        escaped += unit;
    }
    return escaped;
}

std::string joinedWith(const std::vector<std::string>& texts, std::string_view mark) {
    std::string joined;
    for (const std::string& text : texts) {
        joined += (joined.empty() ? std::string() : std::string(mark)) + text;
    }
    return joined;
}

// Names of the catalogue are asked of the command itself: those of all classes, behind "CLASS."
// those of its members. What is called may also be a general function, a member of StdFunctions.
constexpr std::string_view kZshNames = R"zsh(_kaputil_names() {
    local -a names
    names=(${(f)"$(kaputil classes $1 --names 2>/dev/null)"} ${(f)"$(kaputil classes --names 2>/dev/null)"})
    if [[ $PREFIX == *.* ]]; then
        names=(${PREFIX%.*}.${^${(f)"$(kaputil classes ${PREFIX%.*} --names 2>/dev/null)"}})
    fi
    compadd -M 'm:{[:lower:]}={[:upper:]}' -- $names
}
)zsh";

constexpr std::string_view kFishNames = R"fish(function __kaputil_names
    set -l typed (commandline -ct)
    if string match -q '*.*' -- $typed
        set -l class (string replace -r '\.[^.]*$' '' -- $typed)
        kaputil classes $class --names 2>/dev/null | string replace -r '^' "$class."
    else
        kaputil classes $argv --names 2>/dev/null
        kaputil classes --names 2>/dev/null
    end
end
)fish";

// What may stand where an option wants a text.
std::string zshTexts(const OptionWords& words) {
    if (words.takesClass || words.takesMember) {
        return words.takesMember ? "_kaputil_names StdFunctions" : "_kaputil_names";
    }
    if (!words.texts.empty()) {
        return "(" + joinedWith(words.texts, " ") + ")";
    }
    if (words.takesFolder) {
        return "_files -/";
    }
    return words.takesFile ? "_files" : " ";
}

std::string zshOptions(const CommandDescription& command, const std::string& indent,
                       Language language) {
    std::string lines;
    for (const Option& option : command.options) {
        const OptionWords words = wordsOf(option);
        for (const std::string& name : words.names) {
            const std::string kind = option.placeholder.empty() ? "text" : option.placeholder;
            lines += " \\\n" + indent +
                     zshQuoted(name + "[" + zshDescription(option.help.in(language)) + "]" +
                               (words.takesText ? ":" + zshDescription(kind) + ":" + zshTexts(words)
                                                : ""));
        }
        if (!words.place.empty()) {
            lines += " \\\n" + indent +
                     zshQuoted((option.required ? ":" : "::") + zshDescription(words.place) + ":" +
                               zshTexts(words));
        }
    }
    return lines + " \\\n" + indent +
           zshQuoted("--help[" + zshDescription(helpWords(language).helpOption) + "]") + "\n";
}

std::string zshList(const std::string& variable, const std::vector<CommandDescription>& commands,
                    const std::string& indent, Language language) {
    std::string list = indent + "local -a " + variable + "\n" + indent + variable + "=(\n";
    for (const CommandDescription& command : commands) {
        list += indent + "    " +
                zshQuoted(command.name + ":" + zshDescription(command.summary.in(language))) + "\n";
    }
    return list + indent + ")\n";
}

std::string zshCommand(const CommandDescription& command, Language language) {
    std::string part = "        " + command.name + ")\n";
    if (command.actions.empty()) {
        return part + "            _arguments -s" +
               zshOptions(command, "                ", language) + "            ;;\n";
    }
    part += zshList("actions", command.actions, "            ", language);
    part +=
        "            if (( CURRENT == 2 )); then\n"
        "                _describe action actions\n"
        "                return\n"
        "            fi\n"
        "            shift words\n"
        "            (( CURRENT-- ))\n"
        "            case $words[1] in\n";
    for (const CommandDescription& action : command.actions) {
        part += "                " + action.name + ")\n                    _arguments -s" +
                zshOptions(action, "                        ", language) +
                "                    ;;\n";
    }
    return part + "            esac\n            ;;\n";
}

// When a condition on the words before the cursor holds, fish offers what follows.
std::string fishOptions(const CommandDescription& command, const std::string& condition,
                        Language language) {
    std::string lines;
    for (const Option& option : command.options) {
        const OptionWords words = wordsOf(option);
        const std::string texts =
            words.texts.empty() ? "" : " -a " + fishQuoted(joinedWith(words.texts, " "));
        const bool files = words.takesFile || words.takesFolder;
        for (const std::string& name : words.names) {
            lines += "complete -c kaputil -n " + fishQuoted(condition) + " -l " + name.substr(2) +
                     (words.takesText ? (files ? " -r -F" : " -x") + texts : "") + " -d " +
                     fishQuoted(option.help.in(language)) + "\n";
        }
        if (words.takesClass || words.takesMember) {
            lines += "complete -c kaputil -n " + fishQuoted(condition) + " -a '(__kaputil_names" +
                     (words.takesMember ? " StdFunctions" : "") + ")'\n";
        } else if (!words.place.empty() && (files || !texts.empty())) {
            lines += "complete -c kaputil -n " + fishQuoted(condition) + (files ? " -F" : "") +
                     texts + "\n";
        }
    }
    return lines;
}

std::string fishCommand(const CommandDescription& command, Language language) {
    const std::string seen = "__fish_seen_subcommand_from " + command.name;
    if (command.actions.empty()) {
        return fishOptions(command, seen, language);
    }
    std::vector<std::string> names;
    for (const CommandDescription& action : command.actions) {
        names.push_back(action.name);
    }
    std::string lines;
    for (const CommandDescription& action : command.actions) {
        lines +=
            "complete -c kaputil -n " +
            fishQuoted(seen + "; and not __fish_seen_subcommand_from " + joinedWith(names, " ")) +
            " -a " + action.name + " -d " + fishQuoted(action.summary.in(language)) + "\n";
        lines += fishOptions(action, seen + "; and __fish_seen_subcommand_from " + action.name,
                             language);
    }
    return lines;
}

}  // namespace

std::string zshCompletion(const std::vector<CommandDescription>& commands, Language language) {
    std::string script =
        "#compdef kaputil\n"
        "# Completion of the kaputil command line for zsh, made by: kaputil completion zsh\n" +
        std::string(kZshNames) + "_kaputil() {\n" +
        zshList("commands", commands, "    ", language) +
        "    if (( CURRENT == 2 )); then\n"
        "        _describe command commands\n"
        "        return\n"
        "    fi\n"
        "    shift words\n"
        "    (( CURRENT-- ))\n"
        "    case $words[1] in\n";
    for (const CommandDescription& command : commands) {
        script += zshCommand(command, language);
    }
    return script +
           "    esac\n"
           "}\n"
           "if [[ $funcstack[1] == _kaputil ]]; then\n"
           "    _kaputil \"$@\"\n"
           "else\n"
           "    compdef _kaputil kaputil\n"
           "fi\n";
}

std::string fishCompletion(const std::vector<CommandDescription>& commands, Language language) {
    std::string script =
        "# Completion of the kaputil command line for fish, made by: kaputil completion fish\n"
        "complete -c kaputil -f\n"
        "complete -c kaputil -l help -d " +
        fishQuoted(helpWords(language).helpOption) + "\n" + std::string(kFishNames);
    for (const CommandDescription& command : commands) {
        script += "complete -c kaputil -n __fish_use_subcommand -a " + command.name + " -d " +
                  fishQuoted(command.summary.in(language)) + "\n";
    }
    for (const CommandDescription& command : commands) {
        script += fishCommand(command, language);
    }
    return script;
}

}  // namespace kap::cli
