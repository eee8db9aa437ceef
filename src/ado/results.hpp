#pragma once

#include <memory>
#include <vector>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>

#include "data/driver.hpp"

namespace kap::ado {

struct LaterExecution;

// The rows that the statements of a script wrote, as a Long; -1 when none counts them.
[[nodiscard]] Variant rowsWritten(const std::vector<Result>& results);

// A closed recordset, and what a script answered in it: its first rows, read only, with what
// follows them behind; it stays closed when there are none. It is made before the script is run,
// which must not be said to have failed when only its answer has. `request` is what was sent,
// made before for the same reason.
[[nodiscard]] Ref<Recordset> recordsetFor(const Ref<Connection>& connection);
void answer(Recordset& recordset, std::shared_ptr<const Request> request, Reply reply);

// The same of what was run in the background. Who drops the recordset at once may want its rows all
// the same, from ExecuteComplete: another one has them then.
void takeRecords(LaterExecution& ran, const Ref<Connection>& connection, bool noRecords);

// The restrictions that a client gives for a schema rowset: an array of values, Empty for any.
// Raises 3001 for what is no array and for more values than the rowset has restrictions.
[[nodiscard]] SchemaRestrictions restrictionsOf(SchemaEnum kind, const Variant& given);

}  // namespace kap::ado
