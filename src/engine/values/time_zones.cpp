#include "engine/values/time_zones.hpp"

#include <algorithm>
#include <array>

#include <kaputil/automation/plain_text.hpp>

#include "automation/convert/calendar.hpp"
#include "base/ascii.hpp"

namespace kap::engine {

namespace {

enum class SummerTime { None, Europe, NorthAmerica };

struct Zone {
    std::string_view name;
    int minutes;  // ahead of universal time in winter
    SummerTime summer;
};

constexpr int kHour = 60;
constexpr std::int64_t kTicksOfHour = std::int64_t{3600} * kFractionsPerSecond;

constexpr auto kZones = std::to_array<Zone>({
    {"UTC", 0, SummerTime::None},
    {"Greenwich Standard Time", 0, SummerTime::None},
    {"GMT Standard Time", 0, SummerTime::Europe},
    {"W. Europe Standard Time", kHour, SummerTime::Europe},
    {"Central Europe Standard Time", kHour, SummerTime::Europe},
    {"Central European Standard Time", kHour, SummerTime::Europe},
    {"Romance Standard Time", kHour, SummerTime::Europe},
    {"FLE Standard Time", 2 * kHour, SummerTime::Europe},
    {"GTB Standard Time", 2 * kHour, SummerTime::Europe},
    {"Kaliningrad Standard Time", 2 * kHour, SummerTime::None},
    {"South Africa Standard Time", 2 * kHour, SummerTime::None},
    {"Arab Standard Time", 3 * kHour, SummerTime::None},
    {"Turkey Standard Time", 3 * kHour, SummerTime::None},
    {"Russian Standard Time", 3 * kHour, SummerTime::None},
    {"Arabian Standard Time", 4 * kHour, SummerTime::None},
    {"India Standard Time", 5 * kHour + 30, SummerTime::None},
    {"SE Asia Standard Time", 7 * kHour, SummerTime::None},
    {"China Standard Time", 8 * kHour, SummerTime::None},
    {"Singapore Standard Time", 8 * kHour, SummerTime::None},
    {"Tokyo Standard Time", 9 * kHour, SummerTime::None},
    {"Korea Standard Time", 9 * kHour, SummerTime::None},
    {"E. Australia Standard Time", 10 * kHour, SummerTime::None},
    {"E. South America Standard Time", -3 * kHour, SummerTime::None},
    {"Argentina Standard Time", -3 * kHour, SummerTime::None},
    {"Atlantic Standard Time", -4 * kHour, SummerTime::NorthAmerica},
    {"Eastern Standard Time", -5 * kHour, SummerTime::NorthAmerica},
    {"Central Standard Time", -6 * kHour, SummerTime::NorthAmerica},
    {"Mountain Standard Time", -7 * kHour, SummerTime::NorthAmerica},
    {"US Mountain Standard Time", -7 * kHour, SummerTime::None},
    {"Pacific Standard Time", -8 * kHour, SummerTime::NorthAmerica},
    {"Alaskan Standard Time", -9 * kHour, SummerTime::NorthAmerica},
    {"Hawaiian Standard Time", -10 * kHour, SummerTime::None},
});

const Zone* zoneNamed(std::string_view name) {
    const auto found = std::ranges::find_if(
        kZones, [&](const Zone& zone) { return equalsIgnoringCase(zone.name, name); });
    return found == kZones.end() ? nullptr : &*found;
}

// The ticks of a midnight of universal time.
std::int64_t midnight(int year, int month, int day) {
    return instantOf({year, month, day, 0, 0, 0, 0}, 0).value().ticks;
}

// The n-th Sunday of a month, or the last for 0.
int sunday(int year, int month, int which) {
    constexpr int kWeek = 7;
    if (which == 0) {
        const int last = convert::daysInMonth(year, month);
        return last - convert::weekdayOf({year, month, last});
    }
    const int first = convert::weekdayOf({year, month, 1});
    return 1 + (kWeek - first) % kWeek + (which - 1) * kWeek;
}

bool isSummer(const Zone& zone, std::int64_t universal) {
    const int year = partsOf(Instant{universal, 0}).year;
    if (zone.summer == SummerTime::Europe) {
        // At one o'clock of universal time, everywhere at once.
        return universal >= midnight(year, 3, sunday(year, 3, 0)) + kTicksOfHour &&
               universal < midnight(year, 10, sunday(year, 10, 0)) + kTicksOfHour;
    }
    if (zone.summer == SummerTime::NorthAmerica) {
        // At two o'clock of the zone's own time.
        const std::int64_t winter = zone.minutes * (kTicksOfHour / kHour);
        return universal >= midnight(year, 3, sunday(year, 3, 2)) + 2 * kTicksOfHour - winter &&
               universal < midnight(year, 11, sunday(year, 11, 1)) + kTicksOfHour - winter;
    }
    return false;
}

int offsetAt(const Zone& zone, std::int64_t universal) {
    return zone.minutes + (isSummer(zone, universal) ? kHour : 0);
}

}  // namespace

std::optional<Instant> inZone(std::string_view name, const Instant& instant) {
    const Zone* zone = zoneNamed(name);
    if (zone == nullptr) return std::nullopt;
    return instant.onClock(offsetAt(*zone, instant.universal()));
}

std::optional<Instant> fromZone(std::string_view name, const Instant& clock) {
    const Zone* zone = zoneNamed(name);
    if (zone == nullptr) return std::nullopt;
    const Instant winter{clock.ticks, zone->minutes};
    if (offsetAt(*zone, winter.universal()) == zone->minutes) return winter;
    const Instant summer{clock.ticks, zone->minutes + kHour};
    if (offsetAt(*zone, summer.universal()) != zone->minutes) return summer;
    return winter.onClock(zone->minutes + kHour);
}

std::optional<int> readOffset(std::string_view text) {
    constexpr std::size_t kLength = 6;
    const bool formed = text.size() == kLength && (text[0] == '+' || text[0] == '-') &&
                        isAsciiDigit(text[1]) && isAsciiDigit(text[2]) && text[3] == ':' &&
                        isAsciiDigit(text[4]) && isAsciiDigit(text[5]);
    if (!formed) return std::nullopt;
    const int minutes = plain::readInt(text.substr(4)).value_or(kHour);
    const int offset = plain::readInt(text.substr(1, 2)).value_or(0) * kHour + minutes;
    if (minutes >= kHour || !isOffset(offset)) return std::nullopt;
    return text[0] == '-' ? -offset : offset;
}

}  // namespace kap::engine
