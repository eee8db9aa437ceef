#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "engine/values/value.hpp"

namespace kap::engine {

// The text that a function of the session was called with; empty when there is none or it is
// NULL.
[[nodiscard]] inline std::string textAt(const std::vector<Value>& arguments, std::size_t index) {
    const auto* text =
        index < arguments.size() ? std::get_if<std::string>(&arguments[index]) : nullptr;
    return text == nullptr ? std::string() : *text;
}

// The same for a whole number; 0 when there is none.
[[nodiscard]] inline std::int64_t wholeAt(const std::vector<Value>& arguments, std::size_t index) {
    const auto* whole =
        index < arguments.size() ? std::get_if<std::int64_t>(&arguments[index]) : nullptr;
    return whole == nullptr ? 0 : *whole;
}

}  // namespace kap::engine
