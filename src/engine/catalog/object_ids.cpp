#include "engine/catalog/object_ids.hpp"

#include <algorithm>
#include <utility>

#include "base/ascii.hpp"
#include "engine/catalog/object_names.hpp"
#include "engine/values/text_units.hpp"
#include "tsql/parser.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {
namespace {

// An object of the database: a table, or what is stored by its text.
struct Found {
    std::string name;
    std::string type;  // without blanks
    const Table* table = nullptr;
};

std::string typeCode(std::string_view given) {
    std::string text(given);
    std::erase(text, ' ');
    return asciiUpper(text);
}

std::vector<Found> objectsOf(const SchemaCatalogue& catalogue) {
    std::vector<Found> result;
    for (const Table* table : catalogue.tables()) {
        result.push_back({table->name, "U", table});
    }
    for (const StoredObject& object : catalogue.objects()) {
        if (*objectType(catalogue, object) != 0) {
            result.push_back({object.name, typeCode(objectType(catalogue, object)), nullptr});
        }
    }
    return result;
}

const Table* tableOf(const SchemaCatalogue& catalogue, std::int64_t id) {
    for (const Found& object : objectsOf(catalogue)) {
        if (object.table != nullptr && objectId(object.name) == id) return object.table;
    }
    return nullptr;
}

}  // namespace

std::int64_t objectId(std::string_view name) {
    // FNV-1a over the folded name, kept positive within 31 bits; names of temporary tables are
    // negative, as the server's are.
    constexpr std::uint32_t kStart = 2166136261U;
    constexpr std::uint32_t kPrime = 16777619U;
    constexpr std::uint32_t kPositive = 0x7FFFFFFFU;
    std::uint32_t hash = kStart;
    for (const char letter : fromUnits(foldedUnits(name))) {
        hash = (hash ^ static_cast<unsigned char>(letter)) * kPrime;
    }
    const auto id = static_cast<std::int64_t>((hash & kPositive) | 0x100U);
    return !name.empty() && name.front() == '#' ? -id : id;
}

std::string objectNamed(const SchemaCatalogue& catalogue, std::string_view text) {
    try {
        return resolvedName(tsql::parseObjectName(text), kDefaultSchema, catalogue);
    } catch (const tsql::ServerError&) {
        return {};  // no name at all, so there is no such object
    }
}

const char* objectType(const SchemaCatalogue& catalogue, const StoredObject& object) {
    switch (object.kind) {
        case StoredKind::View:
            return "V ";
        case StoredKind::Procedure:
            return "P ";
        case StoredKind::Function: {
            const auto module = catalogue.findModule(StoredKind::Function, object.name);
            if (module != nullptr && module->definition.rows != nullptr) return "IF";
            return module != nullptr && module->definition.returnTable != nullptr ? "TF" : "FN";
        }
        case StoredKind::Trigger:
            return "TR";
        case StoredKind::PrimaryKey:
            return "PK";
        case StoredKind::UniqueKey:
            return "UQ";
        case StoredKind::DisabledConstraint:
            return "C ";
        case StoredKind::Sequence:
            return "SO";
        case StoredKind::Synonym:
            return "SN";
        case StoredKind::Default:
            return "D ";
        case StoredKind::Rule:
            return "R ";
        case StoredKind::Type:
        case StoredKind::Schema:
        case StoredKind::Setting:
        case StoredKind::TriggerOrder:
        case StoredKind::NumberedProcedure:
        case StoredKind::GlobalTable:
            break;
    }
    return "";
}

Value idOfObject(const SchemaCatalogue& catalogue, const std::string& name,
                 const std::string& type) {
    const std::string plain = objectNamed(catalogue, name);
    if (plain.empty()) return std::monostate{};
    const std::string wanted = typeCode(type);
    if (plain.front() == '#') {
        const Table* table = catalogue.find(plain);
        if (table != nullptr && (wanted.empty() || wanted == "U")) return objectId(table->name);
        const bool procedure = (wanted.empty() || wanted == "P") &&
                               catalogue.findModule(StoredKind::Procedure, plain) != nullptr;
        return procedure ? Value(objectId(plain)) : Value();
    }
    for (const Found& object : objectsOf(catalogue)) {
        if (sameName(object.name, plain) && (wanted.empty() || wanted == object.type)) {
            return objectId(object.name);
        }
    }
    for (const ConstraintInfo& constraint : catalogue.constraints()) {
        const std::string own = storedName(constraint);
        if (sameName(own, plain) && (wanted.empty() || wanted == typeCode(constraint.type))) {
            return objectId(own);
        }
    }
    return std::monostate{};
}

std::optional<std::string> storedNameOf(const SchemaCatalogue& catalogue, std::int64_t id) {
    for (const Found& object : objectsOf(catalogue)) {
        if (objectId(object.name) == id) return object.name;
    }
    for (const ConstraintInfo& constraint : catalogue.constraints()) {
        std::string own = storedName(constraint);
        if (objectId(own) == id) return own;
    }
    return std::nullopt;
}

Value columnLength(const SchemaCatalogue& catalogue, const std::string& table,
                   const std::string& column) {
    const Table* found = catalogue.find(objectNamed(catalogue, table));
    const Column* own = found == nullptr ? nullptr : found->find(column);
    return own == nullptr ? Value() : Value(std::int64_t{tsql::bytesOf(own->type)});
}

Value columnName(const SchemaCatalogue& catalogue, std::int64_t table, std::int64_t ordinal) {
    const Table* found = tableOf(catalogue, table);
    const bool there = found != nullptr && ordinal >= 1 &&
                       ordinal <= static_cast<std::int64_t>(found->columns.size());
    return there ? Value(found->columns[static_cast<std::size_t>(ordinal) - 1].name) : Value();
}

}  // namespace kap::engine
