#include "cli/commands/export/export_command.hpp"

#include <iostream>

#include <nlohmann/json.hpp>

#include <kaputil/ado/connection.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/host/text_export.hpp>
#include <kaputil/platform/message_box.hpp>

#include "cli/output/exit_codes.hpp"
#include "cli/output/failure_report.hpp"
#include "cli/output/progress_bar.hpp"
#include "cli/output/shown_text.hpp"
#include "cli/output/terminal.hpp"
#include "cli/output/usage_error.hpp"

namespace kap::cli {
namespace {

void printOutcome(const ExportCommand& command, std::int64_t rows) {
    if (command.json) {
        const nlohmann::ordered_json outcome = {
            {"folder", command.folder}, {"file", command.name}, {"rows", rows}};
        std::cout << outcome.dump() << '\n';
        return;
    }
    std::cout << rows << (rows == 1 ? " row written to " : " rows written to ")
              << shownText(command.name) << '\n';
}

// The number of rows; -1 when a message says why there is no file.
std::int64_t write(const ExportCommand& command, const Variant& connection) {
    std::int64_t rows = 0;
    ProgressBar bar(std::cout, Terminal::ofStandardOutput(), "rows");
    const bool done = host::EsportaTXT(
        String(command.query), Variant(connection), String(command.name), String(command.folder),
        !command.keepSchema, [&](std::int64_t written, std::int64_t all) {
            rows = written;
            bar.show(written, all);
        });
    return done ? rows : -1;
}

}  // namespace

int ExportCommand::run() const {
    if (name.empty() || name.find_first_of("/\\") != std::string::npos) {
        throw UsageError("the file's name has no folder; that is what --folder is for");
    }
    if (!messageLog.empty()) {
        platform::setMessageLog(messageLog);
    }
    const auto database = make<ado::Connection>();
    database->setMode(ado::ConnectModeEnum::adModeRead);
    try {
        database->Open(connection);
    } catch (const AutomationError& error) {
        reportFailures(failuresOf(*database, error), json);
        return kNoDatabase;
    }
    try {
        const std::int64_t rows = write(*this, Variant(database));
        if (rows < 0) {
            std::cerr << "kaputil: nothing was written; the message log says why\n";
            return kFailed;
        }
        printOutcome(*this, rows);
    } catch (const AutomationError& error) {
        reportFailures(failuresOf(*database, error), json);
        return kFailed;
    }
    return kSuccess;
}

}  // namespace kap::cli
