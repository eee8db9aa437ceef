#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "drivers/odbc/column_types.hpp"
#include "drivers/odbc/query_analysis.hpp"

namespace kap::ado::odbc {

// A column of a result as the driver announces it.
struct AnnouncedColumn {
    std::string name;
    SQLSMALLINT type = SQL_VARCHAR;
    SQLULEN size = 0;
    SQLSMALLINT decimals = 0;
    SQLSMALLINT nullable = SQL_NULLABLE_UNKNOWN;
    friend bool operator==(const AnnouncedColumn&, const AnnouncedColumn&) = default;
};

// What is known of a query: what its text says, and the columns of the result that it had.
struct KnownQuery {
    QueryAnalysis analysis;
    bool oneResult = false;                  // only then are columns worth remembering
    bool saidAsWritten = false;              // the server reads it as it is
    std::vector<AnnouncedColumn> announced;  // empty: it has not been run yet
    std::vector<ColumnInfo> columns;         // of a result that was announced so
};

// The queries of a connection. Programs send the same ones again and again, with other keys in
// them: texts that differ in their constants only are one.
class KnownQueries {
public:
    // The query of a text; holds until the next one is asked for.
    [[nodiscard]] KnownQuery& of(std::string_view text);
    // The tables behind the columns may have changed.
    void forget() { queries_.clear(); }

    // A text with every number and quoted text in it replaced by the same sign.
    [[nodiscard]] static std::string shapeOf(std::string_view text);

private:
    std::map<std::string, KnownQuery, std::less<>> queries_;
    KnownQuery notKept_;
};

}  // namespace kap::ado::odbc
