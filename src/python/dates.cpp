#include "python/dates.hpp"

#include <datetime.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include <kaputil/automation/error.hpp>

namespace kap::python {
namespace {

constexpr double kMicrosecondsPerDay = 86'400'000'000.0;

// 30 December 1899 as Python counts days.
constexpr int kOriginOrdinal = 693594;

// The calendar of automation dates: 1 January 100 to 31 December 9999.
constexpr int kFirstYear = 100;
constexpr int kFirstDay = -657434;
constexpr int kLastDay = 2958465;

void requireDateTime() {
    if (PyDateTimeAPI == nullptr) {
        PyDateTime_IMPORT;
    }
}

double microsecondsOf(PyObject* time) {
    const int minutes = PyDateTime_DATE_GET_HOUR(time) * 60 + PyDateTime_DATE_GET_MINUTE(time);
    const int seconds = minutes * 60 + PyDateTime_DATE_GET_SECOND(time);
    return seconds * 1e6 + PyDateTime_DATE_GET_MICROSECOND(time);
}

// The time of day to the microsecond. Far from the origin a Date carries less: there it is the
// whole millisecond that the Date cannot tell from its neighbours.
double microsecondsOf(Date date) {
    constexpr double kMillisecond = 1000;
    const double size = std::fabs(date.days);
    const double exact = (size - std::trunc(size)) * kMicrosecondsPerDay;
    const double step = std::nextafter(size, std::numeric_limits<double>::infinity()) - size;
    const double millisecond = std::round(exact / kMillisecond) * kMillisecond;
    const bool same = std::fabs(exact - millisecond) <= step * kMicrosecondsPerDay;
    return same ? millisecond : std::round(exact);
}

}  // namespace

bool isPythonDate(const py::handle& value) {
    requireDateTime();
    return PyDate_Check(value.ptr()) != 0;
}

Date toDate(const py::handle& value) {
    requireDateTime();
    PyObject* date = value.ptr();
    if (PyDateTime_GET_YEAR(date) < kFirstYear) {
        throw AutomationError(errors::kOverflow);
    }
    double fraction = 0;
    if (PyDateTime_Check(date) != 0) {
        if (!value.attr("tzinfo").is_none()) {
            throw py::value_error(
                "an automation date has no time zone: pass a local datetime, "
                "without tzinfo");
        }
        fraction = microsecondsOf(date) / kMicrosecondsPerDay;
    }
    const double days = value.attr("toordinal")().cast<int>() - kOriginOrdinal;
    // Before the origin the fraction counts away from zero. The last instants of the calendar are
    // closer to its end than a Date can tell.
    const double last = std::nextafter(kLastDay + 1.0, 0.0);
    return {days < 0 ? days - fraction : std::min(days + fraction, last)};
}

py::object toPython(Date date) {
    if (!(date.days > kFirstDay - 1 && date.days < kLastDay + 1)) {
        throw AutomationError(errors::kOverflow);
    }
    const auto day = static_cast<int>(std::trunc(date.days));
    double microseconds = microsecondsOf(date);
    if (day == kLastDay && microseconds == kMicrosecondsPerDay) {
        --microseconds;  // there is no midnight to round to
    }
    const py::module_ datetime = py::module_::import("datetime");
    return datetime.attr("datetime").attr("fromordinal")(day + kOriginOrdinal) +
           datetime.attr("timedelta")(0, 0, static_cast<std::int64_t>(microseconds));
}

}  // namespace kap::python
