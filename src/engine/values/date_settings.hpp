#pragma once

namespace kap::engine {

// The order of the numbers in a date's text, as SET DATEFORMAT names it.
enum class DateOrder { Mdy, Dmy, Ymd, Ydm, Myd, Dym };

// What a session has set for reading dates and counting weekdays.
struct DateSettings {
    DateOrder order = DateOrder::Mdy;
    int firstDay = 7;      // of the week: 1 is Monday, 7 Sunday
    bool italian = false;  // months and days have their Italian names
    bool operator==(const DateSettings&) const = default;
};

// The settings that hold on this thread: those of the session that is running.
[[nodiscard]] const DateSettings& dateSettings() noexcept;

// Puts a session's settings in force for a scope. What changes within the scope is seen through
// the reference.
class DateSettingsScope {
public:
    explicit DateSettingsScope(const DateSettings& settings) noexcept;
    DateSettingsScope(const DateSettingsScope&) = delete;
    DateSettingsScope& operator=(const DateSettingsScope&) = delete;
    ~DateSettingsScope();

private:
    const DateSettings* before_;
};

}  // namespace kap::engine
