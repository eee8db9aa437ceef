#pragma once

#include <stdexcept>

#include <kaputil/automation/string.hpp>

#include "cli/demo/demo_report.hpp"

namespace kap::cli {

// The sample company lacks what the story needs.
class StoryError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Lets Anna and Bruno, each with a connection of one's own, edit the company's documents and tells
// the report every call. It can be told again and again on one database: it deletes the oldest
// quotation and adds one.
void tellStory(DemoReport& report, const String& connectionString);

}  // namespace kap::cli
