#pragma once

#include <kaputil/automation/string.hpp>

#include "cli/demo/demo_report.hpp"

namespace kap::cli {

// The chapters of the demo about configuration: what each group of users has set, and a print
// layout that a user adds, saves and finds again. It leaves the company's configuration as it was.
void tellOfConfiguration(DemoReport& report, const String& connectionString);

}  // namespace kap::cli
