#include "ado/embedded/server_identity.hpp"

#include <array>
#include <cstdlib>
#include <utility>

#include <sqlite3.h>
#include <unistd.h>

#include "tsql/text.hpp"

namespace kap::ado::embedded {
namespace {

constexpr const char* kProductVersion = "10.50.6000.34";

}  // namespace

std::string versionText() {
    return std::string("KapLocal - ") + kProductVersion + " on SQLite " + sqlite3_libversion();
}

#ifdef _WIN32
std::string hostName() {
    const char* name = std::getenv("COMPUTERNAME");
    return name == nullptr ? std::string() : name;
}
#else
std::string hostName() {
    std::array<char, 256> name{};
    if (gethostname(name.data(), name.size() - 1) != 0) {
        return {};
    }
    return name.data();
}
#endif

std::string loginName() {
    for (const char* variable : {"LOGNAME", "USER", "USERNAME"}) {
        if (const char* name = std::getenv(variable); name != nullptr && *name != '\0') {
            return name;
        }
    }
    return {};
}

std::int64_t sessionNumber() {
    constexpr std::int64_t kMost = 32767;
    return static_cast<std::int64_t>(getpid()) % kMost;
}

std::string hostProcess() {
    constexpr std::size_t kLength = 10;
    std::string text = tsql::integerText(static_cast<std::int64_t>(getpid()));
    text.resize(kLength, ' ');
    return text;
}

Value serverProperty(std::string_view name) {
    static constexpr std::pair<std::string_view, std::string_view> kProperties[] = {
        {"productversion", kProductVersion},
        {"productlevel", "SP3"},
        {"edition", "Express Edition"},
        {"engineedition", "4"},
        {"collation", "Latin1_General_CI_AS"},
        {"issingleuser", "0"},
        {"isintegratedsecurityonly", "0"},
        {"isfulltextinstalled", "0"},
        {"isclustered", "0"}};
    const std::string lower = tsql::asciiLower(name);
    for (const auto& [property, value] : kProperties) {
        if (property == lower) {
            return std::string(value);
        }
    }
    if (lower == "servername" || lower == "machinename") {
        return hostName();
    }
    return std::monostate{};
}

}  // namespace kap::ado::embedded
