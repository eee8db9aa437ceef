#pragma once

#include <cstdint>

#include <kaputil/automation/by_ref.hpp>
#include <kaputil/automation/string.hpp>
#include <kaputil/automation/variant.hpp>
#include <kaputil/base/export.hpp>

// Rounding, and the value of a document's line.
namespace kap::util {

// `Numero` rounded to `Decimali` decimals (negative ones round to tens, hundreds, ...), as a
// Double. `Arrotonda`, in any case, says how: "A" to nearest, halves away from
// zero, where what lies short of a half by up to 0.0000000001 of the last decimal counts as one;
// "I" down, toward zero; "S" up, away from zero (with decimals, also when the number has no more of
// them already). Any other text gives the Integer -1. Raises 6 when the number or its product with
// the power of ten is too large, 13 for what is no number, 94 for Null.
[[nodiscard]] KAPUTIL_EXPORT Variant KapRound(const Variant& numero, std::int16_t decimali = 0,
                                              const String& arrotonda = u"A");

// Quantity times price, less the header discount and up to three others in per cent, rounded to the
// decimals that the table `vtx_TabVal` has for amounts in the currency (`Dec_Imp`, Null: none), as
// a Double. A first or second discount above 99.99 is set to that in the caller's variable; the
// third and the header's never are, and negative ones are surcharges.
//
// `connessione` is an open connection or a connection string. For a currency that the table does
// not have a message box says so and the result is Empty. Raises the database's errors, 13 for a
// discount that is no number, 94 for Null, 6 when the value is too large.
[[nodiscard]] KAPUTIL_EXPORT Variant CalcVal(ByRef<Variant> connessione, const String& sValuta,
                                             double nPrezzo, double nQta,
                                             ByRef<Variant> nSc1 = Variant(std::int16_t{0}),
                                             ByRef<Variant> nSc2 = Variant(std::int16_t{0}),
                                             ByRef<Variant> nsc3 = Variant(std::int16_t{0}),
                                             ByRef<Variant> nScTestata = Variant(std::int16_t{0}));

}  // namespace kap::util
