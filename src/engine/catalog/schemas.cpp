#include <algorithm>
#include <array>
#include <utility>

#include "engine/catalog/object_ids.hpp"
#include "engine/catalog/object_names.hpp"
#include "engine/catalog/schema_catalogue.hpp"

// The schemas of the database, and the names that it goes by.
namespace kap::engine {
namespace {

// What every database has, by their numbers from 1; those of CREATE SCHEMA come behind them.
constexpr std::array kEverySchema{"dbo", "guest", "INFORMATION_SCHEMA", "sys"};
constexpr auto kLastOwnId = static_cast<std::int64_t>(kEverySchema.size());

void addSchema(std::vector<SchemaInfo>& schemas, SchemaInfo schema) {
    const bool there = std::ranges::any_of(
        schemas, [&](const SchemaInfo& each) { return sameName(each.name, schema.name); });
    if (!there) schemas.push_back(std::move(schema));
}

}  // namespace

std::vector<SchemaInfo> SchemaCatalogue::schemas() const {
    std::vector<SchemaInfo> result;
    result.reserve(kEverySchema.size());
    for (const char* name : kEverySchema) {
        result.push_back({name, static_cast<std::int64_t>(result.size()) + 1, false});
    }
    for (const StoredObject& object : objects()) {
        if (object.kind != StoredKind::Schema) continue;
        addSchema(result, {object.name, kLastOwnId + object.id, true});
    }
    // Tables of other programs whose names have a point.
    for (const Table* table : tables()) {
        const std::string schema(schemaOf(table->name));
        addSchema(result, {schema, objectId(schema), false});
    }
    return result;
}

std::int64_t SchemaCatalogue::schemaId(std::string_view name) const {
    if (sameName(name, kDefaultSchema)) return 1;
    for (const SchemaInfo& schema : schemas()) {
        if (sameName(schema.name, name)) return schema.id;
    }
    return 0;
}

std::optional<std::string> SchemaCatalogue::schemaNamed(std::string_view name) const {
    for (const StoredObject& object : objects()) {
        if (object.kind == StoredKind::Schema && sameName(object.name, name)) return object.name;
    }
    return Catalogue::schemaNamed(name);
}

bool SchemaCatalogue::isDatabase(std::string_view name) const {
    return std::ranges::any_of(databaseNames_,
                               [&](const std::string& each) { return sameName(each, name); });
}

void SchemaCatalogue::setDatabaseName(std::string name) {
    std::erase_if(databaseNames_, [&](const std::string& each) { return sameName(each, name); });
    databaseNames_.push_back(std::move(name));
}

}  // namespace kap::engine
