#pragma once

#include <kaputil/ado/recordset.hpp>
#include <kaputil/core/cerrore.hpp>
#include <kaputil/core/cproprieta.hpp>

#include "numbering/request.hpp"

// The row of a counter: finding, reading and writing it.
namespace kap::numbering {

// The column of the last definitive number.
inline constexpr const char16_t* kDefinitive = u"n_Def";

// What looking for a counter came to.
struct FoundCounter {
    Ref<ado::Recordset> row;  // connected and writable; unset when there is none
    String code;
    Variant failure;  // the call's result when there is none; the error object says why
};

// By the code that the caller gave, or through the document type.
[[nodiscard]] FoundCounter findByCode(const Request& request, CErrore& errore);
[[nodiscard]] FoundCounter findByDocumentType(const Request& request, CErrore& errore);

// Sets the number of an error object to 1 and adds a message.
void report(CErrore& errore, const String& message);

[[nodiscard]] Variant valueOf(const ado::Recordset& row, const char16_t* column);

// The number after the last one given out, in the type of the column.
[[nodiscard]] Variant nextNumber(const ado::Recordset& counter, const char16_t* column);

// Who carries a number of the counter; `search` as RicercaNumeriDocPre has it.
[[nodiscard]] Ref<CProprieta> carriersOf(Variant& connection, const ado::Recordset& counter,
                                         const String& year, const Variant& number,
                                         const char16_t* search);

// The first number from `candidate` on that no document, reservation or accounting entry carries.
[[nodiscard]] Variant firstUnused(Variant& connection, const ado::Recordset& counter,
                                  const String& year, Variant candidate);

// Stores `value` in a column of the counter, or the stored value plus one when it is 0, and gives
// back how that went. When another program was first the row is read again; adding one is then
// tried again, five attempts in all.
[[nodiscard]] Ref<CErrore> AggiornaContatore(ado::Recordset& counter, const char16_t* column,
                                             double value);

// Stores a number found by the caller, after passing over numbers in use; when these do not matter
// (`gestionePrenotati` 0) the stored value plus one, so that writers queue up behind each other.
[[nodiscard]] Ref<CErrore> RegistraProgressivo(Variant& connection, ado::Recordset& counter,
                                               const char16_t* column, double value,
                                               std::int16_t gestionePrenotati);

// Makes `outcome` the caller's error object. The result is the number now stored, or the number
// that the caller had when it was not stored.
[[nodiscard]] Variant resultOfWriting(const Ref<CErrore>& outcome, const ado::Recordset& counter,
                                      const Request& request, Ref<CErrore>& errore);

// Stores a number into n_Def as it is. Whoever changed the row meanwhile makes it fail.
void storeDefinitive(ado::Recordset& counter, const Variant& number);

}  // namespace kap::numbering
