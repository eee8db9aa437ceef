#include "cli/commands/shell/shell.hpp"

#include <signal.h>

#include <filesystem>
#include <iostream>
#include <utility>

#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/platform/folders.hpp>

#include "base/ascii.hpp"
#include "cli/commands/shell/line_editor.hpp"
#include "cli/commands/shell/shell_commands.hpp"
#include "cli/commands/shell/statement_colours.hpp"
#include "cli/commands/sql/statement_scan.hpp"
#include "cli/language_option.hpp"
#include "cli/output/exit_codes.hpp"
#include "cli/output/failure_report.hpp"
#include "cli/output/language.hpp"
#include "cli/output/terminal.hpp"
#include "migrate/copied_tables.hpp"

namespace kap::cli {
namespace {

// The levels of open transactions; 0 also where they cannot be asked for.
std::int64_t openTransactions(ado::Connection& connection) {
    try {
        return migrate::numberOf(connection, "SELECT @@TRANCOUNT").value_or(0);
    } catch (const AutomationError&) {
        return 0;
    }
}

// Ctrl-C ends what is running, never the shell; nor does a pager.
void ignoreInterrupts() {
    ::signal(SIGINT, [](int) {});
#ifdef SIGPIPE
    ::signal(SIGPIPE, SIG_IGN);  // a pager may be left before it has read everything
#endif
}

class Shell {
public:
    Shell(ado::Connection& connection, std::string name)
        : names_(connection),
          state_{connection, names_},
          name_(std::move(name)),
          editor_(
              platform::dataFolder() / "history",
              [this](std::string_view before, std::string_view word) {
                  return completions(before, word);
              },
              painter()) {}

    int run() {
        std::cout
            << (userLanguage() == Language::Italian
                    ? "Le istruzioni finiscono con ; o GO. :help elenca i comandi, :quit esce.\n"
                    : "Statements end with ; or GO. :help tells the commands, :quit leaves.\n");
        while (!state_.done) {
            std::string line;
            switch (editor_.read(prompt(), line)) {
                case LineEditor::Outcome::End:
                    return kSuccess;
                case LineEditor::Outcome::Cancelled:
                    statement_.clear();
                    break;
                case LineEditor::Outcome::Line:
                    take(line);
                    break;
            }
        }
        return kSuccess;
    }

private:
    // "azienda> ", "azienda*> " within a transaction, and dots in front of a statement's other
    // lines.
    std::string prompt() {
        if (statement_.empty()) {
            inTransaction_ = openTransactions(state_.connection) > 0;
        }
        const std::string first = name_ + (inTransaction_ ? "*" : "");
        return (statement_.empty() ? first : std::string(first.size(), '.')) + "> ";
    }

    // None where nothing may be coloured.
    LineEditor::Painter painter() {
        const Terminal terminal = Terminal::ofStandardOutput();
        if (!terminal.isColoured()) {
            return nullptr;
        }
        return [this, terminal](std::string_view line) {
            return colouredLine(statement_, line, terminal);
        };
    }

    std::vector<std::string> completions(std::string_view before, std::string_view word) {
        if (statement_.empty() && before.empty() && word.starts_with(':')) {
            std::vector<std::string> found;
            for (std::string& name : shellCommandNames()) {
                if (name.starts_with(word)) {
                    found.push_back(std::move(name));
                }
            }
            return found;
        }
        return names_.completions(statement_ + std::string(before), word);
    }

    void take(const std::string& line) {
        const std::string_view text = trimmed(line, " \t");
        if (text.starts_with(':') && !scanned(statement_).open) {
            editor_.remember(line);
            runShellCommand(std::string(text), state_);
            return;
        }
        if (statement_.empty() && (text.empty() || isLeaving(text))) {
            state_.done = !text.empty();
            return;
        }
        const bool open = scanned(statement_).open;
        statement_ += line + "\n";
        if (!open && isGo(line)) {
            finish();
            return;
        }
        const ScannedScript script = scanned(statement_);
        if (!script.open && script.finished) {
            finish();
        }
    }

    static bool isLeaving(std::string_view text) {
        const std::string_view word = trimmed(text, "; \t");
        return equalsIgnoringCase(word, "quit") || equalsIgnoringCase(word, "exit");
    }

    void finish() {
        const std::string statement = std::exchange(statement_, {});
        editor_.remember(trimmed(statement, "\n"));
        if (!scanned(statement).empty) {
            try {
                runOrExplain(statement);
            } catch (const AutomationError& error) {  // a server that explains otherwise
                reportFailures(failuresOf(state_.connection, error), false);
            }
            names_.forget();
        }
    }

    // Only the statement is explained: what the shell asks by itself is always run.
    void runOrExplain(const std::string& statement) {
        if (state_.plan) {
            state_.connection.Execute(u"SET SHOWPLAN_TEXT ON");
        }
        runStatements(state_.connection, state_.variables.expanded(statement), state_.settings);
        if (state_.plan) {
            state_.connection.Execute(u"SET SHOWPLAN_TEXT OFF");
        }
    }

    SchemaNames names_;
    ShellState state_;
    std::string name_;
    std::string statement_;  // the lines of a statement that has not ended
    bool inTransaction_ = false;
    LineEditor editor_;
};

}  // namespace

int runShell(ado::Connection& connection, const std::string& name) {
    ignoreInterrupts();
    return Shell(connection, name).run();
}

}  // namespace kap::cli
