#include "cli/commands/batch/batch_command.hpp"

#include <algorithm>
#include <iostream>
#include <string_view>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include <kaputil/ado/connection.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/sqlscript/csql.hpp>

#include "base/quoting.hpp"
#include "cli/commands/batch/batch_file.hpp"
#include "cli/commands/sql/script_access.hpp"
#include "cli/output/exit_codes.hpp"
#include "cli/output/failure_report.hpp"
#include "cli/output/shown_text.hpp"
#include "cli/output/usage_error.hpp"
#include "cli/text_file.hpp"

namespace kap::cli {
namespace {

// Where a statement stands in the script that is sent.
struct Place {
    std::int32_t first = 0;  // line, from 1
    std::int32_t last = 0;
};

std::int32_t linesIn(std::u16string_view text) {
    return static_cast<std::int32_t>(std::ranges::count(text, u'\n'));
}

// A statement that fills the screen would push its own error out of sight.
void printIndented(std::string_view text) {
    constexpr int kMostLines = 20;
    for (int shown = 0; !text.empty(); ++shown) {
        if (shown == kMostLines) {
            const auto left = std::count(text.begin(), text.end(), '\n') + (text.back() != '\n');
            std::cerr << "    ... (" << left << " more lines)\n";
            return;
        }
        const std::string_view line = text.substr(0, text.find('\n'));
        std::cerr << "    " << shownText(line) << '\n';
        text.remove_prefix(std::min(line.size() + 1, text.size()));
    }
}

// A quote in a message has to be doubled by whoever gives the message.
String quotesDoubled(const std::string& message) {
    std::string doubled;
    appendDoubling(doubled, message, '\'');
    return doubled;
}

// The statements collected in a script, and where each of them went.
class Batch {
public:
    explicit Batch(std::vector<BatchStatement> statements) : statements_(std::move(statements)) {
        constexpr std::int32_t kLinesBefore = 4;
        std::int32_t line = kLinesBefore + 1;
        for (const BatchStatement& statement : statements_) {
            const String text = statement.text;
            const String block = sql_->Command(text, quotesDoubled(statement.message));
            places_.push_back({line + 1, line + 1 + linesIn(text)});  // behind its message line
            line += linesIn(block);
        }
    }

    [[nodiscard]] CSQL& sql() const { return *sql_; }
    [[nodiscard]] std::size_t size() const { return statements_.size(); }
    [[nodiscard]] Access access() const {
        const bool makes = std::ranges::any_of(statements_, [](const BatchStatement& each) {
            return accessOf(each.text) == Access::Making;
        });
        return makes ? Access::Making : Access::Changing;
    }

    // What the run on a connection reported, told in lines of the file, and the failing statement.
    int report(const ado::Connection& connection, bool json) const {
        std::vector<Failure> failures = messagesOf(connection);
        const BatchStatement* failing = nullptr;
        for (Failure& failure : failures) {
            const auto place = std::ranges::find_if(places_, [&](const Place& one) {
                return one.first <= failure.line && failure.line <= one.last;
            });
            if (place == places_.end()) {
                failure.line = 0;  // of a line that the file does not have
                continue;
            }
            const auto& statement = statements_[static_cast<std::size_t>(place - places_.begin())];
            failure.line += statement.line - place->first;
            if (failing == nullptr && !failure.isMessage()) {
                failing = &statement;
            }
        }
        std::cout.flush();
        for (const Failure& failure : failures) {
            printFailure(std::cerr, failure, json);
        }
        tellStatement(failing, json);
        return kFailed;
    }

private:
    static void tellStatement(const BatchStatement* failing, bool json) {
        if (json) {
            nlohmann::ordered_json told = nullptr;
            if (failing != nullptr) {
                told = {{"line", failing->line},
                        {"message", failing->message},
                        {"text", failing->text}};
            }
            std::cerr << nlohmann::ordered_json{{"statement", told}}.dump() << '\n';
            return;
        }
        if (failing != nullptr) {
            std::cerr << "in the statement of line " << failing->line << ":\n";
            printIndented(failing->text);
        }
        std::cerr << "Nothing was changed.\n";
    }

    std::vector<BatchStatement> statements_;
    std::vector<Place> places_;
    Ref<CSQL> sql_ = make<CSQL>();
};

int runOn(const std::string& given, const Batch& batch, bool json) {
    const auto connection = make<ado::Connection>();
    try {
        openDatabase(*connection, given, batch.access());
    } catch (const AutomationError& error) {
        reportFailures(failuresOf(*connection, error), json);
        return kNoDatabase;
    }
    batch.sql().setActiveConnection(connection);
    if (!batch.sql().Execute()) {
        return batch.report(*connection, json);
    }
    if (json) {
        std::cout << nlohmann::ordered_json{{"statements", batch.size()}}.dump() << '\n';
    } else {
        std::cout << batch.size() << (batch.size() == 1 ? " statement" : " statements")
                  << " executed.\n";
    }
    return kSuccess;
}

std::vector<BatchStatement> statementsOf(const std::string& file) {
    const std::string script = textOfFile(file);
    try {
        return readStatements(script, file);
    } catch (const AutomationError& error) {
        throw UsageError(file + ": " + error.what());
    }
}

}  // namespace

int BatchCommand::run() const {
    const std::string database = dryRun ? std::string() : connectionTextOf(connection);
    const Batch batch(statementsOf(file));
    if (dryRun) {
        std::cout << batch.sql().SQL_Execute().utf8() << '\n';
        return kSuccess;
    }
    return runOn(database, batch, json);
}

}  // namespace kap::cli
