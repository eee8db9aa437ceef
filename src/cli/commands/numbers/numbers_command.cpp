#include "cli/commands/numbers/numbers_command.hpp"

#include <algorithm>
#include <iostream>

#include <kaputil/automation/plain_text.hpp>

#include "automation/clock.hpp"
#include "cli/commands/numbers/numbers_output.hpp"
#include "cli/database_name.hpp"
#include "cli/output/exit_codes.hpp"
#include "cli/output/output_file.hpp"
#include "cli/output/shown_text.hpp"
#include "cli/output/usage_error.hpp"
#include "cli/with_database.hpp"

namespace kap::cli {
namespace {

NumbersView viewOf(const NumbersCommand& command, ado::Connection& database) {
    NumbersView view;
    view.everyNumber = command.everyNumber;
    view.from = command.from.value_or(view.from);
    view.to = command.to.value_or(view.to);
    numbering::RegisterRequest request;
    if (command.counter) {
        request.counter = String(*command.counter);
    }
    request.year = command.year;
    Variant connection{Ref<Object>(&database)};
    view.registers = numbering::readRegisters(connection, request);
    view.cutAnomalies();
    return view;
}

void print(std::ostream& out, const NumbersCommand& command, const NumbersView& view,
           const Terminal& terminal) {
    if (command.json) {
        printNumbersJson(out, view);
    } else if (command.csv) {
        printNumbersCsv(out, view);
    } else if (command.html) {
        printNumbersHtml(out, view, command.language,
                         databaseName(connectionTextOf(command.connection)), localNow());
    } else {
        printNumbers(out, view, terminal);
    }
}

bool hasAnomalies(const NumbersView& view) {
    return std::ranges::any_of(view.registers, [](const numbering::NumberRegister& one) {
        return !one.anomalies.empty();
    });
}

}  // namespace

int NumbersCommand::run() const {
    if (from && to && *from > *to) {
        throw UsageError("--from " + plain::text(*from) + " lies behind --to " + plain::text(*to));
    }
    return withDatabase(connection, Access::Reading, json, [this](ado::Connection& database) {
        const NumbersView view = viewOf(*this, database);
        if (output) {
            writeWholeFile(*output,
                           [&](std::ostream& out) { print(out, *this, view, Terminal::plain()); });
            std::cout << "The register is in " << shownText(*output) << '\n';
        } else {
            print(std::cout, *this, view, Terminal::ofStandardOutput());
        }
        return failOnAnomalies && hasAnomalies(view) ? kAnomalies : kSuccess;
    });
}

}  // namespace kap::cli
