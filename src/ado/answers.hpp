#pragma once

#include <vector>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>

#include "ado/driver.hpp"

namespace kap::ado {

// The rows that the statements of a script wrote, as a Long; -1 when none counts them.
[[nodiscard]] Variant rowsWritten(const std::vector<Result>& results);

// What a script answered as a recordset: its first rows, read only, with what follows them behind;
// closed when there are none.
[[nodiscard]] Ref<Recordset> recordsetOf(std::vector<Result> results,
                                         const Ref<Connection>& connection);

// The restrictions that a client gives for a schema rowset: an array of values, Empty for any.
// Raises 3001 for what is no array and for more values than the rowset has restrictions.
[[nodiscard]] SchemaRestrictions restrictionsOf(SchemaEnum kind, const Variant& given);

}  // namespace kap::ado
