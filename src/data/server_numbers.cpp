#include "data/server_numbers.hpp"

#include <algorithm>
#include <array>

#include <kaputil/data/error_numbers.hpp>

namespace kap::ado {
namespace {

constexpr auto kServerNumbers = std::to_array<ServerNumber>({
    {207, errors::kCommandText, "42S22"},       {208, errors::kUnknownObject, "42S02"},
    {220, errors::kTruncated, "22003"},         {232, errors::kTruncated, "22003"},
    {241, errors::kDataTypeMismatch, "22007"},  {242, errors::kDataTypeMismatch, "22007"},
    {245, errors::kDataTypeMismatch, "22018"},  {248, errors::kDataTypeMismatch, "22018"},
    {515, errors::kIntegrity, "23000"},         {547, errors::kIntegrity, "23000"},
    {701, errors::kUnspecified, "HY001"},       {823, errors::kUnspecified, "HY000"},
    {824, errors::kUnspecified, "HY000"},       {1101, errors::kUnspecified, "HY000"},
    {1105, errors::kUnspecified, "HY000"},      {1205, errors::kConcurrency, "40001"},
    {1222, errors::kTimeout, "HYT00"},          {2601, errors::kIntegrity, "23000"},
    {2627, errors::kIntegrity, "23000"},        {2628, errors::kTruncated, "22001"},
    {2714, errors::kCommandText, "42S01"},      {3701, errors::kUnknownObject, "42S02"},
    {3906, errors::kUnspecified, "25006"},      {3960, errors::kConcurrency, "40001"},
    {8114, errors::kDataTypeMismatch, "22018"}, {8115, errors::kTruncated, "22003"},
    {8134, errors::kCommandText, "22012"},      {8152, errors::kTruncated, "22001"},
    {8169, errors::kDataTypeMismatch, "22018"}, {50000, errors::kCommandText, "42000"},
});

}  // namespace

const ServerNumber* findServerNumber(int native) {
    const auto found = std::ranges::find(kServerNumbers, native, &ServerNumber::native);
    return found == kServerNumbers.end() ? nullptr : &*found;
}

}  // namespace kap::ado
