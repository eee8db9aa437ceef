#pragma once

#include <iosfwd>

#include "cli/commands/config/settings_file.hpp"
#include "cli/output/terminal.hpp"

namespace kap::cli {

// The headings of a tree of settings, every name of the way down once.
class SettingHeadings {
public:
    SettingHeadings(std::ostream& out, const Terminal& terminal) : out_(out), terminal_(terminal) {}

    // Those that a setting's line needs above it.
    void show(const SettingPath& path);

private:
    void heading(const char* indent, const std::string& name);

    std::ostream& out_;
    Terminal terminal_;
    SettingPath last_;
};

}  // namespace kap::cli
