#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/parameter.hpp>

namespace kap::ado {

// The parameters of a stored procedure, as the database tells them, the return value first. Raises
// -2147217900 for one that it does not know.
[[nodiscard]] std::vector<Ref<Parameter>> parametersOfProcedure(Connection& connection,
                                                                const String& name);

// The marks for parameters in a script.
[[nodiscard]] std::size_t markCount(std::string_view script);

}  // namespace kap::ado
