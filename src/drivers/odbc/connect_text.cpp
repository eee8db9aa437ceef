#include "drivers/odbc/connect_text.hpp"

#include <algorithm>
#include <array>
#include <optional>

#include <kaputil/automation/error.hpp>
#include <kaputil/automation/plain_text.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "base/ascii.hpp"
#include "data/failures.hpp"
#include "drivers/odbc/diagnostics.hpp"

namespace kap::ado::odbc {
namespace {

constexpr int kLongestTimeout = 86400;
constexpr const char* kFreeTds = "FreeTDS";
// Left to find the version out by itself, that driver never gives up a server that is silent.
constexpr const char* kVersionKey = "TDS_Version";
constexpr const char* kVersion = "7.4";
constexpr const char* kAnyProvider = "MSDASQL";

enum class Use : std::uint8_t { Server, Translate, Timeout, Results, Pool, Intent, Drop, Extended };

struct KeyUse {
    std::string_view key;
    Use use;
    std::string_view odbc = {};
};

// The keys of providers and what becomes of them; others are passed on.
constexpr auto kKeys = std::to_array<KeyUse>({
    {"Provider", Use::Drop},
    {"Data Source", Use::Server},
    {"Server", Use::Server},
    {"Address", Use::Server},
    {"Addr", Use::Server},
    {"Network Address", Use::Server},
    {"Initial Catalog", Use::Translate, "Database"},
    {"Database", Use::Translate, "Database"},
    {"User ID", Use::Translate, "UID"},
    {"User", Use::Translate, "UID"},
    {"UID", Use::Translate, "UID"},
    {"Password", Use::Translate, "PWD"},
    {"PWD", Use::Translate, "PWD"},
    {"Application Name", Use::Translate, "APP"},
    {"Workstation ID", Use::Translate, "WSID"},
    {"Current Language", Use::Translate, "Language"},
    {"Use Encryption for Data", Use::Translate, "Encrypt"},
    {"Trust Server Certificate", Use::Translate, "TrustServerCertificate"},
    {"Connect Timeout", Use::Timeout},
    {"Connection Timeout", Use::Timeout},
    {"Timeout", Use::Timeout},
    {"MARS Connection", Use::Results},
    {"MultipleActiveResultSets", Use::Results},
    {"Extended Properties", Use::Extended},
    {"Persist Security Info", Use::Drop},
    {"Auto Translate", Use::Drop},
    {"Packet Size", Use::Drop},
    {"Use Procedure for Prepare", Use::Drop},
    {"Tag with column collation when possible", Use::Drop},
    {"DataTypeCompatibility", Use::Drop},
    {"OLE DB Services", Use::Pool},
    {"Pooling", Use::Pool},
    {"Max Pool Size", Use::Pool},
    {"Connection Lifetime", Use::Pool},
    {"Load Balance Timeout", Use::Pool},
    {"Min Pool Size", Use::Drop},
    {"Connection Reset", Use::Drop},
    {"ApplicationIntent", Use::Intent},
    {"Application Intent", Use::Intent},
    {"General Timeout", Use::Drop},
    {"Locale Identifier", Use::Drop},
    {"Mode", Use::Drop},
});

const KeyUse* useOf(const std::string& key) {
    const auto found = std::ranges::find_if(
        kKeys, [&](const KeyUse& use) { return equalsIgnoringCase(use.key, key); });
    return found == kKeys.end() ? nullptr : found;
}

// A value as the driver manager reads it, in braces where it has to be.
std::string odbcValue(const std::string& value) {
    const bool plain = value.find_first_of("[]{}(),;?*=!@'\"") == std::string::npos &&
                       !value.starts_with(' ') && !value.ends_with(' ');
    if (plain) {
        return value;
    }
    std::string braced = "{";
    for (const char letter : value) {
        braced += letter == '}' ? "}}" : std::string(1, letter);
    }
    return braced + "}";
}

std::chrono::seconds timeoutOf(const ConnectionString::Pair& pair) {
    const auto seconds = plain::readInt(pair.value);
    if (!seconds || *seconds < 0 || *seconds > kLongestTimeout) {
        fail::invalidArgument("The connection string's " + pair.key + " is '" + pair.value +
                              "'; it must be a whole number of seconds from 0 to 86400.");
    }
    return std::chrono::seconds(*seconds);
}

int numberOf(const ConnectionString::Pair& pair, int least, int most) {
    const auto number = plain::readInt(pair.value);
    if (!number || *number < least || *number > most) {
        fail::invalidArgument("The connection string's " + pair.key + " is '" + pair.value +
                              "'; it must be a whole number from " + plain::text(least) + " to " +
                              plain::text(most) + ".");
    }
    return *number;
}

bool saysReadOnly(const ConnectionString::Pair& pair) {
    if (!equalsIgnoringCase(pair.value, "ReadOnly") &&
        !equalsIgnoringCase(pair.value, "ReadWrite")) {
        fail::invalidArgument("The connection string's " + pair.key + " is '" + pair.value +
                              "'; it must be ReadOnly or ReadWrite.");
    }
    return equalsIgnoringCase(pair.value, "ReadOnly");
}

// The lowest bit of the services is that of the pool; -1 are all of them.
Pooling poolingOf(const ConnectionString& keys) {
    constexpr int kMostConnections = 32767;
    Pooling pooling;
    bool refused = false;
    for (const ConnectionString::Pair& pair : keys.pairs()) {
        if (equalsIgnoringCase(pair.key, "OLE DB Services")) {
            const bool wanted = numberOf(pair, -kMostConnections, kMostConnections) % 2 != 0;
            pooling.wanted = pooling.wanted || wanted;
            refused = refused || !wanted;
        } else if (equalsIgnoringCase(pair.key, "Pooling")) {
            pooling.wanted = pooling.wanted || ConnectionString::isTrue(pair.value);
            refused = refused || !ConnectionString::isTrue(pair.value);
        } else if (equalsIgnoringCase(pair.key, "Max Pool Size")) {
            pooling.most = numberOf(pair, 1, kMostConnections);
        } else if (equalsIgnoringCase(pair.key, "Connection Lifetime") ||
                   equalsIgnoringCase(pair.key, "Load Balance Timeout")) {
            pooling.lifetime = std::chrono::seconds(numberOf(pair, 0, kLongestTimeout));
        }
    }
    pooling.wanted = pooling.wanted && !refused;
    return pooling;
}

// The first whole number in a driver's name; 0: none.
int versionIn(const std::string& name) {
    const std::size_t start = std::min(name.find_first_of("0123456789"), name.size());
    const std::size_t end = std::min(name.find_first_not_of("0123456789", start), name.size());
    return plain::readInt(std::string_view(name).substr(start, end - start)).value_or(0);
}

// The newest of the maker's own drivers, whose names end in "for SQL Server" behind a version.
std::optional<std::string> makersDriver(const std::vector<std::string>& installed) {
    std::optional<std::string> best;
    int bestVersion = -1;
    for (const std::string& name : installed) {
        const bool own = name.ends_with("for SQL Server") || name == "SQL Server" ||
                         name.starts_with("SQL Server Native Client");
        if (!own) {
            continue;
        }
        const int version = versionIn(name);
        if (version > bestVersion) {
            best = name;
            bestVersion = version;
        }
    }
    return best;
}

std::string serverDriver(const std::string& provider, const std::vector<std::string>& installed) {
    if (auto own = makersDriver(installed)) {
        return *own;
    }
    const auto free = std::ranges::find_if(
        installed, [](const std::string& name) { return equalsIgnoringCase(name, kFreeTds); });
    if (free != installed.end()) {
        return *free;
    }
    throw AutomationError(errors::kProviderNotFound,
                          "Provider '" + provider +
                              "' needs an ODBC driver for such servers, and none is installed. "
                              "Install the package tdsodbc, or the server maker's own driver.",
                          kErrorSource);
}

// Builds the text pair by pair; the last value given for a key holds.
class Builder {
public:
    explicit Builder(const std::string& driver) : freeTds_(equalsIgnoringCase(driver, kFreeTds)) {
        put("Driver", "{" + driver + "}");
        if (freeTds_) {
            put(kVersionKey, kVersion);
        }
    }

    void add(const ConnectionString::Pair& pair) {
        if (equalsIgnoringCase(pair.key, "Integrated Security") ||
            equalsIgnoringCase(pair.key, "Trusted_Connection")) {
            if (equalsIgnoringCase(pair.value, "SSPI") || ConnectionString::isTrue(pair.value)) {
                put("Trusted_Connection", "Yes");
            }
            return;
        }
        const KeyUse* use = useOf(pair.key);
        if (use == nullptr) {
            put(pair.key, odbcValue(pair.value));
            return;
        }
        switch (use->use) {
            case Use::Server:
                addServer(pair.value);
                break;
            case Use::Translate:
                put(std::string(use->odbc), odbcValue(pair.value));
                break;
            case Use::Results:
                put("MARS_Connection", ConnectionString::isTrue(pair.value) ? "Yes" : "No");
                break;
            case Use::Extended: {
                const ConnectionString extended = ConnectionString::parse(pair.value);
                for (const auto& inner : extended.pairs()) {
                    add(inner);
                }
                break;
            }
            case Use::Intent:
                put("ApplicationIntent", saysReadOnly(pair) ? "ReadOnly" : "ReadWrite");
                break;
            case Use::Timeout:
            case Use::Pool:
            case Use::Drop:
                break;
        }
    }

    [[nodiscard]] std::string text() const {
        std::string all;
        for (const auto& [key, value] : pairs_) {
            all += key + "=" + value + ";";
        }
        return all;
    }

private:
    // "tcp:host,port": FreeTDS takes the port by itself.
    void addServer(std::string server) {
        if (equalsIgnoringCase(server.substr(0, 4), "tcp:")) {
            server.erase(0, 4);
        }
        if (server == "." || equalsIgnoringCase(server, "(local)")) {
            server = "localhost";
        }
        const std::size_t comma = server.find(',');
        if (freeTds_ && comma != std::string::npos) {
            put("Port", odbcValue(server.substr(comma + 1)));
            server.resize(comma);
        }
        put("Server", freeTds_ ? odbcValue(server) : server);
    }

    void put(const std::string& key, std::string value) {
        const auto found = std::ranges::find_if(
            pairs_, [&](const auto& pair) { return equalsIgnoringCase(pair.first, key); });
        if (found == pairs_.end()) {
            pairs_.emplace_back(key, std::move(value));
        } else {
            found->second = std::move(value);
        }
    }

    bool freeTds_;
    std::vector<std::pair<std::string, std::string>> pairs_;
};

std::string passwordOf(const ConnectionString& keys) {
    for (const char* name : {"Password", "PWD"}) {
        if (auto found = keys.find(name)) {
            return *found;
        }
    }
    const auto extended = keys.find("Extended Properties");
    return extended ? passwordOf(ConnectionString::parse(*extended)) : std::string();
}

// "Port=5432", or behind the server's name: "host,1433".
int portOf(const ConnectionString& keys) {
    if (const auto port = keys.find("Port")) {
        return plain::readInt(*port).value_or(0);
    }
    for (const char* name : {"Data Source", "Server", "Address", "Addr", "Network Address"}) {
        const std::string server = keys.find(name).value_or("");
        const std::size_t comma = server.find(',');
        if (comma != std::string::npos) {
            return plain::readInt(server.substr(comma + 1)).value_or(0);
        }
    }
    return 0;
}

bool isOfOdbc(const ConnectionString& keys) {
    return keys.find("Driver") || keys.find("DSN") || keys.find("FILEDSN");
}

bool isDroppedFromOdbc(const ConnectionString::Pair& pair) {
    const KeyUse* use = useOf(pair.key);
    return use != nullptr &&
           (use->use == Use::Drop || use->use == Use::Timeout || use->use == Use::Results ||
            use->use == Use::Pool || use->use == Use::Intent);
}

// What asks for a copy of the server that is read only, in the words of the driver that the keys
// name; one that is not known gets the usual key.
std::string intentFor(const ConnectionString& keys) {
    constexpr std::string_view kPostgres = "postgresql";
    const auto& pairs = keys.pairs();
    const auto intent = std::ranges::find_if(pairs, [](const ConnectionString::Pair& pair) {
        const KeyUse* use = useOf(pair.key);
        return use != nullptr && use->use == Use::Intent;
    });
    if (intent == pairs.end()) {
        return {};
    }
    const bool readOnly = saysReadOnly(*intent);
    const std::string driver = asciiLower(keys.find("Driver").value_or(""));
    if (!driver.starts_with(kPostgres) && !driver.starts_with("psqlodbc")) {
        return std::string("ApplicationIntent=") + (readOnly ? "ReadOnly;" : "ReadWrite;");
    }
    const std::string given = keys.find("pqopt").value_or("");
    if (!readOnly || given.find("target_session_attrs") != std::string::npos) {
        return {};
    }
    return "pqopt=" +
           odbcValue(given + (given.empty() ? "" : " ") + "target_session_attrs=prefer-standby") +
           ";";
}

// The keys as they were given; those of the data-access objects are not the driver's.
std::string passedOn(const ConnectionString& keys) {
    const std::string intent = intentFor(keys);
    std::string text;
    for (const ConnectionString::Pair& pair : keys.pairs()) {
        if (isDroppedFromOdbc(pair)) {
            continue;
        }
        std::string key = pair.key;
        if (equalsIgnoringCase(key, "pqopt") && intent.starts_with("pqopt=")) {
            continue;  // it stands in there
        }
        if (equalsIgnoringCase(key, "User ID")) {
            key = "UID";
        } else if (equalsIgnoringCase(key, "Password")) {
            key = "PWD";
        }
        const bool driver = equalsIgnoringCase(key, "Driver");
        if (driver && equalsIgnoringCase(pair.value, kFreeTds) && !keys.find(kVersionKey)) {
            text += std::string(kVersionKey) + "=" + kVersion + ";";
        }
        text += key + "=" + (driver ? "{" + pair.value + "}" : odbcValue(pair.value)) + ";";
    }
    return text + intent;
}

// The provider of ODBC itself calls the name of a data source "Data Source".
std::string ofDataSource(const ConnectionString& keys, const std::string& source) {
    std::string text = "DSN=" + odbcValue(source) + ";";
    for (const ConnectionString::Pair& pair : keys.pairs()) {
        if (equalsIgnoringCase(pair.key, "Data Source") || isDroppedFromOdbc(pair)) {
            continue;
        }
        const KeyUse* use = useOf(pair.key);
        const bool translated = use != nullptr && use->use == Use::Translate;
        text +=
            (translated ? std::string(use->odbc) : pair.key) + "=" + odbcValue(pair.value) + ";";
    }
    return text + intentFor(keys);
}

std::string textOf(const ConnectionString& keys, const std::vector<std::string>& installed) {
    if (isOfOdbc(keys)) {
        return passedOn(keys);
    }
    const std::string provider = keys.find("Provider").value_or("");
    if (equalsIgnoringCase(provider.substr(0, 7), kAnyProvider)) {
        if (const auto extended = keys.find("Extended Properties")) {
            return *extended;
        }
        if (const auto source = keys.find("Data Source")) {
            return ofDataSource(keys, *source);
        }
    }
    Builder builder(serverDriver(provider, installed));
    for (const ConnectionString::Pair& pair : keys.pairs()) {
        builder.add(pair);
    }
    return builder.text();
}

}  // namespace

bool isServerProvider(std::string_view provider) {
    constexpr std::string_view kNames[] = {"SQLOLEDB", "MSOLEDBSQL", "SQLNCLI", "MSDASQL"};
    return std::ranges::any_of(kNames, [&](std::string_view name) {
        const std::string_view rest = provider.substr(std::min(name.size(), provider.size()));
        // A version may follow: SQLNCLI11, SQLOLEDB.1, MSOLEDBSQL19.
        return equalsIgnoringCase(provider.substr(0, name.size()), name) &&
               rest.find_first_not_of(".0123456789") == std::string_view::npos;
    });
}

ConnectText connectTextOf(const ConnectionString& keys, const std::vector<std::string>& installed,
                          std::chrono::seconds timeout) {
    ConnectText made;
    made.timeout = timeout;
    made.text = textOf(keys, installed);
    made.password = passwordOf(keys);
    made.port = portOf(keys);
    made.pooling = poolingOf(keys);
    for (const ConnectionString::Pair& pair : keys.pairs()) {
        const KeyUse* use = useOf(pair.key);
        if (use != nullptr && use->use == Use::Timeout) {
            made.timeout = timeoutOf(pair);
        }
        if (use != nullptr && use->use == Use::Results) {
            made.oneResult = !ConnectionString::isTrue(pair.value);
        }
    }
    return made;
}

}  // namespace kap::ado::odbc
