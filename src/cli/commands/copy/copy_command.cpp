#include "cli/commands/copy/copy_command.hpp"

#include <algorithm>
#include <iostream>
#include <stdexcept>

#include <nlohmann/json.hpp>

#include <kaputil/ado/connection.hpp>
#include <kaputil/automation/error.hpp>

#include "cli/output/exit_codes.hpp"
#include "cli/output/failure_report.hpp"
#include "cli/output/progress_bar.hpp"
#include "cli/output/shown_text.hpp"
#include "cli/output/terminal.hpp"
#include "data/dialects/sql_dialect.hpp"
#include "migrate/copied_tables.hpp"
#include "migrate/program_copy.hpp"
#include "migrate/relation_copy.hpp"
#include "migrate/table_copy.hpp"

namespace kap::cli {
namespace {

bool open(ado::Connection& connection, const std::string& text, bool json) {
    try {
        connection.Open(text);
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

// The tables to copy. Raises AutomationError when the source has one of them not.
std::vector<std::string> chosenTables(const CopyCommand& command, ado::Connection& from) {
    const migrate::CopyDialect& dialect = migrate::CopyDialect::of(from);
    for (const std::string& table : command.tables) {
        static_cast<void>(migrate::columnsOf(from, dialect, table));
    }
    return command.tables.empty() ? migrate::tablesOf(from, dialect) : command.tables;
}

bool copyTables(const CopyCommand& command, migrate::TableCopy& copy,
                const std::vector<std::string>& tables) {
    bool whole = true;
    for (const std::string& table : tables) {
        migrate::CopyOutcome outcome;
        {
            ProgressBar bar(std::cout, Terminal::ofStandardOutput(), "rows");
            outcome =
                copy.run(table, [&](std::int64_t done, std::int64_t all) { bar.show(done, all); });
        }
        print(command, table, outcome);
        whole = whole && outcome.isWhole();
    }
    return whole;
}

bool copyAll(const CopyCommand& command, const std::vector<std::string>& chosen,
             ado::Connection& from, ado::Connection& to) {
    const auto tell = [](const std::string& left) { std::cerr << shownText(left) << '\n'; };
    migrate::RelationCopy relations(from, to, tell);
    migrate::ProgramCopy programs(from, to, tell);
    const std::vector<std::string> tables = relations.inOrder(chosen);
    migrate::TableCopy copy(from, to, tell);
    copy.check(tables);
    copy.begin();
    bool whole = false;
    try {
        if (command.tables.empty()) {
            programs.copyFunctions();
        }
        whole = copyTables(command, copy, tables);
    } catch (const std::exception&) {
        copy.abandon();
        throw;
    }
    if (whole) {
        relations.copy(tables);
        programs.copyOthers(command.tables);
        relations.copyDefaults(tables);
        if (command.tables.empty()) {
            for (const std::string& other :
                 migrate::otherTablesOf(from, migrate::CopyDialect::of(from))) {
                tell("The table " + other + " stays behind: it is in another schema.");
            }
        }
        copy.finish();
    }
    return whole;
}

}  // namespace

int CopyCommand::run() const {
    const auto source = make<ado::Connection>();
    const auto target = make<ado::Connection>();
    // A wrong name of the source makes no file then.
    source->setMode(ado::ConnectModeEnum::adModeRead);
    if (!open(*source, from, json)) {
        return kNoDatabase;
    }
    for (const auto& connection : {source, target}) {
        connection->setCommandTimeout(0);
    }
    try {
        // A copy that is refused makes no file of the target, either.
        const std::vector<std::string> chosen = chosenTables(*this, *source);
        if (!open(*target, to, json)) {
            return kNoDatabase;
        }
        return copyAll(*this, chosen, *source, *target) ? kSuccess : kFailed;
    } catch (const AutomationError& error) {
        // Of the two connections the one that has failed knows more.
        reportFailures(failuresOf(target->Errors()->Count() > 0 ? *target : *source, error), json);
    } catch (const std::runtime_error& error) {
        std::cerr << "kaputil: " << shownText(error.what()) << '\n';
    }
    return kFailed;
}

}  // namespace kap::cli
