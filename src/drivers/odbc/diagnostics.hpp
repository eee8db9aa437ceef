#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "data/driver.hpp"
#include "drivers/odbc/api.hpp"

// The one place where what a server reports becomes what clients see.
namespace kap::ado::odbc {

// The source of the driver's errors.
inline constexpr const char16_t* kErrorSource = u"KapOdbc";

// Whether a SQLSTATE says that there is no connection any more.
[[nodiscard]] bool saysConnectionLost(std::string_view state);

// The report's text without the names in brackets that the manager of drivers and the driver put in
// front: "[Maker][Driver][Server]text" at most. Brackets behind them are the server's text, as in
// what a trigger raises.
[[nodiscard]] std::string withoutOrigin(std::string_view text);

// Everything that a handle reports, in the server's order; never empty. `failed` tells whether
// anything has: without it these are informations.
[[nodiscard]] std::vector<ServerMessage> diagnosticsOf(SQLSMALLINT kind, SQLHANDLE handle,
                                                       bool failed = true);

// An error of this driver's own.
[[nodiscard]] DriverError driverError(std::int32_t number, std::string state, std::string text);

}  // namespace kap::ado::odbc
