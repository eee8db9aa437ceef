// Servers that read Transact-SQL.
#include <algorithm>
#include <array>
#include <utility>

#include "base/ascii.hpp"
#include "base/quoting.hpp"
#include "data/sql_states.hpp"
#include "drivers/odbc/server_dialect.hpp"
#include "drivers/odbc/table_facts.hpp"
#include "tsql/messages.hpp"

namespace kap::ado::odbc {
namespace {

// The target of an OUTPUT clause has triggers.
constexpr std::int32_t kTriggersRefuseOutput = 334;

bool isOneOf(const std::string& type, std::initializer_list<std::string_view> names) {
    return std::ranges::any_of(
        names, [&](std::string_view name) { return equalsIgnoringCase(name, type); });
}

// Where the catalogue views of a table's database are: of this one, or of the one named.
std::string viewsOf(const TableName& table) {
    if (table.name.starts_with('#')) {
        return "tempdb.sys.";
    }
    return table.catalog.empty() ? "sys." : inBrackets(table.catalog) + ".sys.";
}

std::string fullNameOf(const TableName& table) {
    if (table.name.starts_with('#')) {
        return "tempdb.." + inBrackets(table.name);
    }
    std::string name = inBrackets(table.name);
    if (!table.schema.empty() || !table.catalog.empty()) {
        name = (table.schema.empty() ? "" : inBrackets(table.schema)) + "." + name;
    }
    return table.catalog.empty() ? name : inBrackets(table.catalog) + "." + name;
}

class TransactDialect final : public ServerDialect {
public:
    using ServerDialect::ServerDialect;

    [[nodiscard]] bool namesParameters() const override { return true; }

    // Types without an order are compared as others. A parameter has more decimals of a second than
    // the older types of time, and is not rounded to them by the server: it is given their type.
    // Of a hundredth of a microsecond nothing is known here: a span of one on either side stands
    // for it.
    [[nodiscard]] Comparison comparison(const std::string& column,
                                        const AnnouncedType& type) const override {
        if (isOneOf(type.name, {"text"})) {
            return {"CAST(" + column + " AS varchar(max)) = ?"};
        }
        if (isOneOf(type.name, {"ntext", "xml"})) {
            return {"CAST(" + column + " AS nvarchar(max)) = ?"};
        }
        if (isOneOf(type.name, {"image"})) {
            return {"CAST(" + column + " AS varbinary(max)) = ?"};
        }
        if (isOneOf(type.name, {"datetime", "smalldatetime"})) {
            return {column + " = CAST(? AS " + asciiLower(type.name) + ")"};
        }
        constexpr SQLSMALLINT kKnownDecimals = 6;
        if (isOneOf(type.name, {"datetime2"}) && type.decimals > kKnownDecimals) {
            return {column + " BETWEEN DATEADD(microsecond, -1, CAST(? AS datetime2(7))) AND " +
                        "DATEADD(microsecond, 1, CAST(? AS datetime2(7)))",
                    2};
        }
        return {column + " = ?"};
    }

    // What triggers do to a row is seen by a query only; and the clause that answers has neither
    // the older types without limit nor a place in an insertion of nothing but defaults.
    [[nodiscard]] Answer answerTo(const RowPlan& plan, const TableFacts& facts) const override {
        const bool defaults = plan.kind() == RowPlan::Kind::Insert && plan.values().empty();
        const bool longs = std::ranges::any_of(plan.readBack(), [&](const RowColumn& wanted) {
            const TableFacts::Column* column = facts.find(wanted.name);
            return column != nullptr && isOneOf(column->type.name, {"text", "ntext", "image"});
        });
        return facts.triggers || defaults || longs ? Answer::Selected : Answer::Returned;
    }

    [[nodiscard]] std::string returning(const RowStatement& row) const override {
        const std::string answer =
            " OUTPUT " + (row.answer.empty() ? std::string("1")
                                             : listOf(row.answer, row.kind == RowPlan::Kind::Delete
                                                                      ? "deleted."
                                                                      : "inserted."));
        std::string text;
        switch (row.kind) {
            case RowPlan::Kind::Insert:
                return "INSERT INTO " + row.table + " (" + listOf(row.columns) + ")" + answer +
                       " VALUES (" + listOf(row.values) + ")";
            case RowPlan::Kind::Update: {
                RowStatement bare = row;
                bare.criteria.clear();
                return textOf(bare) + answer + row.criteria;
            }
            default:
                return "DELETE FROM " + row.table + answer + row.criteria;
        }
    }

    [[nodiscard]] std::string selecting(const RowStatement& row, const std::string& reading,
                                        bool transaction) const override {
        return std::string(transaction ? "BEGIN TRANSACTION; " : "") + textOf(row) +
               "; SELECT @@ROWCOUNT" + (reading.empty() ? "" : "; " + reading) +
               (transaction ? "; COMMIT TRANSACTION" : "");
    }

    // On the text's first line, so that errors tell the lines that the client knows.
    [[nodiscard]] std::string noRows() const override {
        return "SELECT 1 AS " + std::string(kNoRows) + " WHERE 1 = 0; ";
    }
    [[nodiscard]] std::string undoing() const override {
        return "IF @@TRANCOUNT > 0 ROLLBACK TRANSACTION";
    }
    [[nodiscard]] std::string openTransactions() const override { return "SELECT @@TRANCOUNT"; }
    [[nodiscard]] std::string lastIdentity() const override { return "SCOPE_IDENTITY()"; }
    [[nodiscard]] bool refusesToReturn(const ServerMessage& error) const override {
        return error.nativeNumber == kTriggersRefuseOutput;
    }

    // A synonym stands for its table. The key is the primary one, else the first unique index whose
    // columns are never Null.
    [[nodiscard]] std::string factsQuery(const TableName& table) const override {
        const std::string views = viewsOf(table);
        const std::string name = nationalConstant(fullNameOf(table));
        return "SELECT c.name, TYPE_NAME(c.system_type_id), CAST(c.max_length AS int), "
               "CAST(c.scale AS int), CAST(c.is_nullable AS int), CAST(c.is_identity AS int), "
               "CAST(c.is_computed AS int), CAST(COALESCE(k.key_ordinal, 0) AS int), "
               "CASE WHEN EXISTS (SELECT 1 FROM " +
               views +
               "triggers t WHERE t.parent_id = c.object_id) THEN 1 ELSE 0 END, "
               "CASE WHEN TYPE_NAME(c.system_type_id) IN ('timestamp', 'binary', 'varbinary', "
               "'image') THEN 1 ELSE 0 END FROM " +
               views + "columns c LEFT JOIN " + views +
               "index_columns k ON k.object_id = c.object_id AND k.column_id = c.column_id AND "
               "k.key_ordinal > 0 AND k.index_id = (SELECT TOP 1 i.index_id FROM " +
               views +
               "indexes i WHERE i.object_id = c.object_id AND i.is_unique = 1 AND "
               "i.has_filter = 0 AND NOT EXISTS (SELECT 1 FROM " +
               views + "index_columns n JOIN " + views +
               "columns m ON m.object_id = n.object_id AND m.column_id = n.column_id WHERE "
               "n.object_id = i.object_id AND n.index_id = i.index_id AND n.key_ordinal > 0 AND "
               "m.is_nullable = 1) ORDER BY i.is_primary_key DESC, i.index_id) "
               "WHERE c.object_id = OBJECT_ID(COALESCE((SELECT s.base_object_name FROM " +
               views + "synonyms s WHERE s.object_id = OBJECT_ID(" + name + ")), " + name +
               ")) ORDER BY c.column_id";
    }
    [[nodiscard]] std::string typesQuery() const override {
        return "EXEC sp_datatype_info @ODBCVer = 3";
    }

    // Older servers do not know the function: a text of its own fails for itself, without ending a
    // transaction that is open.
    [[nodiscard]] std::string jsonQuery() const override {
        return "BEGIN TRY EXEC (N'SELECT v FROM OPENJSON(N''[[\"\\\"\"]]'') WITH (v nvarchar(9) "
               "''$[0]'')') END TRY BEGIN CATCH SELECT N'' END CATCH";
    }

    void refine(ServerMessage& message) const override {
        const tsql::MessageFacts* known = tsql::findMessage(message.nativeNumber);
        if (known != nullptr && *known->sqlState != '\0') {
            message.state = known->sqlState;
            message.number = numberOfState(message.state);
        }
    }
};

}  // namespace

std::unique_ptr<const ServerDialect> makeTransactDialect(DriverTraits driver) {
    return std::make_unique<TransactDialect>(std::move(driver));
}

}  // namespace kap::ado::odbc
