#pragma once

#include <cstdint>

namespace kap::engine {

// Where the constants of a statement stand.
enum class Constants : std::uint8_t {
    InText,  // in its text, which is complete
    Bound,   // those that rows are found by and filled with are bound to it, so that statements
             //< that differ in nothing else share one text
};

}  // namespace kap::engine
