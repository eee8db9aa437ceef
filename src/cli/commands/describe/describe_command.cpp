#include "cli/commands/describe/describe_command.hpp"

#include <cstdint>
#include <filesystem>
#include <iostream>
#include <system_error>

#include "automation/clock.hpp"
#include "cli/commands/describe/describe_output.hpp"
#include "cli/database_name.hpp"
#include "cli/output/exit_codes.hpp"
#include "cli/output/output_file.hpp"
#include "cli/output/shown_text.hpp"
#include "cli/output/usage_error.hpp"
#include "cli/with_database.hpp"

namespace kap::cli {
namespace {

void print(std::ostream& out, const DescribeCommand& command, const DatabaseFacts& facts,
           const Terminal& terminal) {
    if (command.json) {
        printFactsJson(out, facts);
    } else if (command.html) {
        printFactsHtml(out, facts, command.language,
                       databaseName(connectionTextOf(command.connection)), localNow());
    } else {
        printFacts(out, facts, terminal);
    }
}

// Of a regular file; a server's name is none.
std::optional<std::int64_t> fileSize(const std::string& name) {
    const std::filesystem::path path(std::u8string(name.begin(), name.end()));
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        return std::nullopt;
    }
    const std::uintmax_t bytes = std::filesystem::file_size(path, error);
    return error ? std::nullopt : std::optional(static_cast<std::int64_t>(bytes));
}

}  // namespace

int DescribeCommand::run() const {
    return withDatabase(connection, Access::Reading, json, [this](ado::Connection& database) {
        DatabaseFacts facts = readDatabaseFacts(database, table);
        facts.bytes = fileSize(databaseFile(connectionTextOf(connection)));
        if (table && facts.tables.empty()) {
            throw UsageError("there is no table " + *table);
        }
        if (output) {
            writeWholeFile(*output,
                           [&](std::ostream& out) { print(out, *this, facts, Terminal::plain()); });
            std::cout << "The description is in " << shownText(*output) << '\n';
        } else {
            print(std::cout, *this, facts, Terminal::ofStandardOutput());
        }
        return kSuccess;
    });
}

}  // namespace kap::cli
