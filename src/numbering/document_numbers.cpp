#include <kaputil/numbering/document_numbers.hpp>

#include <utility>

#include <kaputil/automation/arithmetic.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/db/recordsets.hpp>
#include <kaputil/util/values.hpp>

#include "numbering/counter.hpp"
#include "numbering/number_text.hpp"
#include "numbering/request.hpp"
#include "numbering/reservation.hpp"

namespace kap::numbering {
namespace {

using ado::Recordset;

// A caller who wants numbers only looked at when the counter is named by its code.
constexpr std::int16_t kNeverWriteByCode = 4;

constexpr const char16_t* kProvisional = u"n_Prov";

bool equals(const Variant& left, const Variant& right) {
    return arithmetic::compare(left, right) == 0;
}

// Whether the counter keeps provisional numbers, as the choice of the next number sees it: what is
// no number is 0.
bool keepsProvisional(const Recordset& counter) {
    return !equals(util::kapVal(valueOf(counter, u"GestProvv"), u"Double"), 0.0);
}

// Whether GestProvv is exactly 0, as the writing of a definitive number sees it: Null is not.
bool hasZero(const Recordset& counter) {
    return equals(valueOf(counter, u"GestProvv"), std::int16_t{0});
}

// The same, as the writing of a provisional number sees it: a text must be "0".
bool hasTextZero(const Recordset& counter) {
    return equals(valueOf(counter, u"GestProvv"), u"0");
}

void begin(const Request& request, Ref<CErrore>& errore) {
    db::ControllaConnessione(request.connection);
    if (!errore) {
        errore = make<CErrore>();
    }
    errore->Clear();
}

Variant passingOverUsed(const Request& request, const Recordset& counter, Variant number) {
    if (request.handling <= 0) {
        return number;
    }
    return firstUnused(request.connection, counter, numberText(request.year), std::move(number));
}

Variant registered(const Request& request, Recordset& counter, const Variant& number,
                   Ref<CErrore>& errore) {
    return resultOfWriting(RegistraProgressivo(request.connection, counter, request.column(),
                                               convert::toDouble(number), request.handling),
                           counter, request, errore);
}

Variant advanced(const Request& request, Recordset& counter, Ref<CErrore>& errore) {
    return resultOfWriting(AggiornaContatore(counter, request.column(), 0), counter, request,
                           errore);
}

Variant stored(Recordset& counter, const Variant& number) {
    storeDefinitive(counter, number);
    return number;
}

Variant numberByCode(const Request& request, Ref<CErrore>& errore) {
    const FoundCounter found = findByCode(request, *errore);
    if (!found.row) {
        return found.failure;
    }
    Recordset& counter = *found.row;
    if (checkReservation(request, found.code, counter, *errore)) {
        return request.number;
    }
    Variant number = passingOverUsed(request, counter, nextNumber(counter, request.column()));
    if (request.handling == kNeverWriteByCode || !request.writing()) {
        return number;
    }
    return registered(request, counter, number, errore);
}

// A provisional number that is written on a counter without provisional sequence is the caller's
// own; one that is only read there is the next definitive one. Deliberate, both.
Variant candidateByType(const Request& request, const Recordset& counter) {
    if (!request.provisional()) {
        return nextNumber(counter, kDefinitive);
    }
    if (keepsProvisional(counter)) {
        return nextNumber(counter, kProvisional);
    }
    return request.writing() ? Variant(request.number) : nextNumber(counter, kDefinitive);
}

Variant numberByDocumentType(const Request& request, Ref<CErrore>& errore) {
    const FoundCounter found = findByDocumentType(request, *errore);
    if (!found.row) {
        return found.failure;
    }
    Recordset& counter = *found.row;
    if (checkReservation(request, found.code, counter, *errore)) {
        return request.number;
    }
    Variant number = passingOverUsed(request, counter, candidateByType(request, counter));
    // Written also by a caller who never writes a counter named by its code; deliberate.
    if (!request.writing()) {
        return number;
    }
    if (request.provisional()) {
        // A provisional number advances the definitive sequence here; deliberate.
        return hasTextZero(counter) ? stored(counter, number)
                                    : registered(request, counter, number, errore);
    }
    return hasZero(counter) && request.number != 0 ? stored(counter, request.number)
                                                   : registered(request, counter, number, errore);
}

Variant oldNumberByCode(const Request& request, Ref<CErrore>& errore) {
    const FoundCounter found = findByCode(request, *errore);
    if (!found.row) {
        return found.failure;
    }
    return request.writing() ? advanced(request, *found.row, errore)
                             : nextNumber(*found.row, request.column());
}

Variant oldNumberByDocumentType(const Request& request, Ref<CErrore>& errore) {
    const FoundCounter found = findByDocumentType(request, *errore);
    if (!found.row) {
        return found.failure;
    }
    Recordset& counter = *found.row;
    if (!request.writing()) {
        return nextNumber(counter, request.column());
    }
    const bool storedAsItIs =
        request.provisional() ? hasTextZero(counter) : hasZero(counter) && request.number != 0;
    return storedAsItIs ? stored(counter, request.number) : advanced(request, counter, errore);
}

}  // namespace

Variant Progressivi(const String& sTipoDoc, const String& cDefinitivoProvvisorio,
                    const String& cLeggoScrivo, std::int16_t nAnno, double nNumero,
                    ByRef<Variant> connessione, const String& sTipoProgressivo,
                    const String& sAliasTabDoc, std::int16_t gestionePrenotati,
                    Ref<CErrore>& errore) {
    const Request request{sTipoDoc,         cDefinitivoProvvisorio, cLeggoScrivo,     nAnno,
                          nNumero,          *connessione,           sTipoProgressivo, sAliasTabDoc,
                          gestionePrenotati};
    begin(request, errore);
    return request.byCode() ? numberByCode(request, errore) : numberByDocumentType(request, errore);
}

Variant Progressivi_OLD(const String& sTipoDoc, const String& cDefinitivoProvvisorio,
                        const String& cLeggoScrivo, std::int16_t nAnno, double nNumero,
                        ByRef<Variant> connessione, const String& sTipoProgressivo,
                        const String& sAliasTabDoc, Ref<CErrore>& errore) {
    const Request request{sTipoDoc,     cDefinitivoProvvisorio, cLeggoScrivo, nAnno, nNumero,
                          *connessione, sTipoProgressivo,       sAliasTabDoc, 0};
    begin(request, errore);
    return request.byCode() ? oldNumberByCode(request, errore)
                            : oldNumberByDocumentType(request, errore);
}

}  // namespace kap::numbering
