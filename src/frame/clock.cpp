#include "frame/clock.hpp"

#include <ctime>
#include <mutex>

#include "frame/convert/calendar.hpp"

namespace kap {

Date localNow() {
    // The standard's localtime shares one buffer between threads; copying it out is guarded here.
    static std::mutex guard;
    const std::time_t now = std::time(nullptr);
    const std::lock_guard lock(guard);
    const std::tm* parts = std::localtime(&now);  // NOLINT(concurrency-mt-unsafe)
    return convert::makeDate({parts->tm_year + 1900, parts->tm_mon + 1, parts->tm_mday},
                             {parts->tm_hour, parts->tm_min, parts->tm_sec % 60});
}

}  // namespace kap
