#include "cli/commands/import/import_command.hpp"

#include <algorithm>
#include <iostream>
#include <iterator>
#include <string_view>
#include <utility>

#include <nlohmann/json.hpp>

#include <kaputil/automation/error.hpp>

#include "base/ascii.hpp"
#include "cli/commands/import/delimited_text.hpp"
#include "cli/commands/import/table_filler.hpp"
#include "cli/names.hpp"
#include "cli/output/exit_codes.hpp"
#include "cli/output/progress_bar.hpp"
#include "cli/output/shown_text.hpp"
#include "cli/output/usage_error.hpp"
#include "cli/text_file.hpp"
#include "cli/with_database.hpp"

namespace kap::cli {
namespace {

char singleCharacter(const std::string& given, const char* option) {
    if (equalsIgnoringCase(given, "tab") || given == "\\t") {
        return '\t';
    }
    if (given.size() != 1 || given == "\n" || given == "\r") {
        throw UsageError(std::string(option) + " takes one character, or the word tab");
    }
    return given.front();
}

std::vector<std::string> namesOf(const std::vector<ado::ColumnDefinition>& columns) {
    std::vector<std::string> names;
    names.reserve(columns.size());
    for (const ado::ColumnDefinition& column : columns) {
        names.push_back(column.name);
    }
    return names;
}

// What a table's column is filled by itself with, empty for one that is written.
std::string ownFilling(const ado::ColumnDefinition& column) {
    if (column.identity) {
        return "numbered by the database";
    }
    if (column.rowVersion) {
        return "a row version, which the database gives";
    }
    return column.computed.empty() ? "" : "computed by the database";
}

ado::ColumnDefinition columnNamed(const std::string& name,
                                  const std::vector<ado::ColumnDefinition>& all,
                                  const std::string& table) {
    const auto found = std::ranges::find_if(all, [&](const ado::ColumnDefinition& column) {
        return equalsIgnoringCase(column.name, name);
    });
    if (found == all.end()) {
        throw UsageError("the table " + table + " has no column " + name +
                         suggestion(name, namesOf(all)));
    }
    if (const std::string filling = ownFilling(*found); !filling.empty()) {
        throw UsageError("the column " + found->name + " is " + filling +
                         "; leave it out, with --columns or in the file");
    }
    return *found;
}

std::vector<ado::ColumnDefinition> columnsNamed(const std::vector<std::string>& names,
                                                const std::vector<ado::ColumnDefinition>& all,
                                                const std::string& table) {
    std::vector<ado::ColumnDefinition> chosen;
    for (const std::string& name : names) {
        ado::ColumnDefinition column = columnNamed(name, all, table);
        const auto same = [&](const ado::ColumnDefinition& other) {
            return other.name == column.name;
        };
        if (std::ranges::any_of(chosen, same)) {
            throw UsageError("the column " + column.name + " is named twice");
        }
        chosen.push_back(std::move(column));
    }
    return chosen;
}

// The names of a list with commas between.
std::vector<std::string> listed(std::string_view list) {
    std::vector<std::string> names;
    while (true) {
        const std::size_t comma = list.find(',');
        names.emplace_back(trimmed(list.substr(0, comma), " "));
        if (comma == std::string_view::npos) {
            return names;
        }
        list.remove_prefix(comma + 1);
    }
}

// Which columns the rows fill; what names them in the text is read.
std::vector<ado::ColumnDefinition> columnsFor(const ImportCommand& command,
                                              const std::vector<ado::ColumnDefinition>& all,
                                              DelimitedText& text) {
    std::vector<DelimitedValue> header;
    if (!command.noHeader && !text.next(header)) {
        throw UsageError("the file is empty; it has not even the line that names the columns");
    }
    if (command.columns) {
        return columnsNamed(listed(*command.columns), all, command.table);
    }
    if (!command.noHeader) {
        std::vector<std::string> names;
        names.reserve(header.size());
        for (const DelimitedValue& name : header) {
            names.emplace_back(trimmed(name.text, " \t"));
        }
        return columnsNamed(names, all, command.table);
    }
    std::vector<ado::ColumnDefinition> written;
    std::ranges::copy_if(all, std::back_inserter(written), [](const ado::ColumnDefinition& column) {
        return ownFilling(column).empty();
    });
    return written;
}

void printFault(const RowFault& fault, bool json) {
    if (json) {
        const nlohmann::ordered_json told = {
            {"row", fault.row},
            {"line", fault.line},
            {"column", fault.column.empty() ? nlohmann::ordered_json()
                                            : nlohmann::ordered_json(fault.column)},
            {"description", fault.reason}};
        std::cerr << nlohmann::ordered_json{{"error", told}}.dump() << '\n';
        return;
    }
    std::cerr << "row " << fault.row << " (line " << fault.line << ')';
    if (!fault.column.empty()) {
        std::cerr << ", column " << shownText(fault.column);
    }
    std::cerr << ": " << shownText(fault.reason) << '\n';
}

// Tells each fault up to the limit, and counts them.
class FaultTeller {
public:
    FaultTeller(std::uint64_t most, bool json) : most_(most), json_(json) {}

    bool tell(const RowFault& fault) {
        printFault(fault, json_);
        return ++told_ < most_;
    }
    [[nodiscard]] bool any() const noexcept { return told_ > 0; }
    [[nodiscard]] bool gaveUp() const noexcept { return told_ >= most_; }

private:
    std::uint64_t most_;
    bool json_;
    std::uint64_t told_ = 0;
};

void printOutcome(const ImportCommand& command, std::int64_t rows) {
    if (command.json) {
        const nlohmann::ordered_json outcome = {
            {"table", command.table}, {"rows", rows}, {"kept", !command.dryRun}};
        std::cout << outcome.dump() << '\n';
        return;
    }
    std::cout << rows << (rows == 1 ? " row" : " rows")
              << (command.dryRun ? " could be imported into " : " imported into ")
              << shownText(command.table) << '\n';
}

// Undone at its end unless it was kept.
class WholeImport {
public:
    explicit WholeImport(ado::Connection& database) : database_(database) {
        database_.BeginTrans();
    }
    ~WholeImport() {
        if (!kept_) {
            try {
                database_.RollbackTrans();
            } catch (const AutomationError&) {
                // A database that could not go on has ended the transaction by itself.
            }
        }
    }
    WholeImport(const WholeImport&) = delete;
    WholeImport& operator=(const WholeImport&) = delete;

    void keep() {
        database_.CommitTrans();
        kept_ = true;
    }

private:
    ado::Connection& database_;
    bool kept_ = false;
};

int importRows(const ImportCommand& command, ado::Connection& database, std::string& content,
               const CellFormat& format) {
    const char quote = command.quote.empty() ? '\0' : singleCharacter(command.quote, "--quote");
    const char delimiter = command.delimiter ? singleCharacter(*command.delimiter, "--delimiter")
                                             : delimiterOf(content, quote);
    DelimitedText text(content, delimiter, quote);
    const std::vector<ado::ColumnDefinition> all =
        migrate::importableColumns(database, command.table);
    FaultTeller faults(std::max<std::uint64_t>(command.mostErrors, 1), command.json);
    const std::vector<ado::ColumnDefinition> columns = columnsFor(command, all, text);
    std::int64_t rows = 0;
    {
        WholeImport whole(database);
        TableFiller filler(database, command.table, columns, format, command.null);
        ProgressBar bar(std::cout, Terminal::ofStandardOutput(), "bytes");
        rows = filler.fill(
            text, [&](const RowFault& fault) { return faults.tell(fault); },
            [&](std::size_t read) {
                bar.show(static_cast<std::int64_t>(read),
                         static_cast<std::int64_t>(content.size()));
            });
        if (!faults.any() && !command.dryRun) {
            whole.keep();
        }
    }
    if (faults.any()) {
        if (!command.json) {
            std::cerr << (faults.gaveUp() ? "That is as many errors as are told. " : "")
                      << "Nothing was imported.\n";
        }
        return kFailed;
    }
    printOutcome(command, rows);
    return kSuccess;
}

}  // namespace

int ImportCommand::run() const {
    return withDatabase(connection, Access::Changing, json,
                        [this](ado::Connection& database) { return runOn(database); });
}

int ImportCommand::runOn(ado::Connection& database) const {
    const CellFormat format = locale ? CellFormat(*locale) : CellFormat();
    std::string content = textOfFile(file, encoding, kLargestRows);
    return importRows(*this, database, content, format);
}

}  // namespace kap::cli
