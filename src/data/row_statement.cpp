#include "data/row_statement.hpp"

#include <cstddef>

namespace kap::ado {
namespace {

std::string insertion(const RowStatement& row) {
    const std::string into = "INSERT INTO " + row.table;
    return row.columns.empty()
               ? into + " DEFAULT VALUES"
               : into + " (" + listOf(row.columns) + ") VALUES (" + listOf(row.values) + ")";
}

std::string update(const RowStatement& row) {
    std::vector<std::string> assignments;
    assignments.reserve(row.columns.size());
    for (std::size_t i = 0; i < row.columns.size(); ++i) {
        assignments.push_back(row.columns[i] + " = " + row.values[i]);
    }
    return "UPDATE " + row.table + " SET " + listOf(assignments) + row.criteria;
}

}  // namespace

std::string listOf(const std::vector<std::string>& parts, std::string_view before) {
    std::string list;
    for (const std::string& part : parts) {
        list += list.empty() ? "" : ", ";
        list += before;
        list += part;
    }
    return list;
}

std::string textOf(const RowStatement& row) {
    switch (row.kind) {
        case RowPlan::Kind::Insert:
            return insertion(row);
        case RowPlan::Kind::Update:
            return update(row);
        case RowPlan::Kind::Delete:
            return "DELETE FROM " + row.table + row.criteria;
        case RowPlan::Kind::Read:
            break;
    }
    return "SELECT " + (row.answer.empty() ? "1" : listOf(row.answer)) + " FROM " + row.table +
           row.criteria;
}

}  // namespace kap::ado
