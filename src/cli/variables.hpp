#pragma once

#include <array>
#include <string>
#include <string_view>

#include "cli/output/language.hpp"

namespace kap::cli {

// A variable of the environment that commands heed.
struct EnvironmentVariable {
    std::string_view name;
    std::string_view help;
    std::string_view italianHelp;
};

inline constexpr auto kVariables = std::to_array<EnvironmentVariable>(
    {{"KAPUTIL_CONNECTION", "the database of commands that are given none",
      "la base dati dei comandi a cui non se ne indica una"},
     {"KAPUTIL_PASSWORD", "the password of a connection string that names a user and none",
      "la password di una stringa di connessione che nomina un utente e nessuna password"},
     {"KAPUTIL_PASSWORD_FILE", "a file with it, which only its owner may read",
      "un file che la contiene, leggibile solo dal suo proprietario"},
     {"KAPUTIL_HOME",
      "the folder of what is kept for the user: \"connections\" with lines \"name = database\", "
      "history; else ~/.config/kaputil and ~/.local/share/kaputil (XDG_CONFIG_HOME, "
      "XDG_DATA_HOME)",
      "la cartella di quello che si conserva per l'utente: \"connections\" con righe \"nome = "
      "base dati\", cronologia; altrimenti ~/.config/kaputil e ~/.local/share/kaputil "
      "(XDG_CONFIG_HOME, XDG_DATA_HOME)"},
     {"KAPUTIL_LOCALE", "the language of numbers, dates and help, for example it-IT",
      "la lingua di numeri, date e aiuto, per esempio it-IT"},
     {"NO_COLOR", "no colours on the terminal", "niente colori sul terminale"},
     {"PAGER", "what shows results that are longer than the screen",
      "che cosa mostra i risultati più lunghi dello schermo"}});

[[nodiscard]] constexpr std::string_view helpOn(const EnvironmentVariable& variable,
                                                Language language) {
    return language == Language::Italian ? variable.italianHelp : variable.help;
}

// What stands below the commands in the help.
[[nodiscard]] std::string helpOnVariables(Language language);

}  // namespace kap::cli
