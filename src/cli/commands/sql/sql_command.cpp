#include "cli/commands/sql/sql_command.hpp"

#include <unistd.h>

#include <iostream>
#include <vector>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>

#include "base/quoting.hpp"
#include "cli/commands/sql/csv_rows.hpp"
#include "cli/commands/sql/json_rows.hpp"
#include "cli/commands/sql/script_text.hpp"
#include "cli/commands/sql/table_printer.hpp"
#include "cli/output/exit_codes.hpp"
#include "cli/output/failure_report.hpp"
#include "cli/output/terminal.hpp"

namespace kap::cli {
namespace {

std::string scriptOf(const SqlCommand& options) {
    if (options.command) {
        return *options.command;
    }
    if (options.file) {
        return readScript(*options.file);
    }
    if (isatty(STDIN_FILENO) == 1) {
        std::cerr << "Type the script; Ctrl-D on an empty line runs it.\n";
    }
    return readScript(std::cin, "standard input");
}

// Statements that neither read nor write rows (CREATE TABLE, SET) have nothing to tell.
void printAnswer(ado::Recordset& answer, const SqlCommand& options, const Terminal& terminal,
                 bool& printedBefore) {
    const bool rows = answer.State() == ado::ObjectStateEnum::adStateOpen;
    const auto written = answer.rowsAffected();
    if (!rows && !written) {
        return;
    }
    if (options.json) {
        printJson(std::cout, answer);
        return;
    }
    if (options.csv && !rows) {
        return;
    }
    if (printedBefore) {
        std::cout << '\n';
    }
    printedBefore = true;
    if (options.csv) {
        printCsv(std::cout, answer);
    } else if (rows) {
        printTable(std::cout, answer, terminal);
    } else {
        std::cout << '(' << *written << (*written == 1 ? " row affected)\n" : " rows affected)\n");
    }
}

// Runs a batch and prints its answers; those of the statements before a failing one too.
bool runBatch(ado::Connection& connection, const ado::ScriptBatch& batch, const SqlCommand& options,
              const Terminal& terminal, bool& printedBefore) {
    std::vector<Ref<ado::Recordset>> answers;
    std::vector<Failure> failures;
    connection.Errors()->Clear();
    // A table has to know its longest texts before it begins.
    const auto reading = options.json || options.csv ? ado::Connection::Reading::Once
                                                     : ado::Connection::Reading::Freely;
    try {
        connection.executeAll(batch.text, answers, reading);
    } catch (const AutomationError& error) {
        failures = failuresOf(connection, error, batch.firstLine);
    }
    try {
        for (const auto& answer : answers) {
            printAnswer(*answer, options, terminal, printedBefore);
        }
    } catch (const AutomationError& error) {  // while rows were still coming
        failures = failuresOf(connection, error, batch.firstLine);
    }
    // What a script prints goes beside its results, so that these can be processed.
    reportFailures(failures.empty() ? messagesOf(connection, batch.firstLine) : failures,
                   options.json);
    return failures.empty();
}

bool runBatches(ado::Connection& connection, const std::vector<ado::ScriptBatch>& batches,
                const SqlCommand& options) {
    const Terminal terminal = Terminal::ofStandardOutput();
    bool printedBefore = false;
    bool whole = true;
    for (const ado::ScriptBatch& batch : batches) {
        for (int i = 0; i < batch.count; ++i) {
            whole = runBatch(connection, batch, options, terminal, printedBefore) && whole;
            if (!whole && !options.keepGoing) {
                return false;
            }
        }
    }
    return whole;
}

int runScript(ado::Connection& connection, const std::string& script, const SqlCommand& options) {
    try {
        return runBatches(connection, connection.batchesOf(script), options) ? kSuccess : kFailed;
    } catch (const AutomationError& error) {
        reportFailures(failuresOf(connection, error), options.json);
        return kFailed;
    }
}

// What the options ask for before the script, in the dialect.
std::string preparation(const SqlCommand& options) {
    std::string script;
    if (options.check) {
        script += "DBCC CHECKDB\nGO\n";
    }
    if (options.backup) {
        script += "BACKUP DATABASE this TO DISK = " + nationalConstant(*options.backup) + "\nGO\n";
    }
    if (options.plan) {
        script += "SET SHOWPLAN_TEXT ON\nGO\n";
    }
    return script;
}

}  // namespace

int SqlCommand::run() const {
    std::string script;
    try {
        const bool alone = (check || backup) && !command && !file;
        script = alone ? std::string() : scriptOf(*this);
    } catch (const ScriptError& error) {
        std::cerr << "kaputil: " << error.what() << '\n';
        return kWrongUsage;
    }

    const auto database = make<ado::Connection>();
    database->setCursorLocation(ado::CursorLocationEnum::adUseClient);
    try {
        database->Open(connection);
    } catch (const AutomationError& error) {
        reportFailures(failuresOf(*database, error), json);
        return kNoDatabase;
    }
    const int prepared = runScript(*database, preparation(*this), *this);
    return prepared == kSuccess ? runScript(*database, script, *this) : prepared;
}

}  // namespace kap::cli
