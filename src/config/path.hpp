#pragma once

#include <kaputil/automation/object.hpp>
#include <kaputil/automation/string.hpp>

namespace kap::config {

// The names from the root down to a node of this name and parent, with "\" between:
// GROUP\APPLICATION\PROCEDURE\MODULE\FIELD. Where the chain of parents is cut it is the part below
// the cut. Raises 14 (out of string space) when the parents go round in a circle.
[[nodiscard]] String CalcolaPath(const String& name, Ref<Object> parent);

}  // namespace kap::config
