#include "engine/catalog/schema_catalogue.hpp"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "base/ascii.hpp"
#include "engine/catalog/definition_reader.hpp"
#include "engine/catalog/global_tables.hpp"
#include "engine/catalog/object_names.hpp"
#include "engine/catalog/source_text.hpp"
#include "engine/sqlite/collation.hpp"
#include "engine/values/text_units.hpp"
#include "engine/values/value.hpp"
#include "tsql/parser.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {
namespace {

constexpr std::size_t kKeptModules = 500;
// What XInfo::Hidden says of the columns of virtual tables that are not shown.
constexpr std::int64_t kHiddenColumn = 1;

std::string folded(std::string_view name) {
    return fromUnits(foldedUnits(name));
}

bool contains(const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
}

// SQLite's own rules of what a declared type holds. What may hold numbers and texts alike (dates,
// decimals, columns without a type) is read as text, which every value has.
tsql::TypeSpec affinityType(const std::string& declared) {
    using tsql::SqlType;
    const std::string upper = asciiUpper(declared);
    if (contains(upper, "INT")) {
        return {SqlType::BigInt};
    }
    if (contains(upper, "CHAR") || contains(upper, "CLOB") || contains(upper, "TEXT")) {
        return {SqlType::NVarChar, tsql::kMaxLength};
    }
    if (contains(upper, "BLOB")) {
        return {SqlType::VarBinary, tsql::kMaxLength};
    }
    if (contains(upper, "REAL") || contains(upper, "FLOA") || contains(upper, "DOUB")) {
        return {SqlType::Float};
    }
    return {SqlType::NVarChar, tsql::kMaxLength};
}

// SQLite takes a type that it cannot parse, varchar(max), as a name in quotes.
std::string_view unquoted(std::string_view declared) {
    if (declared.size() >= 2 && declared.front() == '"' && declared.back() == '"') {
        return declared.substr(1, declared.size() - 2);
    }
    return declared;
}

tsql::TypeSpec columnType(const std::string& declared, bool ours) {
    if (ours) {
        try {
            return typeDeclaredAs(unquoted(declared));
        } catch (const tsql::ServerError&) {
            // Another program has added a column: it has a type of SQLite's.
        }
    }
    return affinityType(declared);
}

// The columns of PRAGMA table_xinfo.
enum XInfo { Ordinal, Name, Type, NotNull, Default, Key, Hidden };

Column readColumn(const PreparedStatement& row, const std::optional<Counters::Record>& record) {
    Column column;
    column.name = row.text(XInfo::Name);
    column.type = columnType(row.text(XInfo::Type), record.has_value());
    column.keyOrdinal = static_cast<int>(row.integer(XInfo::Key));
    column.nullable = row.integer(XInfo::NotNull) == 0 && (column.keyOrdinal == 0 || !record);
    column.computed = row.integer(XInfo::Hidden) != 0;
    if (!row.isNull(XInfo::Default)) {
        const std::string text = row.text(XInfo::Default);
        column.source = sourceOf(text).value_or("");
        column.defaultSql = withoutSource(text);
    }
    if (record && record->identityColumn == column.name) {
        column.identity = record->identity;
    }
    return column;
}

// That of a column which COLLATE has given another order than the database's.
std::shared_ptr<const TextCollation> ownCollation(std::string_view name) {
    return name.empty() || name.starts_with("KAP_") ? nullptr : knownCollation(name);
}

}  // namespace

SchemaCatalogue::SchemaCatalogue(Database& database, Counters& counters)
    : database_(database),
      counters_(counters),
      version_(database.handle(), "PRAGMA main.schema_version", StatementLife::Kept),
      stored_(database),
      modules_(kKeptModules) {}

bool SchemaCatalogue::knows(std::string_view name) const {
    if (!namesRead_) {
        readNames();
    }
    return tables_.contains(folded(name)) ||
           std::ranges::any_of(objects(), [&](const StoredObject& object) {
               return hasTableName(object.kind) && sameName(object.name, name);
           });
}

const Table* SchemaCatalogue::find(std::string_view name) const {
    if (!namesRead_) {
        readNames();
    }
    const auto found = tables_.find(folded(name));
    if (found == tables_.end()) {
        return nullptr;
    }
    Entry& entry = found->second;
    if (!entry.table) {
        entry.table = read(entry);
    }
    entry.table->captureLevel = firingLevel(entry.name);
    return entry.table.get();
}

std::int64_t SchemaCatalogue::versionInFile() {
    const ResetGuard guard(version_);
    version_.step();
    return version_.integer(0);
}

void SchemaCatalogue::noteFileVersion(std::int64_t version) {
    knownVersion_ = version;
    if (version != fileVersion_) {
        fileVersion_ = version;
        ++fileChanges_;
    }
}

void SchemaCatalogue::refresh() {
    const std::int64_t version = versionInFile();
    if (version == knownVersion_) {
        return;
    }
    invalidate();
    // SQLite keeps a schema of its own, which only running a statement brings up to date.
    PreparedStatement(database_.handle(), "SELECT 1 FROM main.sqlite_schema LIMIT 1").run();
    noteFileVersion(version);
}

void SchemaCatalogue::added(const Table& table) {
    ++generation_;
    objects_.reset();
    views_.clear();
    functions_.clear();
    sequences_.clear();
    synonyms_.clear();
    if (!table.ignoring.empty()) ignoring_.reset();
    counters_.schemaChanged();
    tables_.insert_or_assign(folded(table.name), Entry{table.name, table.temporary, nullptr});
    noteFileVersion(versionInFile());
}

void SchemaCatalogue::invalidate() {
    knownVersion_ = -1;
    ++generation_;
    tables_.clear();
    namesRead_ = false;
    objects_.reset();
    views_.clear();
    functions_.clear();
    sequences_.clear();
    synonyms_.clear();
    ignoring_.reset();
    counters_.schemaChanged();
}

void SchemaCatalogue::undone() {
    invalidate();
    // The file's next version may have the number of one that was undone.
    fileVersion_ = -1;
    ++undoings_;
}

void SchemaCatalogue::readNames() const {
    readNames("SELECT name FROM main.sqlite_schema WHERE type IN ('table', 'view')", false);
    readNames("SELECT name FROM temp.sqlite_schema WHERE type IN ('table', 'view')", true);
    namesRead_ = true;
}

void SchemaCatalogue::readNames(const char* sql, bool temporary) const {
    PreparedStatement names(database_.handle(), sql);
    while (names.step()) {
        std::string name = names.text(0);
        const bool captured = name.starts_with("kap inserted ") ||
                              name.starts_with("kap deleted ") || name.starts_with("kap merge ");
        if (!captured && !isKeptByTheFile(name)) {
            std::string key = folded(name);
            tables_.insert_or_assign(std::move(key), Entry{std::move(name), temporary, nullptr});
        }
    }
}

std::unique_ptr<Table> SchemaCatalogue::read(const Entry& entry) const {
    auto table = std::make_unique<Table>();
    table->name = entry.name;
    table->temporary = entry.temporary;
    const auto record = counters_.find(*table);
    PreparedStatement rows(database_.handle(), std::string("PRAGMA ") +
                                                   (entry.temporary ? "temp" : "main") +
                                                   ".table_xinfo(" + sqlName(entry.name) + ")");
    while (rows.step()) {
        if (rows.integer(XInfo::Hidden) != kHiddenColumn) {
            Column column = readColumn(rows, record);
            if (tsql::isText(column.type.type)) {
                column.collation = ownCollation(collationOfColumn(
                    database_.handle(), entry.temporary, entry.name, column.name));
            }
            table->columns.push_back(std::move(column));
        }
    }
    addDefinitions(*table);
    addLaterKey(*table);
    addIgnoring(*table);
    if (!entry.temporary) {
        for (const auto& trigger : triggersOf(table->name)) {
            const tsql::CreateModuleStatement& made = trigger->definition;
            (made.insteadOf ? table->insteadOfEvents : table->triggerEvents) |= made.events;
        }
    }
    return table;
}

// What columns are computed from stands in the table's text only.
void SchemaCatalogue::addDefinitions(Table& table) const {
    if (std::ranges::none_of(table.columns, &Column::computed)) {
        return;
    }
    PreparedStatement look(database_.handle(),
                           std::string("SELECT sql FROM ") + (table.temporary ? "temp" : "main") +
                               ".sqlite_schema WHERE type = 'table' AND name = ?1");
    look.bind(1, std::string_view(table.name));
    if (!look.step()) {
        return;
    }
    auto definition = readTable(look.text(0));
    if (!definition) return;
    for (Column& column : table.columns) {
        const auto* found = column.computed ? findColumn(*definition, column.name) : nullptr;
        if (found == nullptr || !found->computed) continue;
        const sql::Formula& value = *found->computed;
        column.source = value.source.value_or("");
        column.defaultSql = value.value.as<sql::Definition>()->text;
    }
}

// A primary key that was added to a table later is an index of its own.
void SchemaCatalogue::addLaterKey(Table& table) const {
    for (const StoredObject& object : objects()) {
        if (object.kind != StoredKind::PrimaryKey || !sameName(object.parent, table.name)) {
            continue;
        }
        int ordinal = 0;
        for (const std::string& name : tsql::parseNames(object.text)) {
            for (Column& column : table.columns) {
                if (sameName(column.name, name)) {
                    column.keyOrdinal = ++ordinal;
                }
            }
        }
    }
}

std::vector<const Table*> SchemaCatalogue::tables() const {
    if (!namesRead_) {
        readNames();
    }
    std::vector<const Table*> result;
    for (auto& [key, entry] : tables_) {
        if (entry.temporary || isGlobalTable(entry.name)) {
            continue;
        }
        result.push_back(find(entry.name));
    }
    std::ranges::sort(result, {}, &Table::name);
    return result;
}

const std::vector<StoredObject>& SchemaCatalogue::objects() const {
    if (!objects_) {
        objects_ = stored_.all();
    }
    return *objects_;
}

const StoredObject* SchemaCatalogue::findObject(StoredKind kind, std::string_view name) const {
    const auto found = std::ranges::find_if(objects(), [&](const StoredObject& object) {
        return object.kind == kind && sameName(object.name, name);
    });
    return found == objects().end() ? nullptr : &*found;
}

// A damaged file may hold any text.
template <class Statement>
Statement SchemaCatalogue::definitionOf(const StoredObject& object) const {
    tsql::ParseOptions options = parseOptions(object.quotedNames);
    options.oldOuterJoins = [] { return true; };  // the level was right when it was made
    tsql::Script script = tsql::parseScript(object.text, options);
    auto* statement = script.size() == 1 ? std::get_if<Statement>(&script.front().node) : nullptr;
    // It may have been moved to another schema since. One of a group is called as its group.
    const std::string& name =
        object.kind == StoredKind::NumberedProcedure ? object.parent : object.name;
    const bool same = statement != nullptr && (sameName(statement->name.last(), bareName(name)) ||
                                               sameName(statement->name.last(), name));
    if (!same) {
        throw SqliteError(SQLITE_CORRUPT, "the text of '" + object.name + "' is that of another",
                          0);
    }
    return std::move(*statement);
}

const View* SchemaCatalogue::findView(std::string_view name) const {
    const StoredObject* object = findObject(StoredKind::View, name);
    if (object == nullptr) {
        return nullptr;
    }
    const std::string key = folded(name);
    auto found = views_.find(key);
    if (found == views_.end()) {
        auto statement = definitionOf<tsql::CreateViewStatement>(*object);
        View view{object->name, std::move(statement.columns), std::move(statement.query),
                  statement.checksRows};
        for (const auto& trigger : triggersOf(view.name))
            view.insteadOfEvents |= trigger->definition.events;
        found = views_.emplace(key, std::move(view)).first;
    }
    return &found->second;
}

const Function* SchemaCatalogue::findFunction(std::string_view name) const {
    const auto module = findModule(StoredKind::Function, name);
    if (module == nullptr) {
        return nullptr;
    }
    const std::string key = folded(name);
    auto found = functions_.find(key);
    if (found == functions_.end()) {
        Function function;
        function.name = module->object.name;
        function.returns = module->definition.returns;
        function.rows = module->definition.rows;
        if (module->definition.returnTable != nullptr) {
            for (const tsql::ColumnDefinition& each : module->definition.returnTable->columns) {
                Column& column = function.columns.emplace_back();
                column.name = each.name;
                column.type = each.type;
                column.nullable = each.nullable.value_or(true);
            }
        }
        for (const tsql::ParameterDefinition& parameter : module->definition.parameters) {
            // The module lives as long as whoever holds one of its defaults.
            function.parameters.push_back(
                {parameter.name, parameter.type, {module, parameter.defaultValue.get()}});
        }
        found = functions_.emplace(key, std::move(function)).first;
    }
    return &found->second;
}

const Sequence* SchemaCatalogue::findSequence(std::string_view name) const {
    const StoredObject* object = findObject(StoredKind::Sequence, name);
    if (object == nullptr) return nullptr;
    const auto [found, added] = sequences_.try_emplace(folded(name));
    if (added) found->second = sequenceOf(*object);
    return &found->second;
}

const tsql::ObjectName* SchemaCatalogue::findSynonym(std::string_view name) const {
    const StoredObject* object = findObject(StoredKind::Synonym, name);
    if (object == nullptr) return nullptr;
    const auto [found, added] = synonyms_.try_emplace(folded(name));
    if (added) found->second = tsql::parseObjectName(object->text);
    return &found->second;
}

std::vector<SchemaCatalogue::SequenceState> SchemaCatalogue::sequences() const {
    std::vector<SequenceState> result;
    for (const StoredObject& object : objects()) {
        if (object.kind != StoredKind::Sequence) continue;
        SequenceState& state = result.emplace_back();
        state.definition = sequenceOf(object);
        state.last = counters_.lastIdentityOf(object.name);
        state.first = counters_.firstOf(object.name);
    }
    return result;
}

std::shared_ptr<const Module> SchemaCatalogue::findModule(StoredKind kind,
                                                          std::string_view name) const {
    if (kind == StoredKind::Procedure && name.starts_with('#')) {
        const auto found = temporary_.find(folded(name));
        return found == temporary_.end() ? nullptr : found->second;
    }
    const StoredObject* object = findObject(kind, name);
    return object == nullptr ? nullptr : parsed(*object);
}

void SchemaCatalogue::addTemporary(std::shared_ptr<const Module> procedure) {
    std::string key = folded(procedure->object.name);
    temporary_.insert_or_assign(std::move(key), std::move(procedure));
}

bool SchemaCatalogue::removeTemporary(std::string_view procedure) {
    return temporary_.erase(folded(procedure)) > 0;
}

std::vector<std::shared_ptr<const Module>> SchemaCatalogue::triggersOf(
    std::string_view table) const {
    std::vector<std::shared_ptr<const Module>> result;
    for (const StoredObject& object : objects()) {
        if (object.kind == StoredKind::Trigger && object.enabled &&
            sameName(object.parent, table)) {
            result.push_back(parsed(object));
        }
    }
    return result;
}

std::shared_ptr<const Module> SchemaCatalogue::parsed(const StoredObject& object) const {
    // The same text may stand in two schemas.
    const std::string key = object.name + '\n' + object.text;
    if (const auto* found = modules_.find(key)) {
        return *found;
    }
    auto module = std::make_shared<const Module>(
        Module{object, definitionOf<tsql::CreateModuleStatement>(object)});
    return modules_.insert(key, std::move(module));
}

std::optional<tsql::AliasType> SchemaCatalogue::aliasType(const tsql::ObjectName& name) const {
    const StoredObject* object =
        findObject(StoredKind::Type, resolvedName(name, kDefaultSchema, *this));
    if (object == nullptr) {
        return std::nullopt;
    }
    // A table type has its columns as text.
    if (isTableType(*object)) return tsql::AliasType{{}, false, object->text};
    // The text is the type's own, and what it says of nulls stands in place of a parent.
    return tsql::AliasType{tsql::parseType(object->text), object->parent != kNotNull};
}

std::int64_t SchemaCatalogue::countRows(const Table& table) const {
    PreparedStatement count(database_.handle(), std::string("SELECT count(*) FROM ") +
                                                    (table.temporary ? "temp." : "main.") +
                                                    sqlName(table.name));
    return count.step() ? count.integer(0) : 0;
}

tsql::ParseOptions SchemaCatalogue::parseOptions(bool quotedNames) const {
    tsql::ParseOptions options;
    options.quotedNames = quotedNames;
    options.aliasType = [this](const tsql::ObjectName& name) { return aliasType(name); };
    options.oldOuterJoins = [this] { return isOn(kLevel80); };
    return options;
}

}  // namespace kap::engine
