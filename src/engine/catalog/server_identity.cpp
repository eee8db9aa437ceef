#include "engine/catalog/server_identity.hpp"

#include <cstdlib>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/sqlite/sqlite.hpp"
#include "engine/values/text_collation.hpp"
#include "platform/process.hpp"

namespace kap::engine {
namespace {

constexpr const char* kProductVersion = "10.50.6000.34";

}  // namespace

std::string versionText() {
    return std::string("KapLocal - ") + kProductVersion + " on SQLite " + sqliteVersion();
}

std::string hostName() {
    return platform::machineName();
}

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
    return platform::processNumber() % kMost;
}

std::string hostProcess() {
    constexpr std::size_t kLength = 10;
    std::string text = plain::text(platform::processNumber());
    text.resize(kLength, ' ');
    return text;
}

Value serverProperty(std::string_view name) {
    static constexpr std::pair<std::string_view, std::string_view> kProperties[] = {
        {"productversion", kProductVersion},
        {"productlevel", "SP3"},
        {"edition", "Express Edition"},
        {"collation", kDatabaseCollation}};
    static constexpr std::pair<std::string_view, std::int64_t> kNumbers[] = {
        {"engineedition", 4},
        {"issingleuser", 0},
        {"isintegratedsecurityonly", 0},
        {"isfulltextinstalled", 0},
        {"isclustered", 0}};
    const std::string lower = asciiLower(name);
    for (const auto& [property, value] : kProperties) {
        if (property == lower) {
            return std::string(value);
        }
    }
    for (const auto& [property, value] : kNumbers) {
        if (property == lower) {
            return value;
        }
    }
    if (lower == "servername" || lower == "machinename") {
        return hostName();
    }
    return std::monostate{};
}

}  // namespace kap::engine
