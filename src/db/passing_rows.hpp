#pragma once

#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/by_ref.hpp>
#include <kaputil/automation/variant.hpp>

namespace kap::db {

// Opens a query as OpenRecordset does with its defaults, for somebody who reads its records once,
// from the first to the last: they come as they are needed and are not kept. What fails behind the
// first of them is raised by the movement that meets it.
[[nodiscard]] Ref<ado::Recordset> openPassingRows(const String& sqlString,
                                                  ByRef<Variant> connessione);

}  // namespace kap::db
