#pragma once

#include <functional>
#include <iosfwd>
#include <string>

namespace kap::cli {

// Writes a whole file, whose content `write` gives: the one of that name is replaced when
// everything is on the disk, and stays as it was when that fails. Throws UsageError with the
// reason.
void writeWholeFile(const std::string& file, const std::function<void(std::ostream&)>& write);

}  // namespace kap::cli
