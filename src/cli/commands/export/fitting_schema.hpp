#pragma once

#include <string>

#include <kaputil/ado/connection.hpp>

namespace kap::cli {

// Describes a file in the Schema.ini of its folder so that every value of a query fits: lines of
// fixed length, each column as wide as the longest value that its type has, and a text without
// limit as wide as the longest there is. What the file's section held before is gone. Raises what
// running the query raises; throws UsageError for a column that holds bytes.
void writeFittingSchema(ado::Connection& connection, const std::string& query,
                        const std::string& folder, const std::string& file);

}  // namespace kap::cli
