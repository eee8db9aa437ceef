#include "drivers/odbc/server_dialect.hpp"

#include "base/ascii.hpp"

namespace kap::ado::odbc {
namespace {

// A server of which nothing is known.
class PlainDialect final : public ServerDialect {};

bool productHolds(std::string_view product, std::string_view part) {
    return asciiLower(product).find(part) != std::string::npos;
}

}  // namespace

const ServerDialect& dialectOf(std::string_view product) {
    static const PlainDialect plain;
    if (productHolds(product, "sql server") || productHolds(product, "sybase")) {
        return transactDialect();
    }
    return productHolds(product, "postgresql") ? postgresDialect() : plain;
}

std::string ServerDialect::joined(const std::vector<std::string>& parts, std::string_view before) {
    std::string list;
    for (const std::string& part : parts) {
        list += list.empty() ? "" : ", ";
        list += before;
        list += part;
    }
    return list;
}

Comparison ServerDialect::comparison(const std::string& column, const AnnouncedType& type) const {
    return {column + " = " + mark(type)};
}

std::string ServerDialect::writing(const RowStatement& row) {
    switch (row.kind) {
        case RowChange::Kind::Insert:
            return "INSERT INTO " + row.table +
                   (row.columns.empty()
                        ? " DEFAULT VALUES"
                        : " (" + joined(row.columns) + ") VALUES (" + joined(row.marks) + ")");
        case RowChange::Kind::Update: {
            std::vector<std::string> assignments;
            for (std::size_t i = 0; i < row.columns.size(); ++i) {
                assignments.push_back(row.columns[i] + " = " + row.marks[i]);
            }
            return "UPDATE " + row.table + " SET " + joined(assignments) + row.criteria;
        }
        default:
            return "DELETE FROM " + row.table + row.criteria;
    }
}

std::string ServerDialect::returning(const RowStatement& row) const {
    return writing(row);
}

std::string ServerDialect::selecting(const RowStatement& row, const std::string& /*reading*/,
                                     bool /*transaction*/) const {
    return writing(row);
}

}  // namespace kap::ado::odbc
