// Databases that speak Transact-SQL: servers, and the embedded one.
#include <algorithm>
#include <array>

#include "base/ascii.hpp"
#include "base/quoting.hpp"
#include "data/dialects/sql_dialects.hpp"

#include <kaputil/automation/plain_text.hpp>

namespace kap::ado {
namespace dialects {
namespace {

using enum DataTypeEnum;

constexpr std::int32_t kLongestBytes = 8000;
constexpr std::int32_t kLongestWide = 4000;
constexpr int kWidestDecimal = 38;
constexpr int kWidestEmbedded = 38;
constexpr int kMostDecimals = 28;  // that the library's own numbers have
constexpr int kMilliseconds = 3;

bool isOneOf(std::string_view word, std::initializer_list<std::string_view> words) {
    return std::ranges::any_of(
        words, [&](std::string_view each) { return equalsIgnoringCase(each, word); });
}

// "decimal" of "decimal(9,2)".
std::string_view typeName(std::string_view declared) {
    return declared.substr(0, std::min(declared.find('('), declared.size()));
}

class TransactSql : public SqlDialect {
public:
    [[nodiscard]] bool reads(const SqlDialect& other) const override {
        return dynamic_cast<const TransactSql*>(&other) != nullptr;
    }
    [[nodiscard]] std::string quoted(std::string_view name) const override {
        return inBrackets(name);
    }
    using SqlDialect::nameFor;
    [[nodiscard]] std::string nameFor(std::string_view name) const override {
        return std::string(name);
    }
    [[nodiscard]] std::string typeFor(const ColumnDefinition& column) const override {
        if (column.rowVersion) {
            return "timestamp";
        }
        const std::string type = has(column) ? column.declared : plainType(column);
        return column.identity ? type + " IDENTITY(" + plain::text(column.seed) + "," +
                                     plain::text(column.increment) + ")"
                               : type;
    }
    // What has more digits than the library's numbers and times, and what it does not know.
    [[nodiscard]] std::string selected(const ColumnDefinition& column) const override {
        std::string name = quoted(column.name);
        const std::string_view type = typeName(column.declared);
        // A driver may give times of a day as moments of some day.
        const bool times =
            isOneOf(type, {"time"}) ||
            (isOneOf(type, {"datetime2", "datetimeoffset"}) && column.scale > kMilliseconds);
        if (times) {
            return "CONVERT(varchar(40), " + name + ", 121) AS " + name;
        }
        if (isOneOf(type, {"decimal", "numeric"}) && column.precision > kMostDecimals) {
            return "CONVERT(varchar(42), " + name + ") AS " + name;
        }
        return name;
    }
    [[nodiscard]] std::string literal(const ColumnDefinition& column,
                                      const std::string& text) const override {
        if (isNumeric(column.type) || isBinary(column.type) || column.type == adBoolean) {
            return text;
        }
        return nationalConstant(literalText(column, text));
    }

    [[nodiscard]] std::string columns(const ObjectName& table) const override {
        const std::string name = nameText(table);
        return "SELECT c.name, " + typeText() +
               ", c.is_identity, x.definition, x.is_persisted, d.name, d.definition, "
               "CAST(IDENT_SEED(" +
               name + ") AS bigint), CAST(IDENT_INCR(" + name +
               ") AS bigint) FROM sys.columns c LEFT JOIN sys.types y ON y.user_type_id = "
               "c.system_type_id LEFT JOIN sys.default_constraints d ON d.parent_object_id = "
               "c.object_id AND d.parent_column_id = c.column_id LEFT JOIN sys.computed_columns x "
               "ON x.object_id = c.object_id AND x.column_id = c.column_id WHERE c.object_id = "
               "OBJECT_ID(" +
               name + ") ORDER BY c.column_id";
    }
    [[nodiscard]] std::string indexes(const ObjectName& table) const override {
        return "SELECT i.name, CASE WHEN i.is_primary_key = 1 THEN 'PK' WHEN "
               "i.is_unique_constraint = 1 THEN 'UQ' ELSE 'IX' END, i.is_unique, "
               "i.filter_definition, c.name, k.is_descending_key, k.is_included_column FROM "
               "sys.indexes i JOIN sys.index_columns k ON k.object_id = i.object_id AND k.index_id "
               "= i.index_id JOIN sys.columns c ON c.object_id = k.object_id AND c.column_id = "
               "k.column_id WHERE i.object_id = OBJECT_ID(" +
               nameText(table) + ") ORDER BY i.index_id, k.key_ordinal, k.index_column_id";
    }
    [[nodiscard]] std::string foreignKeys() const override {
        return "SELECT f.name, object_name(f.parent_object_id), c.name, "
               "object_name(f.referenced_object_id), r.name, f.delete_referential_action_desc, "
               "f.update_referential_action_desc, f.is_disabled, "
               "NULLIF(schema_name(f.schema_id), 'dbo'), NULLIF(schema_name(t.schema_id), 'dbo') "
               "FROM sys.foreign_keys f JOIN "
               "sys.tables t ON t.object_id = f.referenced_object_id JOIN "
               "sys.foreign_key_columns k ON k.constraint_object_id = f.object_id JOIN sys.columns "
               "c ON c.object_id = k.parent_object_id AND c.column_id = k.parent_column_id JOIN "
               "sys.columns r ON r.object_id = k.referenced_object_id AND r.column_id = "
               "k.referenced_column_id ORDER BY f.name, f.object_id, k.constraint_column_id";
    }
    // In the order in which they were made, which is that in which triggers fire.
    [[nodiscard]] std::string programs() const override {
        return "SELECT CASE o.type WHEN 'V' THEN 'view' WHEN 'P' THEN 'procedure' WHEN 'TR' THEN "
               "'trigger' WHEN 'SN' THEN 'synonym' ELSE 'function' END AS kind, o.name, "
               "m.definition, p.name, g.is_disabled, NULLIF(schema_name(o.schema_id), 'dbo'), "
               "NULLIF(schema_name(p.schema_id), 'dbo') FROM sys.objects o LEFT JOIN "
               "sys.sql_modules m "
               "ON m.object_id = o.object_id LEFT JOIN sys.triggers g ON g.object_id = o.object_id "
               "LEFT JOIN sys.objects p ON p.object_id = g.parent_id WHERE o.is_ms_shipped = 0 AND "
               "o.type IN ('V', 'P', 'TR', 'FN', 'IF', 'TF', 'SN') UNION ALL SELECT 'check', "
               "c.name, c.definition, p.name, c.is_disabled, NULLIF(schema_name(c.schema_id), "
               "'dbo'), "
               "NULLIF(schema_name(p.schema_id), 'dbo') FROM sys.check_constraints c JOIN "
               "sys.objects p ON p.object_id = c.parent_object_id UNION ALL SELECT 'type', name, "
               "NULL, NULL, NULL, NULL, NULL FROM sys.types WHERE "
               "is_user_defined = 1";
    }
    [[nodiscard]] std::string otherTables() const override {
        return "SELECT s.name, t.name FROM sys.tables t JOIN sys.schemas s ON s.schema_id = "
               "t.schema_id WHERE s.name <> 'dbo' ORDER BY 1, 2";
    }
    [[nodiscard]] std::string lastIdentity(const ObjectName& table,
                                           const std::string& /*column*/) const override {
        return "SELECT CAST(IDENT_CURRENT(" + nameText(table) + ") AS bigint)";
    }

    // The statement must stand alone.
    [[nodiscard]] std::string creatingSchema(const std::string& schema) const override {
        return "IF NOT EXISTS (SELECT 1 FROM sys.schemas WHERE name = " + nationalConstant(schema) +
               ") EXEC (" + nationalConstant("CREATE SCHEMA " + quoted(schema)) + ")";
    }
    [[nodiscard]] std::string afterCreation(const ObjectName& /*table*/,
                                            const std::string& /*rowVersion*/) const override {
        return {};
    }
    [[nodiscard]] std::string beforeRows(const ObjectName& table) const override {
        return "SET IDENTITY_INSERT " + qualified(table) + " ON";
    }
    [[nodiscard]] std::string afterRows(const ObjectName& table) const override {
        return "SET IDENTITY_INSERT " + qualified(table) + " OFF";
    }
    // Where no row has ever been the first one gets the very number that is said here.
    [[nodiscard]] std::string afterLastRow(const ObjectName& table,
                                           const ColumnDefinition& identity, std::int64_t last,
                                           bool any) const override {
        const bool unused = !any && last == identity.seed;
        const std::int64_t next = any || unused ? last : last + identity.increment;
        // Not every server reads a national text here.
        const std::string name = nameText(table);
        const bool ascii = std::ranges::all_of(
            name, [](char letter) { return static_cast<unsigned char>(letter) < 0x80; });
        return "DBCC CHECKIDENT (" + (ascii ? name.substr(1) : name) + ", RESEED, " +
               plain::text(next) + ") WITH NO_INFOMSGS";
    }

    [[nodiscard]] std::string unchecked() const override { return " WITH NOCHECK"; }
    [[nodiscard]] std::string switchingOffConstraint(const ObjectName& table,
                                                     std::string_view name) const override {
        return "ALTER TABLE " + qualified(table) + " NOCHECK CONSTRAINT " + quoted(name);
    }
    [[nodiscard]] std::string switchingOffTrigger(const ObjectName& table,
                                                  std::string_view name) const override {
        return "ALTER TABLE " + qualified(table) + " DISABLE TRIGGER " + quoted(name);
    }
    [[nodiscard]] std::string addingDefault(const ObjectName& table,
                                            const ColumnDefinition& column) const override {
        const std::string name = column.defaultName.empty()
                                     ? std::string()
                                     : "CONSTRAINT " + quoted(column.defaultName) + " ";
        return "ALTER TABLE " + qualified(table) + " ADD " + name + "DEFAULT " +
               column.defaultText + " FOR " + quoted(column.name);
    }

protected:
    [[nodiscard]] std::string now() const override { return "getdate()"; }
    [[nodiscard]] std::string newIdentifier() const override { return "newid()"; }

    // Whether the type that is declared can be had here.
    [[nodiscard]] virtual bool has(const ColumnDefinition& column) const {
        return !column.declared.empty();
    }
    [[nodiscard]] virtual int widestDecimal() const { return kWidestDecimal; }
    [[nodiscard]] virtual std::string timeType(const ColumnDefinition& column) const {
        return column.scale > kMilliseconds ? "datetime2" + inParentheses(column.scale)
                                            : "datetime";
    }

    [[nodiscard]] std::string nameText(const ObjectName& table) const {
        return nationalConstant(quoted(table.schema.empty() ? "dbo" : table.schema) + "." +
                                quoted(table.name));
    }

private:
    // The type with its length or digits, as a definition writes it.
    static std::string typeText() {
        return "y.name + CASE WHEN y.name IN ('char', 'varchar', 'binary', 'varbinary') THEN '(' + "
               "CASE WHEN c.max_length < 0 THEN 'max' ELSE CAST(c.max_length AS varchar(10)) END + "
               "')' WHEN y.name IN ('nchar', 'nvarchar') THEN '(' + CASE WHEN c.max_length < 0 "
               "THEN 'max' ELSE CAST(c.max_length / 2 AS varchar(10)) END + ')' WHEN y.name IN "
               "('decimal', 'numeric') THEN '(' + CAST(c.precision AS varchar(10)) + ',' + "
               "CAST(c.scale AS varchar(10)) + ')' WHEN y.name IN ('datetime2', 'time', "
               "'datetimeoffset') THEN '(' + CAST(c.scale AS varchar(10)) + ')' ELSE '' END";
    }
    [[nodiscard]] std::string plainType(const ColumnDefinition& column) const {
        const bool money = column.precision == kMoneyDigits && column.scale == kMoneyScale;
        switch (column.type) {
            case adBoolean:
                return "bit";
            case adUnsignedTinyInt:
                return "tinyint";
            case adSmallInt:
                return "smallint";
            case adInteger:
                return "int";
            case adBigInt:
                return "bigint";
            case adSingle:
                return "real";
            case adDouble:
                return "float";
            case adCurrency:
                return "money";
            case adNumeric:
            case adDecimal:
                return money ? "money"
                             : "decimal" +
                                   inParentheses(std::min<int>(column.precision, widestDecimal()),
                                                 std::min<int>(column.scale, widestDecimal()));
            case adDBDate:
                return "date";
            case adDBTimeStamp:
                return column.scale == 0 ? "smalldatetime" : timeType(column);
            case adGUID:
                return "uniqueidentifier";
            case adVariant:
                return "sql_variant";
            default:
                return textType(column);
        }
    }
    static std::string textType(const ColumnDefinition& column) {
        const bool wide =
            column.type == adWChar || column.type == adVarWChar || column.type == adLongVarWChar;
        const bool longer = column.isLong || column.size > (wide ? kLongestWide : kLongestBytes);
        if (isBinary(column.type)) {
            return longer ? "image" : "varbinary" + inParentheses(column.size);
        }
        if (longer) {
            return wide ? "ntext" : "text";
        }
        const bool fixed = column.type == adChar || column.type == adWChar;
        return std::string(wide ? "n" : "") + (fixed ? "char" : "varchar") +
               inParentheses(column.size);
    }
};

// Has the types of older servers, and decimals of fewer digits.
class EmbeddedSql final : public TransactSql {
protected:
    [[nodiscard]] bool has(const ColumnDefinition& column) const override {
        const std::string_view type = typeName(column.declared);
        if (isOneOf(type, {"decimal", "numeric"})) {
            return column.precision <= kWidestEmbedded;
        }
        return isOneOf(type, {"bit",        "tinyint", "smallint",       "int",
                              "bigint",     "real",    "float",          "money",
                              "smallmoney", "date",    "datetime",       "smalldatetime",
                              "datetime2",  "time",    "datetimeoffset", "uniqueidentifier",
                              "char",       "varchar", "text",           "nchar",
                              "nvarchar",   "ntext",   "binary",         "varbinary",
                              "image"});
    }
    [[nodiscard]] int widestDecimal() const override { return kWidestEmbedded; }
    [[nodiscard]] std::string timeType(const ColumnDefinition& /*column*/) const override {
        return "datetime";
    }
};

}  // namespace
}  // namespace dialects

const SqlDialect& transactSql() {
    static const dialects::TransactSql dialect;
    return dialect;
}

const SqlDialect& embeddedSql() {
    static const dialects::EmbeddedSql dialect;
    return dialect;
}

}  // namespace kap::ado
