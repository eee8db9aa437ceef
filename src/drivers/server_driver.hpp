#pragma once

#include "data/driver.hpp"

namespace kap::ado {

// The driver for a connection string that speaks of a database server. Null when it speaks of none,
// and on hosts whose own data-access objects reach servers.
[[nodiscard]] const Driver* serverDriver(const ConnectionString& keys);

}  // namespace kap::ado
