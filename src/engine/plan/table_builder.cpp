#include "engine/plan/table_builder.hpp"

#include <algorithm>
#include <utility>

#include <kaputil/automation/plain_text.hpp>
#include "engine/catalog/global_tables.hpp"
#include "engine/catalog/object_names.hpp"

#include "base/ascii.hpp"
#include "engine/binder/function_table.hpp"
#include "engine/binder/row_numbers.hpp"
#include "engine/catalog/index_notes.hpp"
#include "engine/catalog/reference_rules.hpp"
#include "engine/plan/statements.hpp"
#include "engine/sqlite/collation.hpp"
#include "engine/sqlite/definition_writer.hpp"
#include "engine/values/exact.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

using tsql::ColumnDefinition;
using tsql::ServerError;
using tsql::SqlType;

namespace {

bool canBeIdentity(const tsql::TypeSpec& type) {
    const bool whole = tsql::isInteger(type.type) && type.type != SqlType::Bit;
    return whole || (tsql::isDecimal(type.type) && type.scale == 0);
}

[[noreturn]] void badIdentity(const ColumnDefinition& column) {
    throw ServerError(tsql::Message::InvalidSeed, {column.name}, column.line);
}

bool isComparedAlike(const Column& left, const Column& right) {
    const auto nameOf = [](const Column& column) {
        return column.collation == nullptr ? std::string_view(kDatabaseCollation)
                                           : std::string_view(column.collation->name);
    };
    return nameOf(left) == nameOf(right);
}

bool isPrimary(const std::string& name, const tsql::TableElements& elements) {
    return std::any_of(
        elements.keys.begin(), elements.keys.end(), [&](const tsql::KeyConstraint& key) {
            return key.primary &&
                   std::any_of(key.columns.begin(), key.columns.end(),
                               [&](const std::string& column) { return sameName(column, name); });
        });
}

}  // namespace

std::shared_ptr<const TextCollation> collationOf(const ColumnDefinition& column) {
    if (column.collation.empty()) return nullptr;
    if (!tsql::isText(column.type.type)) {
        throw ServerError(tsql::Message::CollationOfOtherType, {tsql::typeName(column.type.type)},
                          column.line);
    }
    return textCollation(column.collation, column.line);
}

std::string indexName(const Table& table, const std::string& name) {
    return table.name + "." + name;
}

std::string nullsIndexName(const Table& table, const std::string& name) {
    return indexName(table, name) + " (nulls)";
}

sql::CreateIndex uniqueIndex(const Table& table, const std::string& name,
                             const std::vector<std::string>& columns) {
    sql::CreateIndex index{true, databaseOf(table), indexName(table, name), table.name, {}};
    for (const std::string& column : columns)
        index.terms.push_back({sql::column(column)});
    return index;
}

std::optional<sql::CreateIndex> nullsIndex(const Table& table, const std::string& name,
                                           const std::vector<std::string>& columns) {
    sql::CreateIndex index{true, databaseOf(table), nullsIndexName(table, name), table.name, {}};
    sql::Chain someNull{sql::ChainOperator::Or, {}};
    for (const std::string& column : columns) {
        sql::Expression isNull = sql::isNull(sql::column(column));
        sql::Expression value = sql::call(fn::kIfnull, sql::column(column), sql::number(0));
        const Column* found = table.find(column);
        if (found != nullptr && found->nullable) someNull.parts.push_back(isNull);
        if (found != nullptr && !collationOf(*found).empty()) {
            value = sql::Collated{std::move(value), collationOf(*found)};
        }
        index.terms.push_back({std::move(isNull)});
        index.terms.push_back({std::move(value)});
    }
    if (someNull.parts.empty()) return std::nullopt;
    index.where = sql::Formula{std::move(someNull)};
    return index;
}

std::vector<sql::CreateIndex> keyIndexes(const Table& table, const TableKey& key) {
    std::vector<sql::CreateIndex> indexes{uniqueIndex(table, key.name, key.columns)};
    if (!key.primary) {
        if (auto nulls = nullsIndex(table, key.name, key.columns))
            indexes.push_back(std::move(*nulls));
    }
    for (sql::CreateIndex& index : indexes)
        index.notes.ignoresDuplicates = key.ignoresDuplicates;
    return indexes;
}

sql::ColumnDefinition columnDefinition(const Column& column) {
    sql::ColumnDefinition definition{column.name, declaredType(column.type)};
    definition.collation = collationOf(column);
    definition.notNull = !column.nullable && !column.computed;
    if (!column.defaultSql) return definition;
    sql::Formula value{sql::Definition{*column.defaultSql}};
    if (!column.source.empty()) value.source = column.source;
    if (column.computed) {
        definition.computed = std::move(value);
    } else {
        definition.defaultValue = {column.defaultName, std::move(value)};
    }
    return definition;
}

TableBuilder::TableBuilder(const NameScope& names, const tsql::ObjectName& name, int line)
    : binder_(names) {
    const Catalogue& catalogue = binder_.catalogue();
    own().name = nameToMake(name, catalogue, line);
    own().temporary = name.last().front() == '#' && !isGlobalTable(name.last());
    if (isKeptByTheFile(own().name) || catalogue.knows(own().name)) {
        throw ServerError(tsql::Message::ObjectExists, {name.last()}, line).withState(6);
    }
}

TableBuilder::TableBuilder(const NameScope& names, const Table& table) : binder_(names) {
    own() = table;
}

TableBuilder::TableBuilder(const NameScope& names, const std::string& temporaryName)
    : binder_(names) {
    own().name = temporaryName;
    own().temporary = true;
}

void TableBuilder::add(const tsql::TableElements& elements) {
    for (const ColumnDefinition& column : elements.columns) {
        if (!column.computed) addColumn(column, elements);
    }
    for (const ColumnDefinition& column : elements.columns) {
        if (column.computed) addComputed(column);
    }
    // Computed columns keep the place that they were given.
    std::stable_sort(
        own().columns.begin(), own().columns.end(), [&](const Column& left, const Column& right) {
            const auto place = [&](const Column& column) {
                const auto found =
                    std::find_if(elements.columns.begin(), elements.columns.end(),
                                 [&](const auto& each) { return each.name == column.name; });
                return found == elements.columns.end() ? std::ptrdiff_t{-1}
                                                       : found - elements.columns.begin();
            };
            return place(left) < place(right);
        });
    for (const auto& [column, option] : elements.defaults)
        setDefault(requireColumn(column, 0), option, 0);
    for (const tsql::KeyConstraint& key : elements.keys)
        addKey(key);
    for (const tsql::CheckConstraint& check : elements.checks)
        addCheck(check);
    for (const tsql::ForeignKey& key : elements.foreignKeys)
        addForeignKey(key);
    for (const tsql::CreateIndexStatement& index : elements.indexes)
        addIndex(index);
}

void TableBuilder::add(Column column, int line) {
    if (table().find(column.name) != nullptr) {
        throw ServerError(tsql::Message::DuplicateColumn, {column.name, table().shown()}, line);
    }
    if (column.isRowVersion()) checkOnlyRowVersion(column, line);
    constexpr std::size_t kMostColumns = 1024;
    if (table().columns.size() == kMostColumns) {
        throw ServerError(tsql::Message::TooManyColumns, {column.name, table().shown()}, line);
    }
    own().columns.push_back(std::move(column));
}

Column& TableBuilder::requireColumn(const std::string& name, int line) {
    const auto found =
        std::find_if(own().columns.begin(), own().columns.end(),
                     [&](const Column& column) { return sameName(column.name, name); });
    if (found == own().columns.end()) {
        throw ServerError(tsql::Message::IndexColumnNotFound, {name}, line);
    }
    return *found;
}

void TableBuilder::addColumn(const ColumnDefinition& definition,
                             const tsql::TableElements& elements) {
    Column column;
    column.name = definition.name;
    column.type = definition.type;
    column.collation = collationOf(definition);
    // What must have a value is not nullable unless the definition says otherwise, and then it
    // is refused below.
    const bool needsValue =
        definition.identity || column.isRowVersion() || isPrimary(definition.name, elements);
    column.nullable = definition.nullable.value_or(!needsValue);
    if (definition.identity) {
        column.identity = identityOf(definition);
        // What is counted has 64 bits.
        if (tsql::isWideDecimal(column.type)) column.type.length = 0;
    }
    if (definition.defaultValue) setDefault(column, *definition.defaultValue, definition.line);
    add(std::move(column), definition.line);
}

void TableBuilder::addComputed(const ColumnDefinition& definition) {
    Scope scope;
    scope.sources.push_back(Binder::ownColumns(table()));
    scope.subqueriesRefused = true;
    const BoundExpression value = binder_.computedValue(*definition.computed, scope);
    requireNoVariables(definition.line);
    Column column;
    column.name = definition.name;
    column.type = value.type;
    column.nullable = value.nullable;
    column.collation = value.collation;
    column.computed = true;
    column.defaultSql = sqlOf(value.tree);
    column.source = definition.computedText;
    add(std::move(column), definition.line);
}

void TableBuilder::checkOnlyRowVersion(const Column& column, int line) const {
    const bool other = std::any_of(table().columns.begin(), table().columns.end(),
                                   [](const Column& each) { return each.isRowVersion(); });
    if (!other) return;
    throw ServerError(tsql::Message::SeveralTimestamps, {table().shown(), column.name}, line);
}

Identity TableBuilder::identityOf(const ColumnDefinition& column) {
    const int line = column.line;
    if (!canBeIdentity(column.type)) {
        throw ServerError(tsql::Message::WrongIdentityType, {column.name}, line);
    }
    if (column.nullable.value_or(false)) {
        throw ServerError(tsql::Message::IdentityOnNullable, {column.name, table().shown()}, line);
    }
    if (column.defaultValue) {
        throw ServerError(tsql::Message::DefaultOnIdentity, {table().shown(), column.name}, line);
    }
    const bool second = std::any_of(table().columns.begin(), table().columns.end(),
                                    [](const Column& other) { return other.identity.has_value(); });
    if (second) {
        throw ServerError(tsql::Message::SeveralIdentities, {table().shown()}, line);
    }
    Identity identity;
    if (column.identity->seed) identity.seed = wholeConstant(*column.identity->seed, column);
    if (column.identity->increment)
        identity.increment = wholeConstant(*column.identity->increment, column);
    if (identity.increment == 0) badIdentity(column);
    return identity;
}

std::int64_t TableBuilder::wholeConstant(const tsql::Expression& expression,
                                         const ColumnDefinition& column) {
    Scope scope;
    scope.columnsRefused = true;
    const BoundExpression value = binder_.value(expression, scope);
    const bool whole = value.constant() != nullptr && tsql::isExact(value.type.type) &&
                       storedScale(value.type) == 0;
    if (!whole) badIdentity(column);
    const auto number = narrow(exactOf(*value.constant()));
    if (!number) badIdentity(column);
    return *number;
}

void TableBuilder::setDefault(Column& column, const tsql::DefaultOption& option, int line) {
    if (column.type.type == SqlType::Timestamp) {
        throw ServerError(tsql::Message::DefaultOnTimestamp, {table().shown(), column.name}, line);
    }
    column.defaultName = option.constraintName;
    column.source = option.text;
    if (isSequentialIdentifier(*option.value) && column.type.type == SqlType::UniqueIdentifier) {
        column.defaultSql = sqlOf(sql::call(fn::kNewsequentialid));
        return;
    }
    Scope scope;
    scope.columnsRefused = true;
    scope.subqueriesRefused = true;
    const BoundExpression value = binder_.value(*option.value, scope);
    requireNoVariables(option.value->line);
    column.defaultSql = sqlOf(binder_.stored(value, column.type, line));
}

// PK_table, UQ_table_1, FK_table_2: the first number that is free.
std::string TableBuilder::numbered(const std::string& stem) {
    std::int64_t number = 1;
    std::string name;
    do {
        name = stem + "_" + plain::text(number++);
    } while (std::find(takenNames_.begin(), takenNames_.end(), name) != takenNames_.end());
    return name;
}

void TableBuilder::addKey(const tsql::KeyConstraint& constraint) {
    TableKey key{constraint.name, constraint.primary, {}, constraint.ignoresDuplicates};
    const bool second =
        key.primary && std::any_of(table().columns.begin(), table().columns.end(),
                                   [](const Column& column) { return column.keyOrdinal > 0; });
    if (second) {
        throw ServerError(tsql::Message::SeveralPrimaryKeys, {table().shown()}, constraint.line);
    }
    for (const std::string& name : constraint.columns) {
        Column& column = requireColumn(name, constraint.line);
        if (key.primary && column.nullable) {
            throw ServerError(tsql::Message::PrimaryKeyOnNullable, {table().shown()},
                              constraint.line);
        }
        if (column.computed && !isSteady(column)) notSteady(column, table(), constraint.line);
        key.columns.push_back(column.name);
        if (key.primary) column.keyOrdinal = static_cast<int>(key.columns.size());
    }
    if (key.name.empty())
        key.name = key.primary ? "PK_" + shownName() : numbered("UQ_" + shownName());
    takenNames_.push_back(key.name);
    if (key.ignoresDuplicates) noteIgnoring(key);
    definition_.keys.push_back(std::move(key));
}

// A table of the script's own is not read from the file.
void TableBuilder::noteIgnoring(const TableKey& key) {
    for (const sql::CreateIndex& index : keyIndexes(table(), key)) {
        if (auto target = conflictTarget(sqlOf(index)))
            own().ignoring.push_back(std::move(*target));
    }
}

void TableBuilder::addCheck(const tsql::CheckConstraint& check) {
    Scope scope;
    scope.sources.push_back(Binder::ownColumns(table()));
    scope.subqueriesRefused = true;
    const std::string stem = "CK_" + shownName() + (check.column.empty() ? "" : "_" + check.column);
    const std::string name = check.name.empty() ? numbered(stem) : check.name;
    takenNames_.push_back(name);
    constraints_.push_back(
        {name, sql::CheckConstraint{{binder_.condition(*check.condition, scope), check.text}}});
    requireNoVariables(check.line);
}

// A definition lives longer than the variables of the script that makes it.
void TableBuilder::requireNoVariables(int line) const {
    if (binder_.usedVariables().empty()) return;
    throw ServerError(tsql::Message::VariablesNotAllowed, {"CREATE TABLE"}, line);
}

void TableBuilder::addForeignKey(const tsql::ForeignKey& key) {
    std::vector<std::string> columns;
    for (const std::string& name : key.columns) {
        if (table().find(name) == nullptr) {
            throw ServerError(tsql::Message::ForeignKeyUnknownColumn,
                              {key.name, name, table().shown()}, key.line);
        }
        columns.push_back(requireColumn(name, key.line).name);
    }
    // As on the server, temporary tables hold no references.
    if (table().temporary || isGlobalTable(table().name)) return;
    const std::string meant =
        resolvedName(key.parent, binder_.names().schema(), binder_.catalogue());
    const bool alone = key.parent.parts.size() == 1 && !binder_.catalogue().knows(meant);
    const bool self =
        sameName(meant, table().name) || (alone && sameName(key.parent.last(), table().shown()));
    const Table* parent = self ? &table() : findOwnTable(key.parent, binder_.names());
    if (parent == nullptr || parent->temporary || isGlobalTable(parent->name)) {
        throw ServerError(tsql::Message::ForeignKeyToUnknownTable, {key.name, key.parent.text()},
                          key.line);
    }
    const std::vector<std::string> parents = parentColumns(key, *parent);
    if (parents.size() != columns.size()) {
        throw ServerError(tsql::Message::ForeignKeyColumnCount, {table().shown()}, key.line);
    }
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const Column& referred = *parent->find(parents[i]);
        const Column& referring = *table().find(columns[i]);
        if (!isComparedAlike(referred, referring)) {
            throw ServerError(tsql::Message::ForeignKeyCollationsDiffer,
                              {parent->shown(), parents[i], table().shown(), columns[i], key.name},
                              key.line);
        }
        if (referred.type.type == referring.type.type) continue;
        throw ServerError(tsql::Message::ForeignKeyTypesDiffer,
                          {parent->shown(), parents[i], table().shown(), columns[i], key.name},
                          key.line);
    }
    const std::string name =
        key.name.empty() ? numbered("FK_" + shownName() + "_" + std::string(parent->shown()))
                         : key.name;
    takenNames_.push_back(name);
    checkReference(name, key, *parent, parents);
    constraints_.push_back({name, sql::ForeignKey{std::move(columns), parent->name, parents,
                                                  key.onDelete, key.onUpdate}});
}

// The columns must be a key of the other table, and no statement may come back to a table.
void TableBuilder::checkReference(const std::string& name, const tsql::ForeignKey& key,
                                  const Table& parent, const std::vector<std::string>& columns) {
    std::vector<std::vector<std::string>> keys = binder_.catalogue().candidateKeys(parent);
    if (&parent == &table()) {
        for (const TableKey& own : definition_.keys)
            keys.push_back(own.columns);
    }
    if (!hasKeyOf(keys, columns)) {
        throw ServerError(tsql::Message::ForeignKeyWithoutCandidateKey, {key.parent.text(), name},
                          key.line);
    }
    newReferences_.push_back({table().name, parent.name, key.onDelete, key.onUpdate});
    if (key.onDelete == tsql::ReferenceAction::None &&
        key.onUpdate == tsql::ReferenceAction::None) {
        return;
    }
    std::vector<Reference> references = binder_.catalogue().references();
    references.insert(references.end(), newReferences_.begin(), newReferences_.end());
    if (!reachesTwice(references)) return;
    throw ServerError(tsql::Message::CascadePaths, {name, table().shown()}, key.line);
}

std::vector<std::string> TableBuilder::parentColumns(const tsql::ForeignKey& key,
                                                     const Table& parent) const {
    std::vector<std::string> result;
    for (const std::string& name : key.parentColumns) {
        const Column* column = parent.find(name);
        if (column == nullptr) {
            throw ServerError(tsql::Message::ForeignKeyUnknownReferencedColumn,
                              {key.name, name, key.parent.text()}, key.line);
        }
        result.push_back(column->name);
    }
    if (!result.empty()) return result;
    std::vector<const Column*> keys;
    for (const Column& column : parent.columns) {
        if (column.keyOrdinal > 0) keys.push_back(&column);
    }
    if (keys.empty()) {
        throw ServerError(tsql::Message::ForeignKeyWithoutPrimaryKey, {key.name, key.parent.text()},
                          key.line);
    }
    std::sort(keys.begin(), keys.end(), [](const Column* left, const Column* right) {
        return left->keyOrdinal < right->keyOrdinal;
    });
    for (const Column* column : keys)
        result.push_back(column->name);
    return result;
}

sql::CreateTable TableBuilder::creation() const {
    sql::CreateTable creation{tableName(table()), {}};
    for (const Column& column : table().columns)
        creation.columns.push_back(columnDefinition(column));
    for (const TableKey& key : keys()) {
        creation.constraints.push_back(
            {key.name, sql::KeyConstraint{key.primary, key.columns, {key.ignoresDuplicates}}});
    }
    creation.constraints.insert(creation.constraints.end(), constraints_.begin(),
                                constraints_.end());
    return creation;
}

// The index of a key comes with its table.
CreateTablePlan TableBuilder::plan() const {
    CreateTablePlan result{definition_, {sqlOf(creation())}};
    for (const TableKey& key : keys()) {
        const std::vector<sql::CreateIndex> indexes = keyIndexes(table(), key);
        for (std::size_t i = 1; i < indexes.size(); ++i)
            result.sql.push_back(sqlOf(indexes[i]));
    }
    result.sql.insert(result.sql.end(), indexes_.begin(), indexes_.end());
    return result;
}

}  // namespace kap::engine
