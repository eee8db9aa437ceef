#include "cli/database_name.hpp"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "base/ascii.hpp"
#include "cli/names.hpp"

namespace kap::cli {
namespace {

struct ConnectionKey {
    std::string name;
    std::string value;
};

// Takes the value at the front of `rest` and what ends it: up to a semicolon, or in quotes, a quote
// in it doubled.
std::string takeValue(std::string_view& rest) {
    std::string value;
    rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
    if (!rest.empty() && (rest.front() == '"' || rest.front() == '\'')) {
        const char quote = rest.front();
        for (rest.remove_prefix(1); !rest.empty(); rest.remove_prefix(1)) {
            if (rest.front() == quote) {
                if (!rest.substr(1).starts_with(quote)) {
                    break;
                }
                rest.remove_prefix(1);
            }
            value += rest.front();
        }
    } else {
        value = trimmed(rest.substr(0, rest.find(';')), " ");
    }
    rest.remove_prefix(std::min(rest.find(';'), rest.size()));
    return value;
}

std::vector<ConnectionKey> keysOf(std::string_view rest) {
    std::vector<ConnectionKey> keys;
    while (!rest.empty()) {
        rest.remove_prefix(std::min(rest.find_first_not_of("; "), rest.size()));
        const std::size_t equals = rest.find('=');
        if (equals == std::string_view::npos) {
            break;
        }
        ConnectionKey& key = keys.emplace_back();
        key.name = trimmed(rest.substr(0, equals), " ");
        rest.remove_prefix(equals + 1);
        key.value = takeValue(rest);
    }
    return keys;
}

std::optional<std::string> valueOf(const std::vector<ConnectionKey>& keys,
                                   std::initializer_list<std::string_view> names) {
    for (const ConnectionKey& key : keys) {
        for (const std::string_view name : names) {
            if (equalsIgnoringCase(key.name, name) && !key.value.empty()) {
                return key.value;
            }
        }
    }
    return std::nullopt;
}

}  // namespace

bool isConnectionString(std::string_view text) {
    const std::vector<ConnectionKey> keys = keysOf(text);
    constexpr std::string_view kNoPartOfAKey = "./\\:";
    return !keys.empty() && keys.front().name.find_first_of(kNoPartOfAKey) == std::string::npos;
}

std::optional<std::string> keyOf(std::string_view connectionString,
                                 std::initializer_list<std::string_view> names) {
    return valueOf(keysOf(connectionString), names);
}

std::string embeddedSource(std::string_view connectionString) {
    const std::vector<ConnectionKey> keys = keysOf(connectionString);
    const auto provider = valueOf(keys, {"Provider"});
    if (!provider || !equalsIgnoringCase(*provider, "KapLocal")) {
        return {};
    }
    return valueOf(keys, {"Data Source"}).value_or(std::string());
}

std::string databaseName(std::string_view connectionString) {
    const std::vector<ConnectionKey> keys = keysOf(connectionString);
    const auto server = valueOf(keys, {"Data Source", "Server", "DSN", "Servername"});
    const auto database = valueOf(keys, {"Initial Catalog", "Database"});
    if (server && database) {
        return *server + " / " + *database;
    }
    return server.value_or(database.value_or(std::string()));
}

}  // namespace kap::cli
