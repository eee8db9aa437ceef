#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "engine/sqlite/sql_writer.hpp"
#include "tsql/stack_limit.hpp"

// How queries are written; expressions are in sql_writer.cpp.
namespace kap::engine {

namespace {

const char* textOf(sql::SetOperator op) {
    switch (op) {
        case sql::SetOperator::Union:
            return " UNION ";
        case sql::SetOperator::UnionAll:
            return " UNION ALL ";
        case sql::SetOperator::Except:
            return " EXCEPT ";
        case sql::SetOperator::Intersect:
            break;
    }
    return " INTERSECT ";
}

const char* textOf(sql::JoinOperator op) {
    switch (op) {
        case sql::JoinOperator::Inner:
            return " JOIN ";
        case sql::JoinOperator::Left:
            return " LEFT JOIN ";
        case sql::JoinOperator::Right:
            return " RIGHT JOIN ";
        case sql::JoinOperator::Full:
            return " FULL JOIN ";
        case sql::JoinOperator::Cross:
            break;
    }
    return " CROSS JOIN ";
}

const char* textOf(sql::Database database) {
    switch (database) {
        case sql::Database::None:
            return "";
        case sql::Database::Main:
            return "main.";
        case sql::Database::Temporary:
            break;
    }
    return "temp.";
}

}  // namespace

void SqlWriter::orderBy(std::span<const sql::OrderTerm> order) {
    const char* before = "ORDER BY ";
    for (const sql::OrderTerm& term : order) {
        text_ += std::exchange(before, ", ");
        write(term.value);
        if (term.descending) text_ += " DESC";
    }
}

void SqlWriter::names(std::span<const std::string> list) {
    const char* before = "";
    for (const std::string& each : list) {
        text_ += std::exchange(before, ", ");
        name(each);
    }
}

void SqlWriter::where(const sql::Expression& condition) {
    if (!condition) return;
    text_ += " WHERE ";
    write(condition);
}

void SqlWriter::limits(const sql::Expression& limit, const sql::Expression& offset) {
    if (!limit) return;
    text_ += " LIMIT ";
    write(limit);
    if (!offset) return;
    text_ += " OFFSET ";
    write(offset);
}

void SqlWriter::alias(std::string_view name) {
    if (name.empty()) return;
    text_ += " AS ";
    this->name(name);
}

void SqlWriter::bracketed(const sql::QueryTree& query) {
    text_ += '(';
    write(*query);
    text_ += ')';
}

void SqlWriter::source(const sql::TableName& table) {
    text_ += textOf(table.database);
    name(table.name);
    alias(table.alias);
}

void SqlWriter::source(const sql::Derived& derived) {
    bracketed(derived.query);
    alias(derived.alias);
}

void SqlWriter::source(const sql::RowsOf& rows) {
    write(rows.call);
    alias(rows.alias);
}

void SqlWriter::source(const sql::From& sources) {
    text_ += '(';
    write(sources);
    text_ += ')';
}

void SqlWriter::write(const sql::From& from) {
    tsql::requireStack(0);
    for (const sql::Joined& each : from) {
        if (&each != &from.front()) text_ += textOf(each.joinedBy);
        std::visit([&](const auto& kind) { source(kind); }, each.source);
        if (!each.condition) continue;
        text_ += " ON ";
        write(each.condition);
    }
}

void SqlWriter::body(const sql::Select& select) {
    const char* before = select.distinct ? "SELECT DISTINCT " : "SELECT ";
    for (const sql::Item& item : select.items) {
        text_ += std::exchange(before, ", ");
        write(item.value);
        alias(item.name);
    }
    if (!select.from.empty()) {
        text_ += " FROM ";
        write(select.from);
    }
    where(select.where);
    if (!select.groups.empty()) {
        text_ += " GROUP BY ";
        write(select.groups);
    }
    if (select.having) {
        text_ += " HAVING ";
        write(select.having);
    }
    if (!select.order.empty()) {
        text_ += ' ';
        orderBy(select.order);
    }
    limits(select.limit, select.offset);
}

void SqlWriter::body(const sql::Compound& compound) {
    for (const sql::Compound::Term& term : compound.terms) {
        if (&term != &compound.terms.front()) text_ += textOf(term.joinedBy);
        body(term.select);
    }
    if (!compound.order.empty()) {
        text_ += ' ';
        orderBy(compound.order);
    }
    limits(compound.limit, compound.offset);
}

void SqlWriter::body(const sql::Values& values) {
    const char* before = "VALUES (";
    for (const std::vector<sql::Expression>& row : values.rows) {
        text_ += std::exchange(before, ", (");
        write(row);
        text_ += ')';
    }
}

void SqlWriter::with(std::span<const sql::CommonTable> tables) {
    const char* before = "WITH RECURSIVE ";
    for (const sql::CommonTable& table : tables) {
        text_ += std::exchange(before, ", ");
        name(table.name);
        text_ += " (";
        names(table.columns);
        text_ += ") AS ";
        bracketed(table.query);
    }
    if (!tables.empty()) text_ += ' ';
}

void SqlWriter::write(const sql::Query& query) {
    tsql::requireStack(0);
    with(query.with);
    std::visit([&](const auto& kind) { body(kind); }, query.body);
}

std::string sqlOf(const sql::Query& query) {
    std::string text;
    SqlWriter(text).write(query);
    return text;
}

std::string sqlOf(const sql::From& from) {
    std::string text;
    SqlWriter(text).write(from);
    return text;
}

}  // namespace kap::engine
