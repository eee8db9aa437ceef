#pragma once

#include <string>

// Passwords, which need not stand on the command line, where everybody on the machine reads them.
namespace kap::cli {

// Whether a connection string holds a password.
[[nodiscard]] bool hasPassword(const std::string& connectionString);

// The connection string with the password of its user, when it names one and no password. It is
// what the variable KAPUTIL_PASSWORD holds, else the first line of the file that
// KAPUTIL_PASSWORD_FILE names, else what the user types where there is a terminal. Throws
// UsageError for a file that cannot be read, or that others may read.
[[nodiscard]] std::string withLogin(const std::string& connectionString);

}  // namespace kap::cli
