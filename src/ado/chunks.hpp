#pragma once

#include <kaputil/automation/variant.hpp>

namespace kap::ado {

// A long text or binary with a piece more; Null and Empty are none yet.
[[nodiscard]] Variant joinedChunks(const Variant& held, const Variant& more);

}  // namespace kap::ado
