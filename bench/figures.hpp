#pragma once

#include <optional>
#include <string>

#include "bench/measure.hpp"

// How figures are written for people.
namespace kap::bench {

// A number by a printf format of one double.
std::string formatted(const char* format, double value);

// With its unit; nanoseconds become larger units where they are many.
std::string figure(double value, const std::string& unit);

// "1.40 (1.38 to 1.43)"
std::string ratioText(double ratio, const std::optional<Interval>& interval);

// "<= 1.10"
std::string aimText(const Aim& aim);

// "1,000,000"
std::string counted(double value);

}  // namespace kap::bench
