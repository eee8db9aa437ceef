#pragma once

#include <chrono>

#include "data/driver.hpp"
#include "drivers/odbc/odbc_connection.hpp"

namespace kap::ado::odbc {

// A schema rowset, answered by the driver's catalogue functions in the server's order.
[[nodiscard]] Result schemaRowset(OdbcConnection& connection, SchemaEnum kind,
                                  const SchemaRestrictions& wanted, std::chrono::seconds timeout);

}  // namespace kap::ado::odbc
