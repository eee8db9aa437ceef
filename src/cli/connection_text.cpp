#include "cli/connection_text.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

#include <kaputil/automation/plain_text.hpp>
#include <kaputil/platform/folders.hpp>

#include "base/ascii.hpp"
#include "cli/database_name.hpp"
#include "cli/login.hpp"
#include "cli/names.hpp"
#include "cli/output/usage_error.hpp"
#include "cli/private_file.hpp"
#include "cli/text_file.hpp"

namespace kap::cli {
namespace {

constexpr const char* kVariable = "KAPUTIL_CONNECTION";

struct NamedConnection {
    std::string name;
    std::string text;
};

std::filesystem::path listOfConnections() {
    return platform::settingsFolder() / "connections";
}

// Lines "name = connection string"; an empty line and one that begins with '#' say nothing.
std::vector<NamedConnection> readConnections() {
    const std::filesystem::path path = listOfConnections();
    std::error_code error;
    if (!std::filesystem::exists(path, error)) {
        return {};
    }
    if (!std::filesystem::is_regular_file(path, error)) {
        throw UsageError("cannot read " + path.string() + ": it is no file");
    }
    constexpr std::uintmax_t kLargestList = 1 << 20;
    const std::u8string given = path.u8string();
    const std::string list = bytesOfFile(std::string(given.begin(), given.end()), kLargestList);
    std::vector<NamedConnection> connections;
    int number = 0;
    for (std::size_t start = 0; start < list.size();) {
        ++number;
        const std::size_t end = std::min(list.find('\n', start), list.size());
        const std::string_view text =
            trimmed(std::string_view(list).substr(start, end - start), " \t\r");
        start = end + 1;
        if (text.empty() || text.front() == '#') {
            continue;
        }
        const std::size_t equals = text.find('=');
        const std::string_view name = trimmed(text.substr(0, equals), " \t");
        if (equals == std::string_view::npos || name.empty()) {
            throw UsageError(path.string() + ", line " + plain::text(number) +
                             ": a line is \"name = connection string\"");
        }
        connections.push_back(
            {std::string(name), std::string(trimmed(text.substr(equals + 1), " \t"))});
        if (hasPassword(connections.back().text)) {
            requirePrivate(path);
        }
    }
    return connections;
}

// A value as it stands in a connection string, whatever it holds.
std::string quotedValue(std::string_view value) {
    std::string quoted = "\"";
    for (const char unit : value) {
        quoted.append(unit == '"' ? 2 : 1, unit);
    }
    return quoted + '"';
}

std::string embedded(const std::string& file) {
    constexpr std::string_view kNeedsQuotes = ";\"'{}= ";
    return "Provider=KapLocal;Data Source=" +
           (file.find_first_of(kNeedsQuotes) == std::string::npos ? file : quotedValue(file));
}

bool isThere(const std::string& file) {
    std::error_code error;
    const std::filesystem::path path(std::u8string(file.begin(), file.end()));
    return std::filesystem::exists(path, error);
}

// A word that nobody has in a file's name is rather a name with a mistake in it.
bool looksLikeAName(const std::string& text) {
    return text.find_first_of("./\\:") == std::string::npos;
}

std::string meantBy(const std::string& given) {
    if (isConnectionString(given) && !isThere(given)) {
        return given;
    }
    std::vector<std::string> names;
    for (NamedConnection& connection : readConnections()) {
        if (equalsIgnoringCase(connection.name, given)) {
            return isConnectionString(connection.text) ? connection.text
                                                       : embedded(connection.text);
        }
        names.push_back(std::move(connection.name));
    }
    if (looksLikeAName(given) && !isThere(given)) {
        const std::string nearest = suggestion(given, names);
        throw UsageError(
            "\"" + given + "\" is neither a file nor a name in " + listOfConnections().string() +
            (nearest.empty() ? "; a new file needs an ending, as in " + given + ".db" : nearest));
    }
    return embedded(given);
}

}  // namespace

std::string connectionTextOf(const std::string& given) {
    if (!given.empty()) {
        return meantBy(given);
    }
    const char* variable = std::getenv(kVariable);
    if (variable == nullptr || *variable == '\0') {
        throw UsageError(std::string("--connection is required, or the variable ") + kVariable);
    }
    return meantBy(variable);
}

std::vector<std::string> connectionNames() {
    std::vector<std::string> names;
    for (NamedConnection& connection : readConnections()) {
        names.push_back(std::move(connection.name));
    }
    return names;
}

std::string databaseFile(const std::string& connectionString) {
    const std::string source = embeddedSource(connectionString);
    return source.starts_with(":memory:") ? std::string() : source;
}

void openDatabase(ado::Connection& connection, const std::string& given, Access access) {
    const std::string text = connectionTextOf(given);
    const std::string file = databaseFile(text);
    // A database that is opened for reading is not made, and the driver says so.
    if (access == Access::Reading ||
        (access == Access::Changing && !file.empty() && !isThere(file))) {
        connection.setMode(ado::ConnectModeEnum::adModeRead);
    }
    connection.Open(withLogin(text));
}

}  // namespace kap::cli
