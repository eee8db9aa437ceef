#pragma once

#include <cstdint>

#include <kaputil/automation/by_ref.hpp>
#include <kaputil/automation/variant.hpp>
#include <kaputil/base/export.hpp>
#include <kaputil/core/cerrore.hpp>

// Progressive numbers of documents, without duplicates however many programs take them.
//
// A counter (a row of vtx_TabPro, one a code and year) holds the last definitive number given out
// (n_Def) and, when GestProvv is not 0, the last provisional one (n_Prov). A document type
// (vtx_TabDoc) names its counter in TipoProg. Numbers can be reserved ahead (vtx_TabProPrenotati,
// whose Stato is D once such a number was read, U once it was taken, M once it was taken for the
// accounts).
//
// No lock is held between reading a counter and writing it: the writing is refused when another
// program was first, and is then tried again with the row as it is now.
namespace kap::numbering {

// The next number of a counter; in write mode the counter is advanced in the database.
//
//     sTipoDoc                the document type; needed when no counter is named
//     cDefinitivoProvvisorio  "P": the provisional sequence; anything else: the definitive one
//     cLeggoScrivo            "S" takes the number, anything else only looks
//     nAnno                   the year of the counter
//     nNumero                 the number that the caller holds already, 0 when none
//     connessione             an open connection, or a connection string that is opened in place
//     sTipoProgressivo        the counter's code; "°°°" finds it through the document type
//     sAliasTabDoc            the table of document types
//     gestionePrenotati       0: reservations and numbers in use do not matter; above 0: `nNumero`
//                             is looked for among the reservations, and numbers that documents,
//                             reservations or accounting entries carry are passed over. 1, 2 and 3
//                             tell what becomes of a reservation (taken by documents, only read,
//                             taken by the accounts); with 4 a counter that is named by its code is
//                             never written.
//
// A number that was looked at has the type of the counter's column; one that was taken is what the
// column then holds, which may be more when another program was faster. `nNumero` itself comes back
// when it is reserved, when it is stored as it is (a counter without provisional sequence,
// GestProvv 0), and when something fails, which `errore` then tells with number 1 and a message.
// The other failures: the Integer -9 without a document type, Empty when a counter named by its
// code is not there.
//
// `errore` is cleared first (made when it is unset), and replaced by another object when the
// counter is written. Raises the database's errors, apart from those of writing a counter, which
// are tried again up to five attempts (one when an exact number has to be stored) and then told in
// `errore`; a number that is stored as it is gets no second attempt. Raises 94 when a Null counter
// is to be written or compared with numbers in use.
[[nodiscard]] KAPUTIL_EXPORT Variant Progressivi(
    const String& sTipoDoc, const String& cDefinitivoProvvisorio, const String& cLeggoScrivo,
    std::int16_t nAnno, double nNumero, ByRef<Variant> connessione, const String& sTipoProgressivo,
    const String& sAliasTabDoc, std::int16_t gestionePrenotati, Ref<CErrore>& errore);

// The same in its earlier form, for programs built against it. It knows nothing of reservations and
// numbers in use, so every number taken is the counter's last one plus one, with up to five
// attempts. By document type a provisional number is looked at in n_Prov whatever GestProvv says,
// and on a counter without provisional sequence a provisional number taken stores `nNumero` into
// n_Def.
[[nodiscard]] KAPUTIL_EXPORT Variant Progressivi_OLD(
    const String& sTipoDoc, const String& cDefinitivoProvvisorio, const String& cLeggoScrivo,
    std::int16_t nAnno, double nNumero, ByRef<Variant> connessione, const String& sTipoProgressivo,
    const String& sAliasTabDoc, Ref<CErrore>& errore);

}  // namespace kap::numbering
