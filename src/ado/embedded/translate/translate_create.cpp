#include <algorithm>

#include "ado/embedded/translate/statements.hpp"
#include "tsql/server_error.hpp"
#include "tsql/text.hpp"

namespace kap::ado::embedded {

using tsql::ColumnDefinition;
using tsql::CreateTableStatement;
using tsql::KeyConstraint;
using tsql::ServerError;
using tsql::SqlType;

namespace {

bool canBeIdentity(const tsql::TypeSpec& type) {
    const bool whole = tsql::isInteger(type.type) && type.type != SqlType::Bit;
    return whole || (tsql::isDecimal(type.type) && type.scale == 0);
}

class TableWriter {
public:
    TableWriter(const CreateTableStatement& statement, int line, const Catalogue& catalogue)
        : statement_(statement), line_(line), binder_(catalogue) {}

    Translation write() {
        nameTable();
        for (const ColumnDefinition& column : statement_.columns)
            addColumn(column);
        for (const KeyConstraint& key : statement_.keys)
            addKey(key);
        Translation result;
        result.kind = StatementKind::CreateTable;
        result.writes = true;
        result.table = table().name;
        result.sql.push_back(sqlText());
        result.created = std::move(definition_);
        return result;
    }

private:
    Table& table() { return definition_.table; }

    void nameTable() {
        const tsql::ObjectName& name = statement_.table;
        const bool foreignOwner = name.parts.size() > 2 ||
                                  (name.parts.size() == 2 && !sameName(name.parts.front(), "dbo"));
        if (foreignOwner) {
            throw ServerError(
                2760,
                "The specified schema name \"" + name.parts.front() +
                    "\" either does not exist or you do not have permission to use it.",
                line_);
        }
        table().name = name.last();
        table().temporary = name.last().front() == '#';
        // Names that the file keeps for itself.
        const bool reserved = tsql::asciiLower(name.last()).compare(0, 7, "sqlite_") == 0;
        if (reserved || binder_.catalogue().find(name.last()) != nullptr) {
            throw ServerError(
                2714, "There is already an object named '" + name.last() + "' in the database.",
                line_, 16, 6);
        }
    }

    void addColumn(const ColumnDefinition& definition) {
        Column column;
        column.name = definition.name;
        column.type = definition.type;
        // What must have a value is not nullable unless the definition says otherwise, and then it
        // is refused below.
        const bool needsValue =
            definition.identity || column.isRowVersion() || isPrimary(definition.name);
        column.nullable = definition.nullable.value_or(!needsValue);
        if (table().find(column.name) != nullptr) {
            throw ServerError(2705,
                              "Column names in each table must be unique. Column name '" +
                                  column.name + "' in table '" + table().name +
                                  "' is specified more than once.",
                              definition.line);
        }
        if (definition.identity) column.identity = identityOf(definition);
        if (column.isRowVersion()) checkOnlyRowVersion(column, definition.line);
        if (definition.defaultValue) column.defaultSql = defaultOf(definition);
        table().columns.push_back(std::move(column));
    }

    [[nodiscard]] bool isPrimary(const std::string& name) const {
        return std::any_of(
            statement_.keys.begin(), statement_.keys.end(), [&](const KeyConstraint& key) {
                return key.primary && std::any_of(key.columns.begin(), key.columns.end(),
                                                  [&](const std::string& column) {
                                                      return sameName(column, name);
                                                  });
            });
    }

    void checkOnlyRowVersion(const Column& column, int line) {
        const auto other = std::find_if(table().columns.begin(), table().columns.end(),
                                        [](const Column& each) { return each.isRowVersion(); });
        if (other == table().columns.end()) return;
        throw ServerError(2738,
                          "A table can only have one timestamp column. Because table '" +
                              table().name + "' already has one, the column '" + column.name +
                              "' cannot be added.",
                          line);
    }

    Identity identityOf(const ColumnDefinition& column) {
        const int line = column.line;
        if (!canBeIdentity(column.type)) {
            throw ServerError(
                2749,
                "Identity column '" + column.name +
                    "' must be of data type int, bigint, smallint, tinyint, or decimal or numeric "
                    "with a scale of 0, and constrained to be nonnullable.",
                line);
        }
        if (column.nullable.value_or(false)) {
            throw ServerError(8147,
                              "Could not create IDENTITY attribute on nullable column '" +
                                  column.name + "', table '" + table().name + "'.",
                              line);
        }
        if (column.defaultValue) {
            throw ServerError(
                1754,
                "Defaults cannot be created on columns with an IDENTITY attribute. Table '" +
                    table().name + "', column '" + column.name + "'.",
                line);
        }
        const bool second =
            std::any_of(table().columns.begin(), table().columns.end(),
                        [](const Column& other) { return other.identity.has_value(); });
        if (second) {
            throw ServerError(2744,
                              "Multiple identity columns specified for table '" + table().name +
                                  "'. Only one identity column per table is allowed.",
                              line);
        }
        Identity identity;
        if (column.identity->seed) identity.seed = wholeConstant(*column.identity->seed, column);
        if (column.identity->increment)
            identity.increment = wholeConstant(*column.identity->increment, column);
        if (identity.increment == 0) badIdentity(column);
        return identity;
    }

    std::int64_t wholeConstant(const tsql::Expression& expression, const ColumnDefinition& column) {
        Scope scope;
        scope.columnsRefused = true;
        const Typed value = binder_.value(expression, scope);
        const bool whole =
            value.constant && tsql::isExact(value.type.type) && storedScale(value.type) == 0;
        if (!whole) badIdentity(column);
        return std::get<std::int64_t>(*value.constant);
    }

    [[noreturn]] static void badIdentity(const ColumnDefinition& column) {
        throw ServerError(
            2752, "Identity column '" + column.name + "' contains invalid SEED or INCREMENT.",
            column.line);
    }

    std::string defaultOf(const ColumnDefinition& column) {
        if (column.type.type == SqlType::Timestamp) {
            throw ServerError(
                1755,
                "Defaults cannot be created on columns of data type timestamp. Table '" +
                    table().name + "', column '" + column.name + "'.",
                column.line);
        }
        Scope scope;
        scope.columnsRefused = true;
        scope.subqueriesRefused = true;
        const Typed value = binder_.value(*column.defaultValue->value, scope);
        return binder_.stored(value, column.type, column.line);
    }

    void addKey(const KeyConstraint& constraint) {
        TableKey key{constraint.name, constraint.primary, {}};
        if (key.primary) {
            const bool second = std::any_of(definition_.keys.begin(), definition_.keys.end(),
                                            [](const TableKey& other) { return other.primary; });
            if (second) {
                throw ServerError(
                    8110,
                    "Cannot add multiple PRIMARY KEY constraints to table '" + table().name + "'.",
                    constraint.line);
            }
        }
        for (const std::string& name : constraint.columns)
            addKeyColumn(name, constraint, key);
        if (key.name.empty()) key.name = madeName(key.primary);
        definition_.keys.push_back(std::move(key));
    }

    void addKeyColumn(const std::string& name, const KeyConstraint& constraint, TableKey& key) {
        const auto found =
            std::find_if(table().columns.begin(), table().columns.end(),
                         [&](const Column& column) { return sameName(column.name, name); });
        if (found == table().columns.end()) {
            throw ServerError(
                1911, "Column name '" + name + "' does not exist in the target table or view.",
                constraint.line);
        }
        if (key.primary && found->nullable) {
            throw ServerError(8111,
                              "Cannot define PRIMARY KEY constraint on nullable column in table '" +
                                  table().name + "'.",
                              constraint.line);
        }
        key.columns.push_back(found->name);
        if (key.primary) found->keyOrdinal = static_cast<int>(key.columns.size());
    }

    [[nodiscard]] std::string madeName(bool primary) {
        if (primary) return "PK_" + table().name;
        std::int64_t number = 1;
        for (const TableKey& key : definition_.keys)
            number += key.primary ? 0 : 1;
        return "UQ_" + table().name + "_" + tsql::integerText(number);
    }

    std::string sqlText() {
        std::string sql = std::string("CREATE ") +
                          (table().temporary ? "TEMP TABLE " : "TABLE main.") +
                          sqlName(table().name) + " (";
        for (const Column& column : table().columns) {
            if (&column != &table().columns.front()) sql += ", ";
            sql += columnSql(column);
        }
        for (const TableKey& key : definition_.keys) {
            std::string list;
            for (const std::string& name : key.columns)
                list += (list.empty() ? "" : ", ") + sqlName(name);
            sql += ", CONSTRAINT " + sqlName(key.name) +
                   (key.primary ? " PRIMARY KEY (" : " UNIQUE (") + list + ")";
        }
        return sql + ")";
    }

    static std::string columnSql(const Column& column) {
        // SQLite's grammar has no word between the brackets of a type; as a quoted name
        // "nvarchar(max)" is one.
        std::string sql = sqlName(column.name) + " " + sqlName(tsql::typeText(column.type));
        if (tsql::isText(column.type.type)) sql += " COLLATE KAP_CI";
        if (!column.nullable) sql += " NOT NULL";
        if (column.defaultSql) sql += " DEFAULT (" + *column.defaultSql + ")";
        return sql;
    }

    const CreateTableStatement& statement_;
    int line_;
    Binder binder_;
    TableDefinition definition_;
};

}  // namespace

Translation translateCreate(const CreateTableStatement& statement, int line,
                            const Catalogue& catalogue) {
    return TableWriter(statement, line, catalogue).write();
}

}  // namespace kap::ado::embedded
