#include <string>
#include <utility>
#include <variant>

#include "engine/sqlite/sql_writer.hpp"

// How statements are written that write rows.
namespace kap::engine {

void SqlWriter::body(const sql::Insert& insert) {
    text_ += "INSERT INTO ";
    source(insert.table);
    if (!insert.columns.empty()) {
        text_ += " (";
        names(insert.columns);
        text_ += ')';
    }
    if (const auto* rows = std::get_if<sql::Query>(&insert.rows)) {
        text_ += ' ';
        write(*rows);
    } else {
        text_ += " DEFAULT VALUES";
    }
    for (const std::string& target : insert.ignored) {
        text_ += " ON CONFLICT ";
        text_ += target;
        text_ += " DO NOTHING";
    }
}

void SqlWriter::body(const sql::Update& update) {
    text_ += "UPDATE ";
    source(update.table);
    const char* before = " SET ";
    for (const sql::Assignment& each : update.assignments) {
        text_ += std::exchange(before, ", ");
        name(each.column);
        text_ += " = ";
        write(each.value);
    }
    if (!update.from.empty()) {
        text_ += " FROM ";
        write(update.from);
    }
    where(update.where);
}

void SqlWriter::body(const sql::Delete& removal) {
    text_ += "DELETE FROM ";
    source(removal.table);
    where(removal.where);
}

void SqlWriter::write(const sql::Write& statement) {
    with(statement.with);
    std::visit([&](const auto& kind) { body(kind); }, statement.body);
    if (!statement.returning.empty()) {
        text_ += " RETURNING ";
        write(statement.returning);
    }
}

std::string sqlOf(const sql::Write& statement) {
    std::string text;
    SqlWriter(text).write(statement);
    return text;
}

}  // namespace kap::engine
