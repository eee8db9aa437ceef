#pragma once

#include <kaputil/automation/by_ref.hpp>
#include <kaputil/automation/variant.hpp>
#include <kaputil/base/export.hpp>
#include <kaputil/core/cerrore.hpp>
#include <kaputil/core/cproprieta.hpp>

// One database record as one text: records move between a query and a property string.
//
// Tables handled this way carry a row-version column named AggID, which the database changes with
// every write of the row. It travels in the property string under AGGID and is how a change by
// another user is noticed.
namespace kap::db {

// Reads the first record of `sSQL` into `stringaProprieta`, every field under its name. Singles
// arrive with four decimals, binary values (the row version) as the decimal text of their number,
// Nulls as empty text. Without a record every field is there with a neutral value: 0, empty text,
// or as many blanks as the field is wide. The result tells whether there was a record.
//
// Raises what opening the query raises; 5 for a binary field shorter than eight bytes; 14 when a
// blank text of the field's width cannot be made (long wide texts).
KAPUTIL_EXPORT bool DB_Read(ByRef<Variant> connessione, const String& sSQL,
                            ByRef<Variant> stringaProprieta);

// Writes `stringaProprieta` into the first record of `sSQL`, or as a new record when there is none
// and the string's AGGID is empty. Fields without a property keep their values; properties without
// a field are ignored. A blank value is written as 0, empty text or Null, as the field's type
// wants.
//
// False, with number 1 and one message in `errore`, when the record was changed or deleted by
// somebody else since it was read; nothing is written then. Any other failure is raised: a value
// that does not convert (13, 3421, -2147217887), a change that slipped in between check and write
// (-2147217864), and what the database refuses.
KAPUTIL_EXPORT bool DB_Update(ByRef<Variant> connessione, const String& sSQL,
                              const Variant& stringaProprieta, CErrore& errore);

// Deletes the first record of `sSQL`, whatever its version, and empties `stringaProprieta`. False,
// with number 1 and one message in `errore`, when there is none or it cannot be deleted. Raises
// nothing.
KAPUTIL_EXPORT bool DB_Delete(ByRef<Variant> connessione, const String& sSQL,
                              ByRef<Variant> stringaProprieta, CErrore& errore);

// Reads fields of the first record of `sStringaSQL` into a property string object, followed by the
// property EOF: 0, or 1 when there is no record.
//
// `sNomeCampi` is one name, several with commas between, or a property string whose names are
// meant (its blanks are removed too); "°°°", the default, means every field but AggID. Raises 3265
// for a name that is no field.
[[nodiscard]] KAPUTIL_EXPORT Ref<CProprieta> kapLeggiRecord(ByRef<Variant> connessione,
                                                            const String& sStringaSQL,
                                                            const String& sNomeCampi = u"°°°");

}  // namespace kap::db
