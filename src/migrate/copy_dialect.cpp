#include "migrate/copy_dialect.hpp"

#include <algorithm>
#include <cctype>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"

namespace kap::migrate {
namespace {

using enum ado::DataTypeEnum;

constexpr std::int32_t kLongestBytes = 8000;
constexpr std::int32_t kLongestWide = 4000;
constexpr int kWidestDecimal = 18;
constexpr int kMoneyDigits = 19;
constexpr int kMoneyScale = 4;

std::string enclosed(std::string_view text, char open, char close) {
    std::string made(1, open);
    for (const char letter : text) {
        made.append(letter == close ? 2 : 1, letter);
    }
    return made + close;
}

std::string inBrackets(int first, int second = -1) {
    return "(" + plain::text(first) + (second < 0 ? "" : "," + plain::text(second)) + ")";
}

bool isNumeric(ado::DataTypeEnum type) {
    switch (type) {
        case adSmallInt:
        case adInteger:
        case adBigInt:
        case adUnsignedTinyInt:
        case adSingle:
        case adDouble:
        case adCurrency:
        case adNumeric:
        case adDecimal:
            return true;
        default:
            return false;
    }
}

bool isBinary(ado::DataTypeEnum type) {
    return type == adBinary || type == adVarBinary || type == adLongVarBinary;
}

// The form of a time that servers read alike, whatever their settings.
std::string dateText(const CopiedColumn& column, std::string text) {
    if (column.type == adDBTimeStamp && text.size() > 10) {
        text[10] = 'T';
    }
    return text;
}

std::string withoutBraces(const std::string& text) {
    return text.starts_with('{') && text.size() > 2 ? text.substr(1, text.size() - 2) : text;
}

class TransactDialect final : public CopyDialect {
public:
    [[nodiscard]] std::string quoted(std::string_view name) const override {
        return enclosed(name, '[', ']');
    }
    [[nodiscard]] std::string nameFor(std::string_view name) const override {
        return std::string(name);
    }
    [[nodiscard]] std::string typeFor(const CopiedColumn& column) const override {
        if (column.rowVersion) {
            return "timestamp";
        }
        const std::string type = plainType(column);
        return column.identity ? type + " IDENTITY(1,1)" : type;
    }
    [[nodiscard]] std::string literal(const CopiedColumn& column,
                                      const std::string& text) const override {
        if (isNumeric(column.type) || isBinary(column.type) || column.type == adBoolean) {
            return text;
        }
        return "N" + enclosed(dateText(column, withoutBraces(text)), '\'', '\'');
    }
    [[nodiscard]] std::string afterCreation(const std::string& /*table*/,
                                            const std::string& /*rowVersion*/) const override {
        return {};
    }
    [[nodiscard]] std::string beforeRows(const std::string& table) const override {
        return "SET IDENTITY_INSERT " + quoted(table) + " ON;";
    }
    [[nodiscard]] std::string afterRows(const std::string& table) const override {
        return ";SET IDENTITY_INSERT " + quoted(table) + " OFF";
    }
    [[nodiscard]] std::string afterLastRow(const std::string& /*table*/,
                                           const std::string& /*identity*/) const override {
        return {};
    }
    // The embedded database does not tell the referenced columns.
    [[nodiscard]] std::string foreignKeys() const override {
        return "SELECT f.name, object_name(f.parent_object_id), k.column_name, "
               "object_name(f.referenced_object_id), NULL, f.delete_referential_action_desc, "
               "f.update_referential_action_desc FROM sys.foreign_keys f JOIN "
               "information_schema.key_column_usage k ON k.constraint_name = f.name "
               "ORDER BY f.name, k.ordinal_position";
    }
    [[nodiscard]] std::string programs() const override {
        return "SELECT CASE type WHEN 'V' THEN 'view' WHEN 'P' THEN 'procedure' WHEN 'TR' THEN "
               "'trigger' WHEN 'C' THEN 'check' ELSE 'function' END AS kind, name FROM "
               "sys.objects WHERE type IN ('V', 'P', 'TR', 'C', 'FN', 'IF', 'TF') AND "
               "is_ms_shipped = 0 ORDER BY 1, 2";
    }
    [[nodiscard]] std::string specialIndexes() const override {
        return "SELECT name FROM sys.indexes WHERE 1 = 0";
    }

protected:
    [[nodiscard]] std::string now() const override { return "getdate()"; }
    [[nodiscard]] std::string newIdentifier() const override { return "newid()"; }

private:
    static std::string plainType(const CopiedColumn& column) {
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
                return money
                           ? "money"
                           : "decimal" + inBrackets(std::min<int>(column.precision, kWidestDecimal),
                                                    std::min<int>(column.scale, kWidestDecimal));
            case adDBDate:
                return "date";
            case adDBTimeStamp:
                return column.scale == 0 ? "smalldatetime" : "datetime";
            case adGUID:
                return "uniqueidentifier";
            default:
                return textType(column);
        }
    }
    static std::string textType(const CopiedColumn& column) {
        const bool wide =
            column.type == adWChar || column.type == adVarWChar || column.type == adLongVarWChar;
        const bool longer = column.isLong || column.size > (wide ? kLongestWide : kLongestBytes);
        if (isBinary(column.type)) {
            return longer ? "image" : "varbinary" + inBrackets(column.size);
        }
        if (longer) {
            return wide ? "ntext" : "text";
        }
        const bool fixed = column.type == adChar || column.type == adWChar;
        return std::string(wide ? "n" : "") + (fixed ? "char" : "varchar") +
               inBrackets(column.size);
    }
};

class PostgresDialect final : public CopyDialect {
public:
    [[nodiscard]] std::string quoted(std::string_view name) const override {
        return enclosed(name, '"', '"');
    }
    // Names without quotes are read in lower case.
    [[nodiscard]] std::string nameFor(std::string_view name) const override {
        return asciiLower(name);
    }
    [[nodiscard]] std::string typeFor(const CopiedColumn& column) const override {
        if (column.rowVersion) {
            return "rowversion";
        }
        const std::string type = plainType(column);
        return column.identity ? type + " GENERATED BY DEFAULT AS IDENTITY" : type;
    }
    [[nodiscard]] std::string literal(const CopiedColumn& column,
                                      const std::string& text) const override {
        if (isNumeric(column.type)) {
            return text;
        }
        if (isBinary(column.type)) {
            return "'\\x" + text.substr(2) + "'";
        }
        return enclosed(dateText(column, withoutBraces(text)), '\'', '\'');
    }
    // A trigger keeps the row version; the type's name tells that it does.
    [[nodiscard]] std::string afterCreation(const std::string& table,
                                            const std::string& rowVersion) const override {
        if (rowVersion.empty()) {
            return {};
        }
        const std::string function = quoted("kap_version_" + table);
        return "CREATE OR REPLACE FUNCTION " + function +
               "() RETURNS trigger LANGUAGE plpgsql AS $body$ BEGIN NEW." + quoted(rowVersion) +
               " := int8send(nextval('kap_row_versions')); RETURN NEW; END $body$;"
               "CREATE TRIGGER kap_version BEFORE INSERT OR UPDATE ON " +
               quoted(table) + " FOR EACH ROW EXECUTE FUNCTION " + function + "()";
    }
    [[nodiscard]] std::string beforeRows(const std::string& /*table*/) const override { return {}; }
    [[nodiscard]] std::string afterRows(const std::string& /*table*/) const override { return {}; }
    [[nodiscard]] std::string afterLastRow(const std::string& table,
                                           const std::string& identity) const override {
        return "SELECT setval(pg_get_serial_sequence(" + enclosed(quoted(table), '\'', '\'') +
               ", " + enclosed(identity, '\'', '\'') + "), coalesce(max(" + quoted(identity) +
               "), 0) + 1, false) FROM " + quoted(table);
    }
    [[nodiscard]] std::string foreignKeys() const override {
        return "SELECT c.conname::text, t.relname::text, a.attname::text, r.relname::text, "
               "b.attname::text, " +
               action("c.confdeltype") + ", " + action("c.confupdtype") +
               " FROM pg_constraint c CROSS JOIN LATERAL unnest(c.conkey, c.confkey) WITH "
               "ORDINALITY AS k(own, other, place) JOIN pg_class t ON t.oid = c.conrelid JOIN "
               "pg_class r ON r.oid = c.confrelid JOIN pg_attribute a ON a.attrelid = c.conrelid "
               "AND a.attnum = k.own JOIN pg_attribute b ON b.attrelid = c.confrelid AND b.attnum "
               "= k.other WHERE c.contype = 'f' ORDER BY t.relname, c.conname, k.place";
    }
    // Without what keeps row versions, which a copy makes itself.
    [[nodiscard]] std::string programs() const override {
        const std::string own = "n.nspname NOT IN ('pg_catalog', 'information_schema')";
        const std::string schema = " JOIN pg_namespace n ON n.oid = ";
        return "SELECT 'view' AS kind, c.relname::text AS name FROM pg_class c" + schema +
               "c.relnamespace WHERE c.relkind IN ('v', 'm') AND " + own +
               " UNION ALL SELECT CASE p.prokind WHEN 'p' THEN 'procedure' ELSE 'function' END, "
               "p.proname::text FROM pg_proc p" +
               schema + "p.pronamespace WHERE p.proname NOT LIKE 'kap\\_version\\_%' AND " + own +
               " UNION ALL SELECT 'trigger', g.tgname::text FROM pg_trigger g WHERE NOT "
               "g.tgisinternal AND g.tgname <> 'kap_version' UNION ALL SELECT 'check', "
               "c.conname::text FROM pg_constraint c" +
               schema + "c.connamespace WHERE c.contype = 'c' AND c.conrelid <> 0 AND " + own +
               " ORDER BY 1, 2";
    }
    [[nodiscard]] std::string specialIndexes() const override {
        return "SELECT c.relname::text FROM pg_index i JOIN pg_class c ON c.oid = i.indexrelid "
               "WHERE i.indpred IS NOT NULL OR i.indexprs IS NOT NULL";
    }

protected:
    [[nodiscard]] std::string now() const override { return "LOCALTIMESTAMP"; }
    [[nodiscard]] std::string newIdentifier() const override { return "gen_random_uuid()"; }

private:
    static std::string action(const std::string& letter) {
        return "CASE " + letter +
               " WHEN 'c' THEN 'CASCADE' WHEN 'n' THEN 'SET NULL' WHEN 'd' THEN 'SET DEFAULT' ELSE "
               "'NO ACTION' END";
    }
    static std::string plainType(const CopiedColumn& column) {
        switch (column.type) {
            case adBoolean:
                return "boolean";
            case adUnsignedTinyInt:
            case adSmallInt:
                return "smallint";
            case adInteger:
                return "integer";
            case adBigInt:
                return "bigint";
            case adSingle:
                return "real";
            case adDouble:
                return "double precision";
            case adCurrency:
                return "numeric" + inBrackets(kMoneyDigits, kMoneyScale);
            case adNumeric:
            case adDecimal:
                return "numeric" + inBrackets(column.precision, column.scale);
            case adDBDate:
                return "date";
            case adDBTime:
                return "time";
            case adDBTimeStamp:
                return "timestamp" + inBrackets(std::min<int>(column.scale, 6));
            case adGUID:
                return "uuid";
            default:
                return textType(column);
        }
    }
    static std::string textType(const CopiedColumn& column) {
        if (isBinary(column.type)) {
            return "bytea";
        }
        if (column.isLong) {
            return "text";
        }
        const bool fixed = column.type == adChar || column.type == adWChar;
        return (fixed ? "char" : "varchar") + inBrackets(column.size);
    }
};

bool hasType(ado::Connection& connection, const char* name) {
    const auto types = connection.OpenSchema(ado::SchemaEnum::adSchemaProviderTypes);
    for (; !types->Eof(); types->MoveNext()) {
        const Variant own = types->Fields()->Item(u"TYPE_NAME")->Value();
        if (!own.isNull() && asciiLower(convert::toString(own).utf8()) == name) {
            return true;
        }
    }
    return false;
}

}  // namespace

std::string CopyDialect::defaultFor(const CopiedColumn& column) const {
    switch (column.defaultValue.kind) {
        case DefaultValue::Kind::Constant: {
            const bool number = isNumeric(column.type) || column.type == adBoolean;
            const bool fits = !number || column.defaultValue.text.find_first_not_of(
                                             "+-.0123456789") == std::string::npos;
            return fits && !isBinary(column.type) ? literal(column, column.defaultValue.text)
                                                  : std::string();
        }
        case DefaultValue::Kind::Now:
            return now();
        case DefaultValue::Kind::Identifier:
            return newIdentifier();
        case DefaultValue::Kind::None:
        case DefaultValue::Kind::Other:
            break;
    }
    return {};
}

const CopyDialect& CopyDialect::of(ado::Connection& connection) {
    static const TransactDialect transact;
    static const PostgresDialect postgres;
    if (hasType(connection, "int4")) {
        return postgres;
    }
    return transact;
}

}  // namespace kap::migrate
