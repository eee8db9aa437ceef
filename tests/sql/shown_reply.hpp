#pragma once

#include <string>

#include "data/driver.hpp"

namespace kap::test {

// Everything that a batch answers, as text: the columns of each result with their types, its rows,
// the counts of rows, and the messages with their numbers and lines.
[[nodiscard]] std::string shownReply(ado::Session& session, const std::string& batch);

}  // namespace kap::test
