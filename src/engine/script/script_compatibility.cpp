#include <algorithm>
#include <array>

#include <kaputil/automation/plain_text.hpp>

#include "engine/script/script_runner.hpp"

// The compatibility level: at 80 the dialect has operators that were given up since.
namespace kap::engine {
namespace {

using tsql::ServerError;

constexpr int kOldLevel = 80;
constexpr int kUsualLevel = 130;
constexpr std::array kCompatibilityLevels{80, 90, 100, 110, 120, 130, 140, 150, 160};

}  // namespace

// ALTER DATABASE name SET COMPATIBILITY_LEVEL = level. What is said of levels above 80 is that the
// database is not at 80.
void ScriptRunner::setCompatibilityLevel(const std::string& text, int line) {
    const auto level = plain::readInt(text);
    if (!level || std::ranges::find(kCompatibilityLevels, *level) == kCompatibilityLevels.end()) {
        throw ServerError(tsql::Message::WrongCompatibilityLevel, {}, line);
    }
    setDatabaseSetting(kLevel80, *level == kOldLevel);
    kept_.clear();  // texts that were read at the other level
}

// sp_dbcmptlevel [name [, level]].
void ScriptRunner::compatibilityLevel(const std::vector<std::string>& arguments, int line) {
    if (arguments.size() > 1 && !arguments[1].empty()) {
        setCompatibilityLevel(arguments[1], line);
        return;
    }
    const int level = catalogue_.isOn(kLevel80) ? kOldLevel : kUsualLevel;
    note("The current compatibility level is " + plain::text(std::int64_t{level}) + ".");
}

}  // namespace kap::engine
