#pragma once

#include <string>

#include <kaputil/automation/string.hpp>

#include "cli/demo/demo_report.hpp"

namespace kap::cli {

// The chapters of the demo about scripts: lines are moved into a document in one script, and a
// script that fails leaves nothing behind. `document` is a condition that names the document, which
// has no lines; it has none afterwards.
void tellOfScripts(DemoReport& report, const String& connectionString, const std::string& document,
                   int number);

}  // namespace kap::cli
