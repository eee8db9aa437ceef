#pragma once

#include <kaputil/automation/object.hpp>
#include <kaputil/automation/ref.hpp>

namespace kap::test {

// A connection as the system's data-access objects have it, whose provider is named "Prova" and
// keeps its data in memory. It refuses every other provider.
[[nodiscard]] Ref<Object> makeConnection();

}  // namespace kap::test
