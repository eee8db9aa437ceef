#include "cli/commands/copy/copy_command.hpp"

#include <iostream>
#include <optional>
#include <stdexcept>

#include <nlohmann/json.hpp>

#include <kaputil/ado/connection.hpp>
#include <kaputil/automation/error.hpp>

#include "cli/connection_text.hpp"
#include "cli/output/exit_codes.hpp"
#include "cli/output/failure_report.hpp"
#include "cli/output/progress_bar.hpp"
#include "cli/output/shown_text.hpp"
#include "cli/output/terminal.hpp"
#include "migrate/database_copy.hpp"

namespace kap::cli {
namespace {

bool open(ado::Connection& connection, const std::string& given, Access access, bool json) {
    try {
        openDatabase(connection, given, access);
        return true;
    } catch (const AutomationError& error) {
        reportFailures(failuresOf(connection, error), json);
        return false;
    }
}

void print(const CopyCommand& command, const std::string& table,
           const migrate::CopyOutcome& outcome) {
    if (command.json) {
        const nlohmann::ordered_json line = {{"table", table},
                                             {"rows", outcome.rows},
                                             {"checksum", outcome.target.text()},
                                             {"equal", outcome.isWhole()}};
        std::cout << line.dump() << '\n';
        return;
    }
    std::cout << shownText(table) << "  " << outcome.rows
              << (outcome.rows == 1 ? " row  " : " rows  ") << outcome.target.text();
    if (!outcome.isWhole()) {
        std::cout << "  DIFFERENT: the source has " << outcome.source.rows << " rows, "
                  << outcome.source.text();
    }
    std::cout << '\n';
}

migrate::CopyListener listenerFor(const CopyCommand& command, std::optional<ProgressBar>& bar) {
    return {.tell = [](const std::string& left) { std::cerr << shownText(left) << '\n'; },
            .begins =
                [&](const std::string& /*table*/) {
                    bar.emplace(std::cout, Terminal::ofStandardOutput(), "rows");
                },
            .progress = [&](std::int64_t done, std::int64_t all) { bar->show(done, all); },
            .ends =
                [&](const std::string& table, const migrate::CopyOutcome& outcome) {
                    bar.reset();
                    print(command, table, outcome);
                }};
}

}  // namespace

int CopyCommand::run() const {
    const auto source = make<ado::Connection>();
    const auto target = make<ado::Connection>();
    if (!open(*source, from, Access::Reading, json)) {
        return kNoDatabase;
    }
    for (const auto& connection : {source, target}) {
        connection->setCommandTimeout(0);
    }
    try {
        // A copy that is refused makes no file of the target, either.
        migrate::DatabaseCopy copy(*source, tables);
        if (!open(*target, to, Access::Making, json)) {
            return kNoDatabase;
        }
        std::optional<ProgressBar> bar;
        return copy.run(*target, listenerFor(*this, bar)) ? kSuccess : kFailed;
    } catch (const AutomationError& error) {
        // Of the two connections the one that has failed knows more.
        reportFailures(failuresOf(target->Errors()->Count() > 0 ? *target : *source, error), json);
    } catch (const std::runtime_error& error) {
        std::cerr << "kaputil: " << shownText(error.what()) << '\n';
    }
    return kFailed;
}

}  // namespace kap::cli
