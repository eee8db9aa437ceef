#include "cli/commands/describe/database_facts.hpp"

#include <algorithm>
#include <map>
#include <tuple>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "base/quoting.hpp"
#include "cli/names.hpp"

namespace kap::cli {
namespace {

class FactRows {
public:
    FactRows(ado::Connection& connection, const std::string& query)
        : rows_(connection.Execute(query)), fields_(rows_->Fields()) {}

    [[nodiscard]] bool atEnd() const { return rows_->Eof(); }
    void next() { rows_->MoveNext(); }
    [[nodiscard]] std::string text(std::int32_t column) const {
        const Variant value = fields_->Item(column)->Value();
        return value.isNull() ? std::string() : convert::toString(value).utf8();
    }
    [[nodiscard]] std::int64_t number(std::int32_t column) const {
        const Variant value = fields_->Item(column)->Value();
        return value.isNull() ? 0 : static_cast<std::int64_t>(convert::toDouble(value));
    }
    [[nodiscard]] bool isTrue(std::int32_t column) const { return number(column) != 0; }

private:
    Ref<ado::Recordset> rows_;
    Ref<ado::Fields> fields_;
};

bool isOneOf(const std::string& type, std::initializer_list<std::string_view> types) {
    return std::ranges::find(types, type) != types.end();
}

// A type with its length or digits, as a definition writes it.
std::string typeText(const std::string& type, std::int64_t bytes, std::int64_t precision,
                     std::int64_t scale) {
    if (isOneOf(type, {"char", "varchar", "nchar", "nvarchar", "binary", "varbinary"})) {
        const std::int64_t units = type.front() == 'n' ? bytes / 2 : bytes;
        return type + "(" + (bytes < 0 ? "max" : plain::text(units)) + ")";
    }
    if (isOneOf(type, {"decimal", "numeric"})) {
        return type + "(" + plain::text(precision) + "," + plain::text(scale) + ")";
    }
    return type;
}

class FactReader {
public:
    FactReader(ado::Connection& connection, const std::optional<std::string>& table)
        : connection_(connection), wanted_(table) {}

    DatabaseFacts read() {
        tables();
        columns();
        indexes();
        foreignKeys();
        checks();
        triggers();
        if (!wanted_) {
            modules();
        }
        DatabaseFacts facts;
        facts.modules = std::move(modules_);
        for (auto& [id, table] : tables_) {
            facts.tables.push_back(std::move(table));
        }
        std::ranges::sort(facts.tables, {}, &TableFact::name);
        return facts;
    }

private:
    TableFact* table(std::int64_t id) {
        const auto found = tables_.find(id);
        return found == tables_.end() ? nullptr : &found->second;
    }

    void tables() {
        FactRows rows(
            connection_,
            "SELECT t.object_id, s.name, t.name FROM sys.tables t INNER JOIN sys.schemas s "
            "ON s.schema_id = t.schema_id");
        for (; !rows.atEnd(); rows.next()) {
            const std::string schema = rows.text(1);
            const std::string name = rows.text(2);
            const std::string shown =
                equalsIgnoringCase(schema, "dbo") ? name : schema + "." + name;
            names_[rows.number(0)] = shown;
            if (!wanted_ || equalsIgnoringCase(shown, *wanted_) ||
                equalsIgnoringCase(schema + "." + name, *wanted_)) {
                TableFact& table = tables_[rows.number(0)];
                table.name = shown;
                const FactRows count(connection_, "SELECT COUNT(*) FROM " + inBrackets(schema) +
                                                      "." + inBrackets(name));
                table.rows = count.number(0);
            }
        }
    }

    void columns() {
        FactRows rows(
            connection_,
            "SELECT c.object_id, c.name, y.name, c.max_length, c.precision, c.scale, "
            "c.is_nullable, c.is_identity, c.is_computed, d.definition FROM sys.columns c "
            "INNER JOIN sys.types y ON y.user_type_id = c.user_type_id "
            "LEFT JOIN sys.default_constraints d ON d.parent_object_id = c.object_id AND "
            "d.parent_column_id = c.column_id ORDER BY c.object_id, c.column_id");
        for (; !rows.atEnd(); rows.next()) {
            if (TableFact* of = table(rows.number(0))) {
                of->columns.push_back(
                    {rows.text(1),
                     typeText(rows.text(2), rows.number(3), rows.number(4), rows.number(5)),
                     rows.isTrue(6), rows.isTrue(7), rows.isTrue(8), rows.text(9)});
            }
        }
    }

    void indexes() {
        FactRows rows(
            connection_,
            "SELECT i.object_id, i.name, i.is_unique, i.is_primary_key, c.name FROM "
            "sys.indexes i INNER JOIN sys.index_columns k ON k.object_id = i.object_id AND "
            "k.index_id = i.index_id INNER JOIN sys.columns c ON c.object_id = k.object_id "
            "AND c.column_id = k.column_id ORDER BY i.object_id, i.index_id, k.key_ordinal");
        for (; !rows.atEnd(); rows.next()) {
            TableFact* of = table(rows.number(0));
            if (of == nullptr) {
                continue;
            }
            if (of->indexes.empty() || of->indexes.back().name != rows.text(1)) {
                of->indexes.push_back({rows.text(1), rows.isTrue(2), rows.isTrue(3), {}});
            }
            of->indexes.back().columns.push_back(rows.text(4));
        }
    }

    void foreignKeys() {
        FactRows rows(
            connection_,
            "SELECT f.parent_object_id, f.name, f.referenced_object_id, "
            "f.delete_referential_action_desc, c.name, r.name FROM sys.foreign_keys f "
            "INNER JOIN sys.foreign_key_columns k ON k.constraint_object_id = f.object_id "
            "INNER JOIN sys.columns c ON c.object_id = k.parent_object_id AND c.column_id = "
            "k.parent_column_id INNER JOIN sys.columns r ON r.object_id = "
            "k.referenced_object_id AND r.column_id = k.referenced_column_id "
            "ORDER BY f.object_id, k.constraint_column_id");
        for (; !rows.atEnd(); rows.next()) {
            TableFact* of = table(rows.number(0));
            if (of == nullptr) {
                continue;
            }
            if (of->foreignKeys.empty() || of->foreignKeys.back().name != rows.text(1)) {
                of->foreignKeys.push_back(
                    {rows.text(1), {}, names_[rows.number(2)], {}, rows.text(3)});
            }
            of->foreignKeys.back().columns.push_back(rows.text(4));
            of->foreignKeys.back().targetColumns.push_back(rows.text(5));
        }
    }

    void checks() {
        FactRows rows(connection_,
                      "SELECT parent_object_id, name, definition FROM sys.check_constraints "
                      "ORDER BY name");
        for (; !rows.atEnd(); rows.next()) {
            if (TableFact* of = table(rows.number(0))) {
                of->checks.push_back({rows.text(1), {}, rows.text(2)});
            }
        }
    }

    void triggers() {
        FactRows rows(connection_,
                      "SELECT g.parent_id, g.name, m.definition FROM sys.triggers g LEFT JOIN "
                      "sys.sql_modules m ON m.object_id = g.object_id ORDER BY g.name");
        for (; !rows.atEnd(); rows.next()) {
            if (TableFact* of = table(rows.number(0))) {
                of->triggers.push_back({rows.text(1), {}, rows.text(2)});
            }
        }
    }

    void modules() {
        FactRows rows(
            connection_,
            "SELECT o.name, o.type, m.definition FROM sys.objects o LEFT JOIN "
            "sys.sql_modules m ON m.object_id = o.object_id WHERE o.is_ms_shipped = 0 AND "
            "o.type IN ('V', 'P', 'FN', 'IF', 'TF')");
        for (; !rows.atEnd(); rows.next()) {
            const std::string type(trimmed(rows.text(1), " "));
            const char* kind = type == "V" ? "view" : type == "P" ? "procedure" : "function";
            modules_.push_back({rows.text(0), kind, rows.text(2)});
        }
        std::ranges::sort(modules_, {},
                          [](const ModuleFact& one) { return std::tie(one.kind, one.name); });
    }

    ado::Connection& connection_;
    const std::optional<std::string>& wanted_;
    std::map<std::int64_t, TableFact> tables_;
    std::map<std::int64_t, std::string> names_;  // of all tables, also those not asked for
    std::vector<ModuleFact> modules_;
};

}  // namespace

DatabaseFacts readDatabaseFacts(ado::Connection& connection,
                                const std::optional<std::string>& table) {
    return FactReader(connection, table).read();
}

}  // namespace kap::cli
