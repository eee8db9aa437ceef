#include <algorithm>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/binder/scope.hpp"
#include "engine/executor/stored_value.hpp"
#include "engine/script/script_runner.hpp"

// DBCC CHECKIDENT: where the numbers of a table's identity column stand, and going on from another.
namespace kap::engine {

using tsql::ServerError;

namespace {

std::string shown(const std::optional<std::int64_t>& number) {
    return "'" + (number ? plain::text(*number) : std::string("NULL")) + "'";
}

}  // namespace

void ScriptRunner::checkIdentity(Frame& frame, Instruction& instruction,
                                 const tsql::CheckIdentityStatement& node) {
    const int line = instruction.line;
    std::optional<std::int64_t> wanted;
    if (node.value) {
        const Value value = evaluate(frame, instruction, 0, *node.value, {tsql::SqlType::BigInt});
        if (const auto* number = std::get_if<std::int64_t>(&value)) wanted = *number;
    }
    Transactions::WriteScope scope(transactions_);
    const Table* table = findOwnTable(node.table, frame.program.names());
    if (table == nullptr) {
        throw ServerError(tsql::Message::CheckedObjectNotFound, {node.table.text()}, line);
    }
    const auto column = std::ranges::find_if(
        table->columns, [](const Column& each) { return each.identity.has_value(); });
    if (column == table->columns.end()) {
        throw ServerError(tsql::Message::NoIdentityColumn, {table->name}, line);
    }
    const bool up = column->identity->increment > 0;
    PreparedStatement farthest(connection_.handle(),
                               std::string(up ? "SELECT max(" : "SELECT min(") +
                                   sqlName(column->name) + ") FROM " +
                                   tableSql(table->name, table->temporary));
    std::optional<std::int64_t> stored;
    if (farthest.step() && !farthest.isNull(0)) stored = farthest.integer(0);
    farthest.reset();
    const std::optional<std::int64_t> last = counters_.lastIdentityOf(table->name);
    std::string message = "Checking identity information: current identity value " + shown(last);
    if (wanted) {
        counters_.reseed(table->name, *wanted);
    } else {
        message += ", current column value " + shown(stored);
        const bool behind = stored && last && (up ? *last < *stored : *last > *stored);
        if (node.reseeds && behind) counters_.reseed(table->name, *stored);
    }
    scope.keep();
    if (node.quietly) return;
    note(message + ".");
    note(
        "DBCC execution completed. If DBCC printed error messages, contact your system "
        "administrator.");
}

}  // namespace kap::engine
