#include "util/two_digit_year.hpp"

#include <cstdint>

#include <kaputil/automation/convert.hpp>

#include "automation/clock.hpp"
#include "automation/convert/calendar.hpp"

namespace kap::util {
namespace {

// The last two-digit year of the 2000s. Compared as text, so that "7 " counts as a year too.
constexpr std::u16string_view kLastYearOf2000s = u"70";

String currentYear() {
    const auto now = convert::takeApart(localNow());
    return convert::toString(static_cast<std::int32_t>(now.value().date.year));
}

}  // namespace

String fullYear(std::u16string_view year) {
    if (year.empty()) {
        return currentYear();
    }
    if (year.size() != 2) {
        return year;
    }
    return (year <= kLastYearOf2000s ? u"20" : u"19") + String(year);
}

}  // namespace kap::util
