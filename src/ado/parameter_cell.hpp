#pragma once

#include <kaputil/ado/parameter.hpp>

#include "data/driver.hpp"

namespace kap::ado {

// A value as one of the parameter's type; Null and Empty as they are. Raises as Parameter.Value
// does.
[[nodiscard]] Variant convertedParameter(const Parameter& parameter, const Variant& value);

// The parameter as it goes to the database, and the value with which it comes back.
[[nodiscard]] RequestParameter toRequest(const Parameter& parameter, bool named);
[[nodiscard]] Variant fromRequest(const RequestParameter& parameter);

// A value without a parameter, in the type that it has.
[[nodiscard]] RequestParameter toRequest(const Variant& value);

}  // namespace kap::ado
