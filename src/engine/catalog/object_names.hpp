#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "tsql/syntax.hpp"

// The names of objects and their schemas.
//
// The file knows an object of the schema dbo by its name alone, "Clienti", and one of another
// schema by both, "vendite.Ordini": its stored name, by which the whole engine knows it, too. A
// name of dbo with a point in it has its schema before it. Names of temporary tables (#t) and of
// table variables belong to no schema.
namespace kap::engine {

class Catalogue;

inline constexpr std::string_view kDefaultSchema = "dbo";

[[nodiscard]] std::string storedName(std::string_view schema, std::string_view name);

// The parts of a stored name.
[[nodiscard]] std::string_view schemaOf(std::string_view stored);
[[nodiscard]] std::string_view bareName(std::string_view stored);

// "dbo.Clienti", "vendite.Ordini": a stored name as messages show it with its schema.
[[nodiscard]] std::string withSchema(std::string_view stored);

// The stored name that a name of the dialect means. A name without schema is looked for in
// `ownSchema`, that of the module it stands in, and then in dbo. What there is none of has the name
// that it would have in the last place; empty for a name of another database.
[[nodiscard]] std::string resolvedName(const tsql::ObjectName& name, std::string_view ownSchema,
                                       const Catalogue& catalogue);

// The same for a name that is to be read, written, called or drawn from: that of a synonym means
// what the synonym stands for. Errors 470 for a synonym of a synonym, and 40517 for one of another
// database.
[[nodiscard]] std::string followedName(const tsql::ObjectName& name, std::string_view ownSchema,
                                       const Catalogue& catalogue);

// The part that stands so many places before the last one; empty when there is none.
[[nodiscard]] std::string_view partBefore(const tsql::ObjectName& name, std::size_t places);

// Error 7202 for a name that begins with a server's.
void refuseOtherServer(const tsql::ObjectName& name);

// The stored name for an object that is to be made, in dbo when no schema is said. Error 2760 for a
// schema that is not there, 2702 for another database, 117 for another server.
[[nodiscard]] std::string nameToMake(const tsql::ObjectName& name, const Catalogue& catalogue,
                                     int line);

}  // namespace kap::engine
