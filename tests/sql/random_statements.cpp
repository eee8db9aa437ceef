#include "random_statements.hpp"

namespace kap::test {

std::vector<std::string> RandomStatements::schema() {
    return {
        "CREATE TABLE t (a int NOT NULL PRIMARY KEY, b int, c varchar(20), d datetime, m money)\n"
        "CREATE TABLE u (a int, b int, c varchar(20))\n"
        "CREATE TABLE i (id int IDENTITY PRIMARY KEY, a int, n AS a + 1, r timestamp)\n"
        "CREATE TABLE p (a int PRIMARY KEY, b int UNIQUE)\n"
        "CREATE TABLE k (a int REFERENCES p (a) ON DELETE CASCADE, b int, c varchar(20))\n"
        "CREATE TABLE #w (a int, b int, c nvarchar(20))\n"
        "INSERT t VALUES (1, 10, 'x', '20200101', 1.5), (2, NULL, 'y', NULL, NULL), (3, 30, NULL, "
        "'20211231', 3)\n"
        "INSERT u VALUES (1, 100, 'x'), (2, 200, 'z'), (2, 201, NULL)\n"
        "INSERT i (a) VALUES (1), (2)\n"
        "INSERT p VALUES (1, 1), (2, NULL)\n"
        "INSERT k VALUES (1, 1, 'k'), (2, 2, 'l')\n"
        "INSERT #w VALUES (1, 2, N'w'), (3, 4, N'v')",
        "CREATE VIEW v AS SELECT a, b, c FROM t WHERE a > 0",
        "CREATE VIEW j AS SELECT t.a, u.b, t.c FROM t INNER JOIN u ON u.a = t.a",
        "CREATE VIEW g AS SELECT a, count(*) AS b, max(c) AS c FROM u GROUP BY a",
        "CREATE VIEW o AS SELECT a, b, c FROM t WHERE a < 100 WITH CHECK OPTION",
        "CREATE FUNCTION f (@x int, @y int = 2) RETURNS int AS BEGIN RETURN (SELECT count(*) FROM "
        "u "
        "WHERE a = @x) + @y END",
        "CREATE TRIGGER tk ON k FOR INSERT, UPDATE, DELETE AS UPDATE u SET b = i.b FROM inserted i "
        "WHERE i.a = u.a DELETE #w FROM deleted d WHERE d.a = #w.a",
    };
}

std::size_t RandomStatements::below(std::size_t limit) {
    return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random_);
}

std::string RandomStatements::oneOf(std::initializer_list<const char*> texts) {
    return *(texts.begin() + below(texts.size()));
}

std::string RandomStatements::newName() {
    return "x" + std::to_string(++names_);
}

std::string RandomStatements::next() {
    names_ = 0;
    scopes_.clear();
    std::string batch =
        "DECLARE @n int, @s varchar(20) SET @n = 1 SET @s = 'x' DECLARE @v TABLE (a "
        "int, b int, c varchar(20)) INSERT @v VALUES (1, 2, 'v') ";
    return batch + statement();
}

std::string RandomStatements::statement() {
    switch (below(12)) {
        case 0:
        case 1:
            return update();
        case 2:
        case 3:
            return erase();
        case 4:
            return insert();
        case 5:
            return merge();
        case 6:
            return cursor();
        case 7:
            return definition();
        case 8:
            return control();
        case 9:
            return commonTables() + " " + query(2, 1 + below(3));
        default:
            return query(3, 1 + below(4));
    }
}

std::string RandomStatements::target() {
    return oneOf({"t", "u", "u", "i", "k", "p", "#w", "@v", "v", "j", "g", "o", "dbo.t", "dbo.v"});
}

std::string RandomStatements::output(bool inserted, bool deleted, const Scope& others) {
    if (!chance(25)) return "";
    std::string items;
    for (std::size_t count = 1 + below(2); count > 0; --count) {
        const std::string name =
            others.empty() || chance(60)
                ? (inserted && (!deleted || chance(50)) ? "inserted" : "deleted")
                : others[below(others.size())].name;
        items += (items.empty() ? " OUTPUT " : ", ") + name + "." + oneOf({"a", "b", "*"});
    }
    return items + (chance(20) ? " INTO @v (a)" : "");
}

std::string RandomStatements::writtenTable(Scope& scope, std::string& sources) {
    std::string written = target();
    if (chance(70)) {
        sources = from(2, scope);
        if (!scope.empty() && chance(60)) written = scope[below(scope.size())].name;
    }
    Scope around = scope;
    around.push_back({written, {"a", "b", "c"}});
    scopes_.push_back(around);
    return written;
}

std::string RandomStatements::update() {
    Scope scope;
    std::string sources;
    const std::string written = writtenTable(scope, sources);
    std::string set;
    for (std::size_t count = 1 + below(2); count > 0; --count) {
        const std::string assigned = chance(10)   ? "@n"
                                     : chance(10) ? "@n = b"
                                                  : oneOf({"b", "c", "b", "a", "x.b"});
        set += (set.empty() ? "" : ", ") + assigned + oneOf({" = ", " = ", " = ", " += "}) +
               (chance(8) ? "DEFAULT" : value(2));
    }
    std::string result = (chance(15) ? commonTables() : "") + " UPDATE " +
                         (chance(15) ? top() : "") + written + oneOf({"", "", " WITH (ROWLOCK)"}) +
                         " SET " + set + output(true, true, scope) + sources;
    if (chance(70)) result += " WHERE " + condition(2);
    return result + (chance(10) ? " OPTION (MAXDOP 1)" : "");
}

std::string RandomStatements::erase() {
    Scope scope;
    std::string sources;
    const std::string written = writtenTable(scope, sources);
    std::string result = (chance(15) ? commonTables() : "") + " DELETE " +
                         (chance(15) ? top() : "") + oneOf({"", "FROM "}) + written +
                         output(false, true, scope) + sources;
    if (chance(80)) result += " WHERE " + condition(2);
    return result;
}

std::string RandomStatements::insert() {
    std::string result = "INSERT " + (chance(15) ? top() : "") + oneOf({"", "INTO "}) + target() +
                         oneOf({" (a, b)", " (a, b)", " (a)", ""}) + output(true, false, {});
    if (chance(50)) return result + " " + query(2, 2);
    if (chance(10)) return result + " DEFAULT VALUES";
    return result + " VALUES (" + value(2) + ", " + value(2) + ")";
}

std::string RandomStatements::merge() {
    Scope scope;
    std::string written = oneOf({"t", "u", "k", "i", "#w", "@v", "v"});
    std::string result = "MERGE " + (chance(15) ? top() : "") + oneOf({"", "INTO "}) + written +
                         " AS z USING " + source(2, scope);
    scope.push_back({"z", {"a", "b", "c"}});
    scopes_.push_back(scope);
    result += " ON " + condition(2);
    if (chance(60)) {
        result += " WHEN MATCHED" + (chance(30) ? " AND " + condition(1) : std::string()) +
                  " THEN " + (chance(50) ? std::string("DELETE") : "UPDATE SET b = " + value(2));
    }
    if (chance(50)) {
        scopes_.back().pop_back();
        result += " WHEN NOT MATCHED" + (chance(30) ? " AND " + condition(1) : std::string()) +
                  " THEN INSERT (a, b) VALUES (" + value(1) + ", " + value(1) + ")";
        scopes_.back() = scope;
    }
    if (chance(30)) result += " WHEN NOT MATCHED BY SOURCE THEN DELETE";
    return result + (chance(30) ? " OUTPUT $action, inserted.a, deleted.b" : "") + ";";
}

std::string RandomStatements::cursor() {
    const std::string name = newName();
    const std::string rows = query(2, 2);
    return "DECLARE " + name + " CURSOR " +
           oneOf({"", "LOCAL ", "SCROLL ", "STATIC ", "FAST_FORWARD "}) + "FOR " + rows + " OPEN " +
           name + " FETCH NEXT FROM " + name + " " +
           oneOf({"UPDATE t SET b = 1", "DELETE u", "UPDATE #w SET b = 1", "DELETE t"}) +
           " WHERE CURRENT OF " + name + " CLOSE " + name + " DEALLOCATE " + name;
}

std::string RandomStatements::definition() {
    scopes_.push_back({{"", {"a", "b"}}});
    switch (below(7)) {
        case 0:
            return "SELECT " + value(2) + " AS q INTO #" + newName() + from(2, scopes_.back());
        case 1:
            return "CREATE TABLE #" + newName() + " (a int, b int DEFAULT " + number(2) +
                   ", e AS " + number(2) + ", CHECK (" + condition(2) + "))";
        case 2:
            return "CREATE TABLE " + newName() + " (a int, b int DEFAULT " + number(2) + ", e AS " +
                   number(2) + ", CHECK (" + condition(2) + "))";
        case 3:
            return "CREATE INDEX " + newName() + " ON #w (a, b)" +
                   (chance(50) ? " WHERE " + condition(1) : "");
        case 4:
            return "ALTER TABLE u ADD " + newName() + " AS " + number(2);
        case 5:
            return "ALTER TABLE t ADD " + newName() + " int NULL DEFAULT " + number(2) +
                   oneOf({"", " WITH VALUES"});
        default:
            return "ALTER TABLE u ADD CHECK (" + condition(2) + ")";
    }
}

std::string RandomStatements::control() {
    switch (below(6)) {
        case 0:
            return "IF " + condition(3) + " SELECT 1 ELSE SELECT 2";
        case 1:
            return "SET @n = " + number(3);
        case 2:
            return "SELECT @n = " + number(2) + from(2, scopes_.emplace_back());
        case 3:
            return "PRINT " + text(3);
        case 4:
            return "RETURN";
        default:
            return "DECLARE @r int = " + number(3) + " SELECT @r";
    }
}

std::string RandomStatements::commonTables() {
    if (chance(30)) {
        return "WITH r AS (SELECT 1 AS a, 1 AS b, 'x' AS c UNION ALL " +
               std::string(chance(70) ? "SELECT a + 1, b, c FROM r WHERE a < 5"
                                      : select(1, 3, false)) +
               ")";
    }
    return "WITH r AS (" + query(2, 3) + "), q (a, b, c) AS (" + query(1, 3) + ")";
}

// --- Queries

std::string RandomStatements::top() {
    return oneOf({"TOP (1) ", "TOP (@n) ", "TOP (SELECT 1) ", "TOP (1 + 1) ", "TOP (50) PERCENT "});
}

std::string RandomStatements::query(int depth, std::size_t columns) {
    if (depth > 0 && chance(20)) {
        std::string result = select(depth - 1, columns, false);
        for (std::size_t count = 1 + below(2); count > 0; --count) {
            const std::string other = select(depth - 1, columns, false);
            result += oneOf({" UNION ", " UNION ALL ", " EXCEPT ", " INTERSECT "}) +
                      (chance(20) ? "(" + other + ")" : other);
        }
        return result;
    }
    return select(depth, columns, chance(40));
}

std::string RandomStatements::select(int depth, std::size_t columns, bool ordered) {
    Scope scope;
    const std::string sources = chance(92) ? from(depth, scope) : "";
    scopes_.push_back(scope);
    std::string result = "SELECT ";
    const bool distinct = chance(12);
    if (distinct) result += "DISTINCT ";
    const bool tops = ordered || chance(10);
    if (tops) result += oneOf({"TOP 2 ", "TOP (@n) ", "TOP 50 PERCENT ", "TOP (SELECT 1) "});
    if (chance(20)) {
        result += grouped(depth, columns, scope);
        scopes_.pop_back();
        return result;
    }
    static constexpr const char* kNames[] = {"a", "b", "c", "d", "e"};
    for (std::size_t i = 0; i < columns; ++i) {
        const std::string item = chance(12) ? windowed(depth) : value(depth);
        result += (i == 0 ? "" : ", ") + item + " AS " + kNames[i];
    }
    result += sources;
    if (chance(50)) result += " WHERE " + condition(depth);
    if (ordered)
        result += " ORDER BY " + (distinct || chance(40) ? std::string("1") : value(depth));
    scopes_.pop_back();
    return result;
}

// From the list to HAVING.
std::string RandomStatements::grouped(int depth, std::size_t columns, const Scope& scope) {
    static constexpr const char* kNames[] = {"a", "b", "c", "d", "e"};
    Scope unused;
    const std::string key = scope.empty() ? "" : column(scope);
    std::string result;
    for (std::size_t i = 0; i < columns; ++i) {
        const std::string item = !key.empty() && chance(30) ? key
                                 : chance(10)               ? windowed(depth)
                                                            : aggregate(depth);
        result += (i == 0 ? "" : ", ") + item + " AS " + kNames[i];
    }
    // The sources were made for `scope`, whose names are given again.
    std::string sources;
    for (const Shown& shown : scope)
        sources += (sources.empty() ? " FROM t AS " : ", u AS ") + shown.name;
    result += sources;
    if (chance(30)) result += " WHERE " + condition(depth);
    if (!key.empty() && chance(70)) {
        result += " GROUP BY " + key + oneOf({"", "", "", " WITH ROLLUP"});
        if (chance(30)) result += " HAVING " + aggregate(depth) + " > " + number(depth);
    }
    return result;
}

std::string RandomStatements::subquery(int depth) {
    return "(" + query(depth - 1, 1) + ")";
}

std::string RandomStatements::from(int depth, Scope& scope) {
    std::string result = " FROM ";
    const std::size_t count = 1 + below(3) / 2;
    for (std::size_t i = 0; i < count; ++i) {
        const std::string next = chance(50) ? joined(depth, scope) : source(depth, scope);
        result += (i == 0 ? "" : ", ") + next;
    }
    return result;
}

std::string RandomStatements::joined(int depth, Scope& scope) {
    std::string left = source(depth, scope);
    for (std::size_t count = 1 + below(2); count > 0; --count) {
        Scope own;
        const bool brackets = depth > 0 && chance(25);
        const std::string right =
            brackets ? "(" + joined(depth - 1, own) + ")" : source(depth, own);
        const std::string kind =
            oneOf({" INNER JOIN ", " LEFT JOIN ", " RIGHT JOIN ", " FULL JOIN ", " CROSS JOIN ",
                   " INNER HASH JOIN ", " LEFT OUTER JOIN "});
        left += kind + right;
        if (kind != " CROSS JOIN ") {
            const Shown& one = own[below(own.size())];
            left += " ON " + one.name +
                    ".a = " + (scope.empty() ? "1" : scope[below(scope.size())].name + ".a");
        }
        scope.insert(scope.end(), own.begin(), own.end());
    }
    return left;
}

std::string RandomStatements::source(int depth, Scope& scope) {
    const std::string alias = newName();
    const std::vector<std::string> columns{"a", "b", "c"};
    if (depth > 0 && chance(20)) {
        scope.push_back({alias, columns});
        if (chance(20)) return "(VALUES (1, 2, 'x'), (3, 4, 'y')) AS " + alias + " (a, b, c)";
        std::vector<Scope> around;
        around.swap(scopes_);
        std::string result = "(" + query(depth - 1, 3) + ") AS " + alias;
        around.swap(scopes_);
        return result;
    }
    const std::string table =
        oneOf({"t", "u", "t", "u", "k", "#w", "@v", "v", "j", "g", "o", "dbo.t", "r"});
    const bool named = chance(75) || table == "@v" || table == "dbo.t";
    scope.push_back({named ? alias : table, columns});
    return table + (named ? oneOf({" ", " AS "}) + alias : "") +
           oneOf({"", "", "", "", " WITH (NOLOCK)", " (UPDLOCK)"});
}

// --- Expressions

std::string RandomStatements::column(const Scope& scope) {
    const Shown& shown = scope[below(scope.size())];
    const std::string name = shown.columns[below(shown.columns.size())];
    return shown.name.empty() || chance(10) ? name : shown.name + "." + name;
}

std::string RandomStatements::value(int depth) {
    return chance(70) ? number(depth) : text(depth);
}

std::string RandomStatements::number(int depth) {
    if (depth > 0 && chance(55)) {
        switch (below(12)) {
            case 0:
                return subquery(depth);
            case 1:
                return "(" + subquery(depth) + " * " + number(depth - 1) + ")";
            case 2:
                return "CASE WHEN " + condition(depth - 1) + " THEN " + number(depth - 1) +
                       " ELSE " + number(depth - 1) + " END";
            case 3:
                return "dbo.f(" + number(depth - 1) + ", " + oneOf({"1", "DEFAULT", "NULL"}) + ")";
            case 4:
                return "isnull(" + number(depth - 1) + ", " + number(depth - 1) + ")";
            case 5:
                return "coalesce(NULL, " + number(depth - 1) + ", 1)";
            case 6:
                return "convert(int, " + text(depth - 1) + ")";
            case 7:
                return "datediff(day, '20200101', " + oneOf({"getdate()", "'20210101'"}) + ")";
            case 8:
                return "len(" + text(depth - 1) + ")";
            case 9:
                return "cast(" + number(depth - 1) + " AS " +
                       oneOf({"int", "bigint", "money", "decimal(10, 2)", "float", "bit"}) + ")";
            default:
                return "(" + number(depth - 1) +
                       oneOf({" + ", " - ", " * ", " / ", " % ", " & ", " | "}) +
                       number(depth - 1) + ")";
        }
    }
    if (!scopes_.empty() && chance(60)) {
        const Scope& scope = chance(80) ? scopes_.back() : scopes_[below(scopes_.size())];
        if (!scope.empty()) return column(scope);
    }
    return oneOf({"1", "0", "-1", "2.5", "NULL", "@n", "1e2", "@@rowcount", "$3"});
}

std::string RandomStatements::text(int depth) {
    if (depth > 0 && chance(40)) {
        switch (below(5)) {
            case 0:
                return "upper(" + text(depth - 1) + ")";
            case 1:
                return "(" + text(depth - 1) + " + " + text(depth - 1) + ")";
            case 2:
                return "substring(" + text(depth - 1) + ", 1, " + number(depth - 1) + ")";
            case 3:
                return "cast(" + number(depth - 1) + " AS varchar(30))";
            default:
                return "replace(" + text(depth - 1) + ", 'x', " + text(depth - 1) + ")";
        }
    }
    if (!scopes_.empty() && !scopes_.back().empty() && chance(50)) {
        const Scope& scope = scopes_.back();
        const std::string& name = scope[below(scope.size())].name;
        return name.empty() ? "c" : name + ".c";
    }
    return oneOf({"'x'", "N'y'", "''", "@s", "'12'", "NULL"});
}

std::string RandomStatements::aggregate(int depth) {
    const std::string argument = depth > 0 && chance(30) ? value(depth - 1) : number(0);
    return oneOf({"count(", "sum(", "min(", "max(", "avg(", "count(DISTINCT ", "sum(DISTINCT ",
                  "stdev(", "count_big("}) +
           argument + ")";
}

std::string RandomStatements::windowed(int depth) {
    const std::string inner = number(depth > 0 ? depth - 1 : 0);
    std::string over = " OVER (";
    if (chance(50)) over += "PARTITION BY " + value(0) + " ";
    const bool ordered = chance(80);
    if (ordered) over += "ORDER BY " + (chance(15) ? std::string("(SELECT NULL)") : value(0));
    if (ordered && chance(20)) {
        over += oneOf({" ROWS UNBOUNDED PRECEDING", " ROWS BETWEEN 1 PRECEDING AND CURRENT ROW",
                       " RANGE BETWEEN CURRENT ROW AND UNBOUNDED FOLLOWING",
                       " ROWS BETWEEN 2 FOLLOWING AND 1 FOLLOWING"});
    }
    over += ")";
    switch (below(6)) {
        case 0:
            return oneOf({"row_number()", "rank()", "dense_rank()"}) + over;
        case 1:
            return "ntile(" + oneOf({"2", "@n", "0"}) + ")" + over;
        case 2:
            return oneOf({"lag(", "lead(", "first_value(", "last_value("}) + inner + ")" + over;
        case 3:
            return "count(*)" + over;
        default:
            return oneOf({"sum(", "avg(", "min(", "max(", "stdev(", "count("}) +
                   (chance(15) ? aggregate(0) : inner) + ")" + over;
    }
}

std::string RandomStatements::condition(int depth) {
    if (depth > 0 && chance(60)) {
        switch (below(8)) {
            case 0:
                return "(" + condition(depth - 1) + oneOf({" AND ", " OR "}) +
                       condition(depth - 1) + ")";
            case 1:
                return "NOT (" + condition(depth - 1) + ")";
            case 2:
                return "EXISTS " + subquery(depth);
            case 3:
                return value(depth - 1) + oneOf({" IN ", " NOT IN "}) + subquery(depth);
            case 4:
                return "(" + subquery(depth) + oneOf({" > ", " = ", " <> "}) + value(depth - 1) +
                       ")";
            case 5:
                return number(depth - 1) + oneOf({" > ANY ", " = ALL ", " < SOME "}) +
                       subquery(depth);
            case 6:
                return number(depth - 1) + " IN (" + subquery(depth) + ", " + number(depth - 1) +
                       ")";
            default:
                return number(depth - 1) + " BETWEEN " + number(depth - 1) + " AND " +
                       number(depth - 1);
        }
    }
    if (chance(15)) return value(0) + oneOf({" IS NULL", " IS NOT NULL"});
    if (chance(15)) return text(0) + oneOf({" LIKE ", " NOT LIKE "}) + text(0);
    return value(0) + oneOf({" = ", " < ", " >= ", " <> "}) + value(0);
}

}  // namespace kap::test
