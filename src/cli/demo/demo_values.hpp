#pragma once

#include "cli/demo/demo_report.hpp"
#include "cli/demo/demo_user.hpp"

namespace kap::cli {

// The chapter of the demo about values: amounts, dates, the price of a line, and a message that
// no screen shows. Every function is called by its name.
void tellOfValues(DemoReport& report, DemoUser& user);

}  // namespace kap::cli
