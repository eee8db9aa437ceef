#pragma once

#include <kaputil/ado/connection.hpp>

#include "frame/class_builder.hpp"

namespace kap::dispatch {

// A member that takes a connection takes one of another maker, too.
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
};

}  // namespace kap::dispatch
