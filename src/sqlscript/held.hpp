#pragma once

#include <kaputil/automation/error.hpp>
#include <kaputil/automation/ref.hpp>

namespace kap::sqlscript {

// The object of a field that clients may also set to nothing; raises 91 when they did.
template <class T>
[[nodiscard]] T& held(const Ref<T>& field) {
    if (!field) {
        throw AutomationError(errors::kObjectNotSet);
    }
    return *field;
}

}  // namespace kap::sqlscript
