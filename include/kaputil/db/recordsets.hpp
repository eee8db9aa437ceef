#pragma once

#include <cstdint>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/by_ref.hpp>
#include <kaputil/automation/variant.hpp>
#include <kaputil/base/export.hpp>

// Opening and positioning recordsets: the one road by which the library reads the database.
namespace kap::db {

// Opens a query with the library's defaults and fetches every row of it.
//
// `connessione` is an open connection object, or a connection string that is opened for this call.
// The whole-number options are those of Recordset.Open; -1 lets the library choose, and the choice
// is written back into the caller's variable: `cursorType` 3 (static), `lockType` 3 (optimistic),
// `options` 1 (command text), `cursorLocation` 3 (client). With `deleteNull` the Nulls of text,
// currency, floating-point, decimal, small whole-number and date fields read as empty text or 0;
// the database keeps its Nulls. With `closeConnection` the recordset is disconnected; the caller's
// connection stays as it was.
//
// An unknown table (-2147217865), an error in the command text (-2147217900) and the loss of an
// open connection (-2147467259) are raised at once. Else eleven attempts are made in all: then the
// result is a closed recordset if both switches are off, otherwise its first access raises 3704.
[[nodiscard]] KAPUTIL_EXPORT Ref<ado::Recordset> OpenRecordset(
    const String& sqlString, ByRef<Variant> connessione, ByRef<std::int16_t> cursorType = -1,
    ByRef<std::int16_t> lockType = -1, ByRef<std::int16_t> options = -1,
    ByRef<bool> deleteNull = true, ByRef<bool> closeConnection = true,
    ByRef<std::int16_t> cursorLocation = -1);

// Makes sure that `connessione` is an open connection: an object is left alone, a connection string
// is opened and replaced by the connection. Raises what the opening raises.
KAPUTIL_EXPORT void ControllaConnessione(ByRef<Variant> connessione);

// Moves a recordset, also one of another maker, to "FIRST" or "LAST" (any case), or to a row number
// counted from 1. The result is always False; a movement that is not possible raises 3021.
KAPUTIL_EXPORT bool kapGoTo(ByRef<Ref<Object>> rst, const Variant& posizione);

// The next line number after the one that `sSQL` finds in its first column: the next multiple of
// `nPasso` above it, a Double; `nInizio`, an Integer, when there is no line yet (Null). A step or a
// start of 0 becomes 1. Raises 3021 when the query has no row.
[[nodiscard]] KAPUTIL_EXPORT Variant Riga_Prog(ByRef<Variant> connessione, ByRef<String> sSQL,
                                               ByRef<std::int16_t> nPasso = 1,
                                               ByRef<std::int16_t> nInizio = 1);

}  // namespace kap::db
