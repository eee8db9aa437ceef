#pragma once

#include <deque>
#include <string>
#include <type_traits>
#include <vector>

#include "base/restored.hpp"
#include "engine/binder/bound_expression.hpp"
#include "engine/binder/name_scope.hpp"
#include "tsql/syntax.hpp"

namespace kap::engine {

// A column that names can mean: of a stored table, or of a query in FROM.
struct SourceColumn {
    std::string name;
    BoundExpression value;
};

// A table or query of FROM under the name by which columns are qualified.
struct Source {
    std::string name;              // as SQLite knows it
    const Table* table = nullptr;  // null for a query
    std::vector<SourceColumn> columns;
    std::string common = {};  // the common table or written view that it reads; empty: none
    // The stored name of the table or view that stands under its own name; empty for an alias.
    std::string object = {};
    // The column that brings the numbers of the table's rows, where SQLite's own is out of sight;
    // none: see rowNumberOf().
    sql::Expression rowNumber = {};
};

// Whether an aggregate function may stand at a place; where not, the error says why.
enum class AggregateUse {
    Allowed,
    Refused,
    RefusedInWhere,
    RefusedInOn,
    RefusedInGroupBy,
    RefusedInSet
};

// The values of the rows around that a query is given because SQLite does not let it read them: its
// ?1, ?2 and so on.
struct GivenValues {
    std::vector<sql::Expression> values;  // as the query around reads them
    std::deque<SourceColumn> columns;     // that stand for such values

    // What stands for a value within the query.
    [[nodiscard]] sql::Expression given(const sql::Expression& value);
};

// What names mean within one SELECT, and around it.
struct Scope {
    Scope* outer = nullptr;
    // Of the left side of an APPLY: what is found here or further out is given to the right side.
    GivenValues* given = nullptr;
    std::vector<Source> sources;
    std::size_t target = 0;  // which of `sources` the statement writes, when it writes one
    AggregateUse aggregates = AggregateUse::Refused;
    bool insideAggregate = false;
    bool windowsRefused = false;  // of HAVING, where aggregates may stand
    bool insideWindow = false;    // of the arguments and the OVER of a windowed function
    // Set while what comes after grouping is bound: only `groups` and aggregates have a value
    // then.
    bool grouped = false;
    std::vector<sql::Expression> groups;  // the expressions of GROUP BY
    // Of several grouping sets: what each of `groups` is once rows are grouped, null in the sets
    // that leave it out; and whether it is left out, 1 or 0.
    bool groupingSets = false;
    std::vector<sql::Expression> groupedValues;
    std::vector<sql::Expression> groupsLeftOut;
    const char* groupedClause = "select list";
    // Where column names may not stand at all (defaults of columns, rows of VALUES): error 128.
    bool columnsRefused = false;
    // Of TOP, OFFSET and FETCH, which are computed before there are rows: `outer` is the query
    // that they belong to.
    bool limitsRows = false;
    bool limitReadsOuter = false;  // TOP of a query whose rows can be numbered instead
    // Whether names were found here, or in a query around: what an aggregate function asks.
    mutable bool readsOwn = false;
    mutable bool readsOuter = false;
    // The sequences that numbers of the row are drawn from, so far.
    std::vector<std::string> drawnFrom;
    // Where subqueries may not stand (defaults of columns): error 1046.
    bool subqueriesRefused = false;
};

// The column a name means, as its source spells it. Errors: 207, 209, 4104, 128, and 8120 for a
// column that grouping leaves undefined.
[[nodiscard]] const SourceColumn& resolveColumn(const tsql::ObjectName& name, const Scope& scope);

// The source that "x" in "x.*" means. Error 107 when there is none.
[[nodiscard]] const Source& resolveQualifier(const tsql::ObjectName& name, const Scope& scope);

// The table a name means, or null; likewise the view. Names without a schema are looked for in
// `schema` and then in dbo.
[[nodiscard]] const Table* findTable(const tsql::ObjectName& name, const NameScope& names,
                                     std::string_view schema);
[[nodiscard]] const View* findView(const tsql::ObjectName& name, const NameScope& names,
                                   std::string_view schema);
// The same with the schema of the script's own names.
[[nodiscard]] const Table* findTable(const tsql::ObjectName& name, const NameScope& names);
[[nodiscard]] const View* findView(const tsql::ObjectName& name, const NameScope& names);
// The table that has the name itself, for what defines it: no synonym stands for it there.
[[nodiscard]] const Table* findOwnTable(const tsql::ObjectName& name, const NameScope& names);

// Errors 208, and 1087 for a table variable: there is no such table.
[[noreturn]] void noSuchTable(const tsql::ObjectName& name);
// The table. Errors when there is none.
[[nodiscard]] const Table& requireTable(const tsql::ObjectName& name, const NameScope& names);

// What a table is called that a name means: a table variable, inserted and deleted have a name in
// the script and another in the file.
[[nodiscard]] std::string shownName(const Table& table, const tsql::ObjectName& name,
                                    const NameScope& names);
// The stored name by which columns of a table or view are qualified that has none in the script:
// that of the synonym it is read by, or its own.
[[nodiscard]] std::string exposedName(const std::string& stored, const tsql::ObjectName& name,
                                      const NameScope& names);

// The table as SQLite is to read or write it: main."t" or temp."#t".
[[nodiscard]] std::string tableSql(const std::string& name, bool temporary);

}  // namespace kap::engine
