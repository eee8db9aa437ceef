// PostgreSQL.
#include <algorithm>
#include <array>
#include <utility>

#include "base/ascii.hpp"
#include "base/quoting.hpp"
#include "drivers/odbc/server_dialect.hpp"
#include "drivers/odbc/table_facts.hpp"
#include "tsql/lexer.hpp"
#include "tsql/server_error.hpp"

namespace kap::ado::odbc {
namespace {

bool isWordOf(const tsql::Token& token, std::string_view word) {
    return token.kind == tsql::TokenKind::Word && equalsIgnoringCase(token.text, word);
}

// "SELECT TOP 5 a FROM t" is "SELECT a FROM t LIMIT 5". Where TOP stands for more, or only for one
// part of the query, it stays and is the server's error.
std::string withLimit(const std::string& query, const std::vector<tsql::Token>& tokens) {
    const bool brackets = tokens.size() > 4 && tokens[2].text == "(" && tokens[4].text == ")";
    const std::size_t number = brackets ? 3 : 2;
    const std::size_t rest = brackets ? 5 : 3;
    const bool top = tokens.size() > rest + 1 && isWordOf(tokens[0], "SELECT") &&
                     isWordOf(tokens[1], "TOP") && tokens[number].kind == tsql::TokenKind::Integer;
    const bool more = top && (isWordOf(tokens[rest], "PERCENT") || isWordOf(tokens[rest], "WITH") ||
                              std::ranges::any_of(tokens, [](const tsql::Token& token) {
                                  return isWordOf(token, "UNION") || isWordOf(token, "EXCEPT") ||
                                         isWordOf(token, "INTERSECT");
                              }));
    if (!top || more) {
        return query;
    }
    std::size_t last = tokens.size() - 1;
    while (last > rest && (tokens[last].kind == tsql::TokenKind::End || tokens[last].text == ";")) {
        --last;
    }
    return query.substr(0, tokens[1].start) +
           query.substr(tokens[rest].start, tokens[last].end - tokens[rest].start) + " LIMIT " +
           tokens[number].text;
}

// What stands for a function of Transact-SQL that there is none of here, with its bracket.
std::string_view inPlaceOf(const tsql::Token& function) {
    constexpr std::array<std::pair<std::string_view, std::string_view>, 4> kFunctions = {{
        {"isnull", "coalesce("},
        {"year", "date_part('year', "},
        {"month", "date_part('month', "},
        {"day", "date_part('day', "},
    }};
    const auto found = std::ranges::find_if(
        kFunctions, [&](const auto& each) { return isWordOf(function, each.first); });
    return found == kFunctions.end() ? std::string_view() : found->second;
}

std::string withItsFunctions(const std::string& query, const std::vector<tsql::Token>& tokens) {
    std::string made;
    std::size_t done = 0;
    for (std::size_t i = 0; i + 1 < tokens.size(); ++i) {
        const std::string_view instead = inPlaceOf(tokens[i]);
        const bool ofSchema = i > 0 && tokens[i - 1].text == ".";
        if (!instead.empty() && !ofSchema && tokens[i + 1].text == "(") {
            made += query.substr(done, tokens[i].start - done);
            made += instead;
            done = tokens[i + 1].end;
        }
    }
    return made + query.substr(done);
}

// "DELETE t" is "DELETE FROM t".
std::string withFrom(std::string text) {
    constexpr std::string_view kWord = "DELETE";
    const std::size_t first = std::min(text.find_first_not_of(" \t\r\n"), text.size());
    if (!equalsIgnoringCase(std::string_view(text).substr(first, kWord.size()), kWord)) {
        return text;
    }
    const std::vector<tsql::Token> tokens = tsql::tokenize(text);
    const bool name =
        tokens.size() > 1 && isWordOf(tokens[0], kWord) &&
        (tokens[1].kind == tsql::TokenKind::Word || tokens[1].kind == tsql::TokenKind::QuotedName);
    return name && !isWordOf(tokens[1], "FROM") ? text.insert(tokens[1].start, "FROM ") : text;
}

class PostgresDialect final : public ServerDialect {
public:
    using ServerDialect::ServerDialect;

    [[nodiscard]] const SqlDialect& sql() const override { return postgresSql(); }

    [[nodiscard]] SQLULEN inventedSize() const override { return 255; }
    // The driver takes texts of more than 254 characters for endless ones, and tells their limits
    // all the same.
    [[nodiscard]] AnnouncedType meant(const AnnouncedType& announced) const override {
        AnnouncedType type = announced;
        const bool endless = type.code == SQL_WLONGVARCHAR || type.code == SQL_LONGVARCHAR;
        if (endless && type.name == "varchar") {
            type.code = SQL_WVARCHAR;
        } else if (endless && (type.name == "char" || type.name == "bpchar")) {
            type.code = SQL_WCHAR;
        }
        return type;
    }
    // There is one kind of texts. Programs that come from a database with two have narrow ones
    // nearly everywhere, and treat them otherwise where the library tells them apart: an empty
    // property is written as an empty text and not as Null, a missing record has no text of a wide
    // one's width, exports can write them.
    [[nodiscard]] TextKind wideTexts() const override { return TextKind::Narrow; }

    [[nodiscard]] std::string said(const std::string& text, bool isQuery) const override {
        try {
            if (!isQuery) {
                return withFrom(text);
            }
            const std::string known = withItsFunctions(text, tsql::tokenize(text));
            return withLimit(known, tsql::tokenize(known));
        } catch (const tsql::ServerError&) {
            return text;
        }
    }

    // Parameters must be of exactly the type that they are compared with or stored as.
    [[nodiscard]] std::string mark(const AnnouncedType& type) const override {
        return type.name.empty() ? "?" : "CAST(? AS " + inQuotes(type.name) + ")";
    }
    [[nodiscard]] Comparison comparison(const std::string& column,
                                        const AnnouncedType& type) const override {
        const bool unordered =
            equalsIgnoringCase(type.name, "json") || equalsIgnoringCase(type.name, "xml");
        return unordered ? Comparison{"CAST(" + column + " AS text) = ?"}
                         : ServerDialect::comparison(column, type);
    }

    [[nodiscard]] Answer answerTo(const RowPlan& /*plan*/,
                                  const TableFacts& /*facts*/) const override {
        return Answer::Returned;
    }
    [[nodiscard]] std::string returning(const RowStatement& row) const override {
        return textOf(row) + " RETURNING " + (row.answer.empty() ? "1" : listOf(row.answer));
    }

    // The first table of that name in the way of the search path, as in the query itself.
    [[nodiscard]] std::string factsQuery(const TableName& table) const override {
        std::string name = inQuotes(table.name);
        if (!table.schema.empty()) {
            name.insert(0, inQuotes(table.schema) + ".");
        }
        return "SELECT a.attname, t.typname, CASE WHEN a.atttypmod > 4 THEN a.atttypmod - 4 ELSE 0 "
               "END, 0, CASE WHEN a.attnotnull OR t.typnotnull THEN 0 ELSE 1 END, "
               "CASE WHEN a.attidentity <> '' OR (a.attgenerated = '' AND "
               "COALESCE(pg_get_expr(d.adbin, d.adrelid), '') LIKE 'nextval(%') THEN 1 ELSE 0 END, "
               "CASE WHEN a.attgenerated <> '' THEN 1 ELSE 0 END, "
               "COALESCE((SELECT p.place FROM unnest(k.indkey::int2[]) WITH ORDINALITY AS "
               "p(number, place) WHERE p.number = a.attnum AND p.place <= k.indnkeyatts), 0), "
               "0, CASE WHEN COALESCE(NULLIF(t.typbasetype, 0), t.oid) = 'bytea'::regtype "
               "THEN 1 ELSE 0 END FROM pg_catalog.pg_attribute a "
               "JOIN pg_catalog.pg_type t ON t.oid = a.atttypid "
               "LEFT JOIN pg_catalog.pg_attrdef d ON d.adrelid = a.attrelid AND d.adnum = a.attnum "
               "LEFT JOIN LATERAL (SELECT i.indkey, i.indnkeyatts FROM pg_catalog.pg_index i "
               "WHERE i.indrelid = a.attrelid AND i.indisunique AND i.indisvalid AND "
               "i.indpred IS NULL AND i.indexprs IS NULL AND NOT EXISTS (SELECT 1 FROM "
               "pg_catalog.pg_attribute n WHERE n.attrelid = i.indrelid AND "
               "n.attnum = ANY(i.indkey) AND NOT n.attnotnull) "
               "ORDER BY i.indisprimary DESC, i.indexrelid LIMIT 1) k ON true "
               "WHERE a.attrelid = to_regclass(" +
               textConstant(name) + ") AND a.attnum > 0 AND NOT a.attisdropped ORDER BY a.attnum";
    }
};

}  // namespace

std::unique_ptr<const ServerDialect> makePostgresDialect(DriverTraits driver) {
    return std::make_unique<PostgresDialect>(std::move(driver));
}

}  // namespace kap::ado::odbc
