#pragma once

#include <array>
#include <string>
#include <string_view>

namespace kap::cli {

// A variable of the environment that commands heed.
struct EnvironmentVariable {
    std::string_view name;
    std::string_view help;
};

inline constexpr auto kVariables = std::to_array<EnvironmentVariable>(
    {{"KAPUTIL_CONNECTION", "the database of commands that are given none"},
     {"KAPUTIL_PASSWORD", "the password of a connection string that names a user and none"},
     {"KAPUTIL_PASSWORD_FILE", "a file with it, which only its owner may read"},
     {"KAPUTIL_HOME",
      "the folder of what is kept for the user: \"connections\" with lines \"name = database\", "
      "history; else ~/.config/kaputil and ~/.local/share/kaputil (XDG_CONFIG_HOME, "
      "XDG_DATA_HOME)"},
     {"KAPUTIL_LOCALE", "the language of numbers and dates, for example it-IT"},
     {"NO_COLOR", "no colours on the terminal"},
     {"PAGER", "what shows results that are longer than the screen"}});

// What stands below the commands in the help.
[[nodiscard]] std::string helpOnVariables();

}  // namespace kap::cli
