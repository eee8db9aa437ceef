#include "cli/login.hpp"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <ios>
#include <optional>

#include "cli/database_name.hpp"
#include "cli/output/usage_error.hpp"
#include "cli/private_file.hpp"
#include "cli/typed_password.hpp"

namespace kap::cli {
namespace {

std::optional<std::string> variable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr || *value == '\0' ? std::nullopt : std::optional<std::string>(value);
}

std::string firstLineOf(const std::string& file) {
    const std::filesystem::path path(std::u8string(file.begin(), file.end()));
    std::ifstream in(path, std::ios::binary);
    std::array<char, 4096> read{};
    if (!in || !in.getline(read.data(), static_cast<std::streamsize>(read.size()))) {
        const bool tooLong = in.gcount() == static_cast<std::streamsize>(read.size()) - 1;
        const char* reason = tooLong ? "its first line is too long" : "it is empty";
        throw UsageError("cannot read the password's file " + file + ": " +
                         (errno != 0 ? std::strerror(errno) : reason));
    }
    requirePrivate(path);
    std::string line(read.data());
    if (!line.empty() && line.back() == '\r') {
        line.pop_back();
    }
    return line;
}

std::optional<std::string> passwordFor(const std::string& connectionString) {
    if (auto password = variable("KAPUTIL_PASSWORD")) {
        return password;
    }
    if (const auto file = variable("KAPUTIL_PASSWORD_FILE")) {
        errno = 0;
        return firstLineOf(*file);
    }
    return typedPassword("Password for " + databaseName(connectionString) + ": ");
}

}  // namespace

bool hasPassword(const std::string& connectionString) {
    return keyOf(connectionString, {"Password", "PWD"}).has_value();
}

std::string withLogin(const std::string& connectionString) {
    // An embedded database has no users, and says so.
    if (!embeddedSource(connectionString).empty() || hasPassword(connectionString) ||
        !keyOf(connectionString, {"User ID", "UID", "User"})) {
        return connectionString;
    }
    const auto password = passwordFor(connectionString);
    if (!password) {
        return connectionString;
    }
    // A driver of database servers reads braces, a data-access provider quotes.
    const bool driver = keyOf(connectionString, {"Driver", "DSN"}).has_value();
    std::string quoted;
    for (const char unit : *password) {
        quoted.append(unit == (driver ? '}' : '"') ? 2 : 1, unit);
    }
    return connectionString + (driver ? ";PWD={" + quoted + "}" : ";Password=\"" + quoted + "\"");
}

}  // namespace kap::cli
