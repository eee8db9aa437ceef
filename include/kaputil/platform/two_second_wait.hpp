#pragma once

#include <functional>

#include <kaputil/base/export.hpp>

namespace kap::platform {

// The second of the time of day, 0 to 59.
using SecondClock = std::function<int()>;

// Waits until the clock is two seconds further than now, which takes between one and two seconds.
// It polls without sleeping. Deliberately, at second 58 or 59 it counts from 0 and therefore
// returns at once: recordset retries rely on no more than that.
KAPUTIL_EXPORT void waitTwoSeconds(const SecondClock& currentSecond);

// The same by the host's clock.
KAPUTIL_EXPORT void waitTwoSeconds();

}  // namespace kap::platform
