#pragma once

#include <kaputil/automation/class_description.hpp>
#include <kaputil/automation/late_bound.hpp>
#include <kaputil/automation/object.hpp>
#include <kaputil/automation/variant.hpp>

// What the library's own callers by name need beside those of the public header.
namespace kap::late {

// The object that a value holds. Raises 424 for a value that is no object, 91 for the unset one.
[[nodiscard]] Object& objectOf(const Variant& value);

// Reads or assigns through the default member of the object that a value holds: arguments for a
// member that takes none are for that of what it gives, `rows.Fields("Nome")`. Raises 450 for a
// value that is no object, 91 for the unset one, and what the default member raises.
Variant invokeDefault(const Variant& value, InvokeKind kind, const Arguments& arguments);

}  // namespace kap::late
