#include "data/sql_states.hpp"

#include <algorithm>
#include <array>

#include <kaputil/data/error_numbers.hpp>

namespace kap::ado {
namespace {

struct Mapping {
    std::string_view state;  // or its first letters
    std::int32_t number;
};

// The first that fits.
constexpr auto kMappings = std::to_array<Mapping>({
    {"42S02", errors::kUnknownObject},
    {"42P01", errors::kUnknownObject},
    {"3F000", errors::kUnknownObject},
    {"23", errors::kIntegrity},
    {"44000", errors::kIntegrity},
    {"40001", errors::kConcurrency},
    {"40P01", errors::kConcurrency},
    {"HYT", errors::kTimeout},
    {"S1T00", errors::kTimeout},
    {"57014", errors::kTimeout},
    {"28", errors::kLogin},
    {"08", errors::kUnspecified},
    {"57P", errors::kUnspecified},
    {"01002", errors::kUnspecified},
    {"22001", errors::kTruncated},
    {"22003", errors::kTruncated},
    {"22008", errors::kTruncated},
    {"22007", errors::kDataTypeMismatch},
    {"22018", errors::kDataTypeMismatch},
    {"22P02", errors::kDataTypeMismatch},
    {"25006", errors::kUnspecified},
    {"HYC00", errors::kFeatureNotAvailable},
    {"IM001", errors::kFeatureNotAvailable},
    {"HY", errors::kUnspecified},
    {"IM", errors::kUnspecified},
    {"", errors::kCommandText},
});

}  // namespace

std::int32_t numberOfState(std::string_view state) {
    return std::ranges::find_if(
               kMappings, [&](const Mapping& known) { return state.starts_with(known.state); })
        ->number;
}

}  // namespace kap::ado
