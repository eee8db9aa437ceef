#pragma once

#include <kaputil/automation/by_ref.hpp>
#include <kaputil/automation/variant.hpp>
#include <kaputil/base/export.hpp>
#include <kaputil/core/cproprieta.hpp>

// One answer of a configuration table, for programs that have no tree.
namespace kap::config {

// The flag that the table PREFIX_KAP_CFG gives for a procedure, as a property string object with
// the property Flag: 0 when there is no row (or no procedure is named, which asks nothing of the
// database), else that of the first row in the order of application, procedure and field, whatever
// its group and module. With a row its Applicazione and Campo are there, too.
//
// `connessione` is an open connection or a connection string. `sApplicazione` and `sCampo` narrow
// the search; "°°°", the default, leaves them open, while "" looks for an empty name. Names stand
// in the statement as they are. Raises what the database raises: -2147217865 for a table that is
// not there.
[[nodiscard]] KAPUTIL_EXPORT Ref<CProprieta> KapCFG(ByRef<Variant> connessione,
                                                    const String& sPrefissoProgramma,
                                                    const String& sProcedura,
                                                    const String& sApplicazione = u"°°°",
                                                    const String& sCampo = u"°°°");

}  // namespace kap::config
