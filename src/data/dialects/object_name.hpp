#pragma once

#include <string>
#include <utility>

#include "base/ascii.hpp"

namespace kap::ado {

// A table, or what else has a name in a database. Without a schema it is in the connection's own.
struct ObjectName {
    std::string name;
    std::string schema;

    ObjectName() = default;
    explicit ObjectName(std::string object, std::string inSchema = {})
        : name(std::move(object)), schema(std::move(inSchema)) {}

    // For people.
    [[nodiscard]] std::string text() const { return schema.empty() ? name : schema + "." + name; }
    // Whether both are the same whatever the letters' case.
    [[nodiscard]] bool isAlike(const ObjectName& other) const {
        return equalsIgnoringCase(name, other.name) && equalsIgnoringCase(schema, other.schema);
    }
};

}  // namespace kap::ado
