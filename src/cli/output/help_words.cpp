#include "cli/output/help_words.hpp"

#include <algorithm>
#include <array>
#include <utility>

namespace kap::cli {
namespace {

constexpr HelpWords kEnglishHelp = {.program = "The command line of KAP Utility.",
                                    .usage = "Usage",
                                    .options = "Options",
                                    .anyOptions = "OPTIONS",
                                    .words = "Positionals",
                                    .commands = "Subcommands",
                                    .anyCommand = "SUBCOMMAND",
                                    .required = "REQUIRED",
                                    .apart = "Excludes",
                                    .helpOption = "Print this help message and exit",
                                    .versionOption = "Display program version information and exit",
                                    .variables = "Variables",
                                    .manName = "NAME",
                                    .manSynopsis = "SYNOPSIS",
                                    .manDescription = "DESCRIPTION",
                                    .manCommands = "COMMANDS",
                                    .manOptions = "OPTIONS",
                                    .manEnvironment = "ENVIRONMENT",
                                    .manRequired = "Required.",
                                    .manSeeAlso = "SEE ALSO"};
constexpr HelpWords kItalianHelp = {.program = "La riga di comando di KAP Utility.",
                                    .usage = "Uso",
                                    .options = "Opzioni",
                                    .anyOptions = "OPZIONI",
                                    .words = "Argomenti",
                                    .commands = "Comandi",
                                    .anyCommand = "COMANDO",
                                    .required = "OBBLIGATORIO",
                                    .apart = "Esclude",
                                    .helpOption = "Stampa questo aiuto ed esce",
                                    .versionOption = "Stampa la versione del programma ed esce",
                                    .variables = "Variabili",
                                    .manName = "NOME",
                                    .manSynopsis = "SINTASSI",
                                    .manDescription = "DESCRIZIONE",
                                    .manCommands = "COMANDI",
                                    .manOptions = "OPZIONI",
                                    .manEnvironment = "AMBIENTE",
                                    .manRequired = "Obbligatorio.",
                                    .manSeeAlso = "VEDERE ANCHE"};

// Those that are the same in both languages (FILE, DATABASE) are not here.
constexpr auto kItalianPlaceholders = std::to_array<std::pair<std::string_view, std::string_view>>(
    {{"CHARACTER", "CARATTERE"},
     {"CODE", "CODICE"},
     {"COMMAND", "COMANDO"},
     {"data", "dato"},
     {"FOLDER", "CARTELLA"},
     {"GROUP", "GRUPPO"},
     {"key", "chiave"},
     {"MEMBER ARG... + MEMBER ARG...", "MEMBRO ARG... + MEMBRO ARG..."},
     {"NAME", "NOME"},
     {"name", "nome"},
     {"NAME=VALUE", "NOME=VALORE"},
     {"NAMES", "NOMI"},
     {"PATH", "PERCORSO"},
     {"TEXT", "TESTO"},
     {"TYPE", "TIPO"},
     {"value", "valore"},
     {"YEAR", "ANNO"}});

}  // namespace

const HelpWords& helpWords(Language language) {
    return language == Language::Italian ? kItalianHelp : kEnglishHelp;
}

std::string placeholderIn(const std::string& placeholder, Language language) {
    if (language == Language::Italian) {
        const auto* const found =
            std::ranges::find(kItalianPlaceholders, placeholder,
                              &std::pair<std::string_view, std::string_view>::first);
        if (found != kItalianPlaceholders.end()) {
            return std::string(found->second);
        }
    }
    return placeholder;
}

}  // namespace kap::cli
