#pragma once

#include <kaputil/ado/connection.hpp>

#include "automation/class_builder.hpp"

namespace kap::dispatch {

// A member that takes a connection takes one of another maker, too, and gives that very object
// back.
template <>
struct Carrier<Ref<ado::Connection>> {
    static constexpr VarType kType = VarType::Object;
    static Ref<ado::Connection> from(const Variant& value) {
        if (!value.isObject()) {
            throw AutomationError(errors::kTypeMismatch);
        }
        const Ref<Object>& object = value.as<Ref<Object>>();
        if (auto* own = dynamic_cast<ado::Connection*>(object.get())) {
            return Ref<ado::Connection>(own);
        }
        if (object && !ado::isConnection(value)) {
            throw AutomationError(errors::kTypeMismatch);
        }
        return object ? ado::Connection::through(object) : Ref<ado::Connection>();
    }
    // Clients are given the object that they set.
    static Variant to(const Ref<ado::Connection>& connection) {
        return connection ? connection->clientsObject() : Variant(Ref<Object>());
    }
};

}  // namespace kap::dispatch
