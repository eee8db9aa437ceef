#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/object.hpp>
#include <kaputil/automation/variant.hpp>

#include "data/failures.hpp"

namespace kap::ado {

// The place of the element of a collection that a client names or numbers, or that a field or text
// box holds the name or number of. `find` gives the place of a name. Raises 3265 when there is no
// such element.
template <class Find>
std::size_t elementAt(const Variant& index, std::size_t count, const Find& find) {
    std::optional<std::size_t> place;
    if (index.isString()) {
        place = find(index.as<String>());
    } else if (index.isObject()) {
        if (const Ref<Object>& holder = index.as<Ref<Object>>()) {
            return elementAt(holder->defaultValue(), count, find);
        }
    } else if (!index.isNull() && !index.isArray() && !index.isMissing()) {
        const std::int32_t number = convert::toLong(index);
        place = number < 0 ? std::nullopt : std::optional(static_cast<std::size_t>(number));
    }
    if (!place || *place >= count) {
        fail::itemNotFound();
    }
    return *place;
}

}  // namespace kap::ado
