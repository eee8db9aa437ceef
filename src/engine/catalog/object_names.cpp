#include "engine/catalog/object_names.hpp"

#include <vector>

#include "engine/catalog/tables.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {
namespace {

using tsql::ObjectName;

constexpr char kPoint = '.';

// #t, ##t and @t.
bool isOfNoSchema(std::string_view name) {
    return name.starts_with('#') || name.starts_with('@');
}

// The place of the point behind the schema; npos for a name of dbo.
std::size_t endOfSchema(std::string_view stored) {
    if (isOfNoSchema(stored)) return std::string_view::npos;
    const std::size_t point = stored.find(kPoint);
    return point == 0 || point + 1 == stored.size() ? std::string_view::npos : point;
}

bool isOfThisDatabase(const ObjectName& name, const Catalogue& catalogue) {
    const std::string_view database = partBefore(name, 2);
    return partBefore(name, 3).empty() && (database.empty() || catalogue.isDatabase(database));
}

// A table that another program, or this one before there were schemas, has called by a name with a
// point.
bool isPlainNameWithPoint(std::string_view name, const Catalogue& catalogue) {
    return name.find(kPoint) != std::string_view::npos && !catalogue.hasSchema(schemaOf(name)) &&
           catalogue.knows(name);
}

std::string inSchema(std::string_view schema, const std::string& name, const Catalogue& catalogue) {
    const bool plain = sameName(schema, kDefaultSchema) && isPlainNameWithPoint(name, catalogue);
    return plain ? name : storedName(schema, name);
}

}  // namespace

std::string_view partBefore(const ObjectName& name, std::size_t places) {
    return name.parts.size() > places ? std::string_view(name.parts[name.parts.size() - 1 - places])
                                      : std::string_view();
}

std::string storedName(std::string_view schema, std::string_view name) {
    const bool alone = isOfNoSchema(name) || (sameName(schema, kDefaultSchema) &&
                                              endOfSchema(name) == std::string_view::npos);
    return alone ? std::string(name) : std::string(schema) + kPoint + std::string(name);
}

std::string_view schemaOf(std::string_view stored) {
    const std::size_t end = endOfSchema(stored);
    return end == std::string_view::npos ? kDefaultSchema : stored.substr(0, end);
}

std::string_view bareName(std::string_view stored) {
    const std::size_t end = endOfSchema(stored);
    return end == std::string_view::npos ? stored : stored.substr(end + 1);
}

std::string withSchema(std::string_view stored) {
    return std::string(schemaOf(stored)) + kPoint + std::string(bareName(stored));
}

std::string resolvedName(const ObjectName& name, std::string_view ownSchema,
                         const Catalogue& catalogue) {
    const std::string& own = name.last();
    if (isOfNoSchema(own)) return own;
    if (!isOfThisDatabase(name, catalogue)) return {};
    const std::string_view schema = partBefore(name, 1);
    if (!schema.empty()) return inSchema(schema, own, catalogue);
    if (!sameName(ownSchema, kDefaultSchema)) {
        std::string nearer = inSchema(ownSchema, own, catalogue);
        if (catalogue.knows(nearer)) return nearer;
    }
    return inSchema(kDefaultSchema, own, catalogue);
}

std::string followedName(const ObjectName& name, std::string_view ownSchema,
                         const Catalogue& catalogue) {
    std::string stored = resolvedName(name, ownSchema, catalogue);
    const ObjectName* target = catalogue.findSynonym(stored);
    if (target == nullptr) return stored;
    std::string meant = resolvedName(*target, schemaOf(stored), catalogue);
    if (meant.empty()) {
        throw tsql::unsupported("synonym of another database (" + target->text() + ")", name.line);
    }
    if (catalogue.findSynonym(meant) != nullptr) {
        throw tsql::ServerError(tsql::Message::SynonymChain, {name.text(), target->text()},
                                name.line);
    }
    return meant;
}

void refuseOtherServer(const ObjectName& name) {
    const std::string_view server = partBefore(name, 3);
    if (server.empty()) return;
    throw tsql::ServerError(tsql::Message::UnknownServer, {server}, name.line);
}

std::string nameToMake(const ObjectName& name, const Catalogue& catalogue, int line) {
    const std::string& own = name.last();
    if (isOfNoSchema(own)) return own;
    if (!partBefore(name, 3).empty()) {
        throw tsql::ServerError(tsql::Message::TooManyPrefixesToMake, {name.text()}, line);
    }
    if (!isOfThisDatabase(name, catalogue)) {
        throw tsql::ServerError(tsql::Message::NoSuchDatabase, {partBefore(name, 2)}, line);
    }
    const std::string_view schema = partBefore(name, 1);
    if (schema.empty()) return inSchema(kDefaultSchema, own, catalogue);
    const auto spelled = catalogue.schemaNamed(schema);
    if (!spelled) throw tsql::ServerError(tsql::Message::UnknownSchema, {schema}, line);
    return inSchema(*spelled, own, catalogue);
}

}  // namespace kap::engine
