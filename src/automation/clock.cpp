#include "automation/clock.hpp"

#include <ctime>
#include <mutex>

#include "automation/convert/calendar.hpp"

namespace kap {

Date localNow() {
    return localTime(std::chrono::system_clock::now());
}

Date localTime(std::chrono::system_clock::time_point instant) {
    // The standard's localtime shares one buffer between threads; copying it out is guarded here.
    static std::mutex guard;
    const std::time_t seconds =
        std::chrono::system_clock::to_time_t(std::chrono::floor<std::chrono::seconds>(instant));
    const std::lock_guard lock(guard);
    const std::tm* parts = std::localtime(&seconds);  // NOLINT(concurrency-mt-unsafe)
    return convert::makeDate({parts->tm_year + 1900, parts->tm_mon + 1, parts->tm_mday},
                             {parts->tm_hour, parts->tm_min, parts->tm_sec % 60});
}

}  // namespace kap
