#include "cli/commands/sql/sql_command.hpp"

#include <unistd.h>

#include <filesystem>
#include <iostream>
#include <string_view>
#include <vector>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>

#include "base/quoting.hpp"
#include "cli/commands/shell/shell.hpp"
#include "cli/commands/sql/script_access.hpp"
#include "cli/commands/sql/script_variables.hpp"
#include "cli/commands/sql/table_printer.hpp"
#include "cli/database_name.hpp"
#include "cli/output/exit_codes.hpp"
#include "cli/output/failure_report.hpp"
#include "cli/output/shown_text.hpp"
#include "cli/output/terminal.hpp"
#include "cli/text_file.hpp"
#include "cli/with_database.hpp"

namespace kap::cli {
namespace {

std::string scriptOf(const SqlCommand& options) {
    ScriptVariables variables;
    for (const std::string& assignment : options.variables) {
        setVariable(variables, assignment);
    }
    return variables.prepared(options.command
                                  ? *options.command
                                  : textOfFile(options.file.value_or(""), options.encoding));
}

// Runs a script on a database and prints its answers.
class ScriptRun {
public:
    ScriptRun(ado::Connection& database, AnswerWriter& writer, const SqlCommand& options)
        : database_(database), writer_(writer), options_(options) {}

    // The exit code.
    int run(const std::string& script) {
        try {
            return runBatches(database_.batchesOf(script)) ? kSuccess : kFailed;
        } catch (const AutomationError& error) {
            reportFailures(failuresOf(database_, error), options_.tellsErrorsInJson());
            return kFailed;
        }
    }

private:
    bool runBatches(const std::vector<ado::ScriptBatch>& batches) {
        bool whole = true;
        for (const ado::ScriptBatch& batch : batches) {
            for (int i = 0; i < batch.count; ++i) {
                whole = runBatch(batch) && whole;
                if (!whole && !options_.keepGoing) {
                    return false;
                }
            }
        }
        return whole;
    }

    // The answers of the statements before a failing one are printed, too.
    bool runBatch(const ado::ScriptBatch& batch) {
        std::vector<Failure> failures;
        database_.Errors()->Clear();
        try {
            database_.executeEach(
                batch.text, [&](ado::Recordset& answer) { writer_.write(answer); },
                readingFor(writer_));
        } catch (const AutomationError& error) {
            failures = failuresOf(database_, error, batch.firstLine);
        }
        // What a script prints goes beside its results, so that these can be processed.
        reportFailures(failures.empty() ? messagesOf(database_, batch.firstLine) : failures,
                       options_.tellsErrorsInJson());
        return failures.empty();
    }

    ado::Connection& database_;
    AnswerWriter& writer_;
    const SqlCommand& options_;
};

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

// Nobody has said what to run, and somebody sits in front of the terminal.
bool isForAPerson(const SqlCommand& options) {
    return !options.command && !options.file && !options.check && !options.backup &&
           !options.form && !options.plan && isatty(STDIN_FILENO) == 1 &&
           isatty(STDOUT_FILENO) == 1;
}

// Whether a database that is not there is to be made: a wrong name is more often the reason.
bool wantsNewDatabase(const std::string& file) {
    std::cout << shownText(file) << " is not there. Make a new database? [y/N] " << std::flush;
    std::string answer;
    return std::getline(std::cin, answer) && !answer.empty() &&
           std::string_view("yYsS").find(answer.front()) != std::string_view::npos;
}

int shellOn(const std::string& given) {
    const std::string file = databaseFile(given);
    const bool isNew =
        !file.empty() && !std::filesystem::exists(std::u8string(file.begin(), file.end()));
    if (isNew && !wantsNewDatabase(file)) {
        return kNoDatabase;
    }
    return withDatabase(given, Access::Making, false, [&](ado::Connection& database) {
        const std::string name =
            file.empty() ? databaseName(given) : std::filesystem::path(file).stem().string();
        return runShell(database, name.empty() ? "kaputil" : name);
    });
}

}  // namespace

int SqlCommand::run() const {
    const std::string given = connectionTextOf(connection);
    if (isForAPerson(*this)) {
        return shellOn(given);
    }
    const bool alone = (check || backup) && !command && !file;
    const std::string script = alone ? std::string() : scriptOf(*this);

    const auto database = make<ado::Connection>();
    database->setCursorLocation(ado::CursorLocationEnum::adUseClient);
    try {
        openDatabase(*database, given, plan ? Access::Changing : accessOf(script));
    } catch (const AutomationError& error) {
        reportFailures(failuresOf(*database, error), tellsErrorsInJson());
        return kNoDatabase;
    }
    const auto writer = form ? answerWriter(*form, std::cout, language)
                             : tableAnswers(std::cout, Terminal::ofStandardOutput());
    ScriptRun run(*database, *writer, *this);
    int code = run.run(preparation(*this));
    if (code == kSuccess) {
        code = run.run(script);
    }
    writer->finish();
    return code;
}

}  // namespace kap::cli
