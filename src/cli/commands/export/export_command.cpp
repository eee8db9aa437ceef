#include "cli/commands/export/export_command.hpp"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string_view>

#include <nlohmann/json.hpp>

#include <kaputil/ado/connection.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/host/text_export.hpp>
#include <kaputil/platform/message_box.hpp>

#include "base/ascii.hpp"
#include "cli/commands/export/fitting_schema.hpp"
#include "cli/commands/export/kept_file.hpp"
#include "cli/commands/sql/answer_writer.hpp"
#include "cli/connection_text.hpp"
#include "cli/output/exit_codes.hpp"
#include "cli/output/failure_report.hpp"
#include "cli/output/output_file.hpp"
#include "cli/output/progress_bar.hpp"
#include "cli/output/shown_text.hpp"
#include "cli/output/terminal.hpp"
#include "cli/output/usage_error.hpp"
#include "cli/temporary_folder.hpp"

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

// The message boxes of an export, which are its only reason when it says no more than that it has
// failed.
class ShownMessages {
public:
    // At the end they are added to `log`, unless that is empty.
    explicit ShownMessages(const std::string& log) : log_(log) { platform::setMessageLog(file()); }
    ~ShownMessages() {
        if (!log_.empty()) {
            std::ofstream(log_, std::ios::binary | std::ios::app) << all();
        }
    }
    ShownMessages(const ShownMessages&) = delete;
    ShownMessages& operator=(const ShownMessages&) = delete;

    // The text of the last one.
    [[nodiscard]] std::string last() const {
        const std::string all = this->all();
        const std::string_view entry = trimmed(all, "\r\n");
        const std::size_t line = entry.rfind('\n') + 1;  // 0 when there is one line
        const std::size_t text = entry.rfind('\t');
        return std::string(entry.substr(text == entry.npos || text < line ? line : text + 1));
    }

private:
    [[nodiscard]] std::filesystem::path file() const { return folder_.path() / "messages"; }
    [[nodiscard]] std::string all() const {
        std::ifstream in(file(), std::ios::binary);
        return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    }

    TemporaryFolder folder_;
    const std::string& log_;
};

// The rows as comma-separated values; how many.
std::int64_t writeCsv(const ExportCommand& command, ado::Connection& database) {
    std::int64_t rows = 0;
    const std::filesystem::path file = std::filesystem::path(command.folder) / command.name;
    writeWholeFile(file.string(), [&](std::ostream& out) {
        const auto writer = answerWriter(AnswerForm::Csv, out, Language::English);
        database.executeEach(
            String(command.query), [&](ado::Recordset& answer) { rows += writer->write(answer); },
            readingFor(*writer));
        writer->finish();
    });
    return rows;
}

// The number of rows; -1 when a message says why there is no file.
std::int64_t write(const ExportCommand& command, const Variant& connection) {
    std::int64_t rows = 0;
    ProgressBar bar(std::cout, Terminal::ofStandardOutput(), "rows");
    const bool done = host::EsportaTXT(
        String(command.query), Variant(connection), String(command.name), String(command.folder),
        !command.keepSchema && !command.fit, [&](std::int64_t written, std::int64_t all) {
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
    const auto database = make<ado::Connection>();
    try {
        openDatabase(*database, connection, Access::Reading);
    } catch (const AutomationError& error) {
        reportFailures(failuresOf(*database, error), json);
        return kNoDatabase;
    }
    try {
        if (csv) {
            printOutcome(*this, writeCsv(*this, *database));
            return kSuccess;
        }
        if (fit) {
            writeFittingSchema(*database, query, folder, name);
        }
        KeptFile file(std::filesystem::path(folder) / name);
        const ShownMessages messages(messageLog);
        const std::int64_t rows = write(*this, Variant(database));
        if (rows < 0) {
            reportFailures({{errors::kObjectError, 0, 0, messages.last()}}, json);
            return kFailed;
        }
        file.done();
        printOutcome(*this, rows);
    } catch (const AutomationError& error) {
        reportFailures(failuresOf(*database, error), json);
        return kFailed;
    }
    return kSuccess;
}

}  // namespace kap::cli
