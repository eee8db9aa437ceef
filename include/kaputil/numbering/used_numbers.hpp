#pragma once

#include <kaputil/automation/by_ref.hpp>
#include <kaputil/automation/variant.hpp>
#include <kaputil/base/export.hpp>

namespace kap::numbering {

// Who carries the numbers from `daNumero` to `aNumero` of a counter in a year, as a property
// string: Tipo1 and Numero1, Tipo2 and Numero2 and so on, ordered by number; empty when nobody
// does.
//
// `ricerca` tells where to look. Tipo is a document's type, "°°°" for a reservation, "MC" for an
// accounting entry and the counter's code for the counter itself.
//
//     D   warehouse documents that are not registered in the accounts yet
//     F   invoices: found by NumFat, shown by Numero
//     P   reservations
//     M   accounting entries, whose register is the counter's code
//     T   documents, reservations and accounting entries
//     X   all of these, the invoices and the counter's last definitive number
//
// Everything stands in the statement as it is given, between single quotes. Raises the database's
// errors, also for any other `ricerca`, which makes no statement, and for a table that the program
// does not have; 6 for more than 32,767 rows.
[[nodiscard]] KAPUTIL_EXPORT Variant RicercaNumeriDocPre(ByRef<Variant> connessione,
                                                         const String& progressivo,
                                                         const String& anno, double daNumero,
                                                         double aNumero,
                                                         const String& ricerca = u"T");

}  // namespace kap::numbering
