#pragma once

#include <string>

#include "cli/demo/demo_report.hpp"

namespace kap::cli {

// The chapter of the demo about what the library does with the host: a query in a text file, a line
// in a log, a customer among the contacts. All in a folder of its own, which is gone at the end:
// the user's contacts are left alone.
void tellOfTheHost(DemoReport& report, const std::string& user, const String& connectionString);

}  // namespace kap::cli
