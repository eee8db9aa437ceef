#include "cli/commands/config/setting_headings.hpp"

#include <ostream>

#include "cli/output/shown_text.hpp"

namespace kap::cli {

void SettingHeadings::heading(const char* indent, const std::string& name) {
    out_ << indent << terminal_.styled(Style::Bold, shownText(name)) << '\n';
}

void SettingHeadings::show(const SettingPath& path) {
    const bool application = path.application != last_.application;
    const bool procedure = application || path.procedure != last_.procedure;
    if (application) {
        heading("", path.application);
    }
    if (procedure) {
        heading("  ", path.procedure);
    }
    if (procedure || path.module != last_.module) {
        heading("    ", path.module);
    }
    last_ = path;
}

}  // namespace kap::cli
