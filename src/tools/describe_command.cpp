#include "tools/describe_command.hpp"

#include <iostream>

#include "frame/clock.hpp"
#include "tools/database_name.hpp"
#include "tools/describe_output.hpp"
#include "tools/exit_codes.hpp"
#include "tools/output_file.hpp"
#include "tools/shown_text.hpp"
#include "tools/usage_error.hpp"
#include "tools/with_database.hpp"

namespace kap::tools {
namespace {

void print(std::ostream& out, const DescribeCommand& command, const DatabaseFacts& facts,
           const Terminal& terminal) {
    if (command.json) {
        printFactsJson(out, facts);
    } else if (command.html) {
        printFactsHtml(out, facts, command.language, databaseName(command.connection), localNow());
    } else {
        printFacts(out, facts, terminal);
    }
}

}  // namespace

int DescribeCommand::run() const {
    return withDatabase(connection, Access::Reading, json, [this](ado::Connection& database) {
        const DatabaseFacts facts = readDatabaseFacts(database, table);
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

}  // namespace kap::tools
