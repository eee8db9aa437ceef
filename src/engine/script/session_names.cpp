#include <algorithm>
#include <array>

#include "base/ascii.hpp"
#include "engine/catalog/object_ids.hpp"
#include "engine/catalog/object_names.hpp"
#include "engine/executor/function_arguments.hpp"
#include "engine/script/session_functions.hpp"

// What kap_system tells of names and numbers: databases, types, identities, texts of objects.
namespace kap::engine {

namespace {

// The databases that every server has, by their numbers from 1; this file's own comes behind them.
constexpr std::array kServersOwn{"master", "tempdb", "model", "msdb"};
constexpr std::int64_t kOwnDatabase = static_cast<std::int64_t>(kServersOwn.size()) + 1;

std::optional<std::int64_t> givenNumberAt(const std::vector<Value>& arguments, std::size_t index) {
    const auto* whole =
        index < arguments.size() ? std::get_if<std::int64_t>(&arguments[index]) : nullptr;
    return whole == nullptr ? std::nullopt : std::optional(*whole);
}

Value databaseId(const SchemaCatalogue& catalogue, const std::string& name) {
    if (name.empty() || sameName(name, catalogue.databaseName())) return kOwnDatabase;
    for (std::size_t i = 0; i < kServersOwn.size(); ++i) {
        if (sameName(name, kServersOwn[i])) return static_cast<std::int64_t>(i) + 1;
    }
    return {};
}

Value databaseName(const SchemaCatalogue& catalogue, std::optional<std::int64_t> id) {
    if (!id || *id == kOwnDatabase) return catalogue.databaseName();
    if (*id < 1 || *id > kOwnDatabase) return {};
    return std::string(kServersOwn.at(static_cast<std::size_t>(*id - 1)));
}

// One column of systypes where another one has a value.
Value ofType(const SchemaCatalogue& catalogue, std::size_t column, const Value& wanted,
             std::size_t result) {
    const auto types = catalogue.systemRows({{"systypes"}, 1});
    for (const auto& row : types->rows) {
        const auto* name = std::get_if<std::string>(&row[column]);
        const auto* given = std::get_if<std::string>(&wanted);
        const bool same =
            name != nullptr && given != nullptr ? sameName(*name, *given) : row[column] == wanted;
        if (same) return row[result];
    }
    return {};
}

Value definitionOf(const SchemaCatalogue& catalogue, std::int64_t id) {
    for (const StoredObject& object : catalogue.objects()) {
        const bool text = object.kind <= StoredKind::Trigger;
        if (text && objectId(object.name) == id) return object.text;
    }
    return {};
}

}  // namespace

// All triggers that are running, or how often one of them is.
Value SessionFunctions::triggerLevel(std::optional<std::int64_t> id) const {
    return std::int64_t{
        std::ranges::count_if(catalogue_.firing(), [&](const SchemaCatalogue::Firing& each) {
            return !id || *id == 0 || objectId(each.trigger) == *id;
        })};
}

Value SessionFunctions::schemaNumber(const std::string& name) const {
    const std::int64_t id = catalogue_.schemaId(name);
    return id == 0 ? Value() : Value(id);
}

Value SessionFunctions::schemaName(std::int64_t id) const {
    for (const SchemaInfo& schema : catalogue_.schemas()) {
        if (schema.id == id) return schema.name;
    }
    return {};
}

Value SessionFunctions::ofNames(SystemValue value, const Arguments& arguments) const {
    constexpr std::size_t kTypeName = 0;  // the columns of systypes
    constexpr std::size_t kTypeId = 2;
    switch (value) {
        case SystemValue::CursorRows:
            return std::int64_t{state_.cursorRows};
        case SystemValue::Language:
            return std::string(state_.dates.italian ? "Italiano" : "us_english");
        case SystemValue::IdentitySeed:
        case SystemValue::IdentityIncrement: {
            const Table* table = catalogue_.find(objectNamed(catalogue_, textAt(arguments, 1)));
            if (table == nullptr) return {};
            const auto column = std::ranges::find_if(
                table->columns, [](const Column& each) { return each.identity.has_value(); });
            if (column == table->columns.end()) return {};
            return value == SystemValue::IdentitySeed ? column->identity->seed
                                                      : column->identity->increment;
        }
        case SystemValue::DatabaseId:
            if (arguments.size() > 1 && isNull(arguments[1])) return {};
            return databaseId(catalogue_, textAt(arguments, 1));
        case SystemValue::DatabaseAccess:
            if (isNull(arguments.at(1))) return {};
            return isNull(databaseId(catalogue_, textAt(arguments, 1))) ? Value()
                                                                        : Value(std::int64_t{1});
        case SystemValue::DatabaseNameOf:
            if (arguments.size() > 1 && isNull(arguments[1])) return {};
            return databaseName(catalogue_, givenNumberAt(arguments, 1));
        case SystemValue::SchemaId:
            return schemaNumber(arguments.size() > 1 ? textAt(arguments, 1)
                                                     : std::string(kDefaultSchema));
        case SystemValue::SchemaName:
            if (arguments.size() > 1 && isNull(arguments[1])) return {};
            return schemaName(givenNumberAt(arguments, 1).value_or(1));
        case SystemValue::TypeId:
            return ofType(catalogue_, kTypeName, textAt(arguments, 1), kTypeId);
        case SystemValue::TypeName:
            return ofType(catalogue_, kTypeId, arguments.at(1), kTypeName);
        case SystemValue::ObjectDefinition:
            return definitionOf(catalogue_, givenNumberAt(arguments, 1).value_or(0));
        case SystemValue::TriggerLevel:
            return triggerLevel(givenNumberAt(arguments, 1));
        default:
            return ofProperties(value, arguments);
    }
}

}  // namespace kap::engine
