#include "numbering/reservation.hpp"

#include <kaputil/automation/arithmetic.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/core/cproprieta.hpp>

#include "numbering/counter.hpp"
#include "numbering/number_text.hpp"

namespace kap::numbering {
namespace {

using ado::Recordset;

// How the caller wants a reservation to be treated; any other value above 0 leaves it alone.
constexpr std::int16_t kTakenByDocuments = 1;
constexpr std::int16_t kOnlyRead = 2;
constexpr std::int16_t kTakenByAccounts = 3;

constexpr const char16_t* kState = u"Stato";
constexpr const char16_t* kRead = u"D";
constexpr const char16_t* kTaken = u"U";
constexpr const char16_t* kInAccounts = u"M";

String stateOf(const Recordset& reservation) {
    const Variant state = valueOf(reservation, kState);
    return state.isNull() ? String() : convert::toString(state);
}

// One reservation in the hands of one caller.
class Check {
public:
    Check(const Request& request, Recordset& reservation, Recordset& counter,
          const String& documentType, CErrore& errore)
        : request_(request),
          reservation_(reservation),
          counter_(counter),
          documentType_(documentType),
          errore_(errore) {}

    void run() {
        const String state = stateOf(reservation_);
        if (state == String(kTaken)) {
            reportOtherDocuments();
        } else if (state == String(kInAccounts)) {
            reportAccounts();
        } else if (state == String(kRead)) {
            reportInvoices();
        } else if (request_.writing()) {
            take();
        } else if (request_.handling == kOnlyRead) {
            setState(kRead);
        }
        // Only a definitive number asked for by its letter, although every other letter but P is
        // definitive, too; deliberate.
        if (request_.writing() && request_.sequence == String(u"D") &&
            request_.handling != kTakenByAccounts) {
            useUp();
        }
    }

private:
    void take() {
        if (request_.handling == kTakenByDocuments) {
            takeForDocuments();
        } else if (request_.handling == kTakenByAccounts && !search(u"M")) {
            setState(kInAccounts);
        }
    }

    // The reservation is marked as taken even when a document of another type carries the number;
    // deliberate.
    void takeForDocuments() {
        if (search(u"D")) {
            if (foundType_ == documentType_) {
                return;
            }
            reportDocument(u"!");
        }
        setState(kTaken);
    }

    void reportOtherDocuments() {
        if (search(u"D") && (request_.handling == kOnlyRead || foundType_ != documentType_)) {
            reportDocument(u"!");
        } else if (search(u"F") && foundType_ != documentType_) {
            reportDocument(u"!");
        }
    }

    // Callers that name a counter by its code are never told; deliberate.
    void reportAccounts() {
        if (search(u"M") && !documentType_.empty()) {
            report(errore_, u"Numero progressivo già Utilizzato in Movimenti Contabili !");
        }
    }

    void reportInvoices() {
        if (search(u"F")) {
            reportDocument(u" in Fatturazione Differita !");
        }
    }

    void reportDocument(const char16_t* ending) {
        report(errore_, u"Numero progressivo già Utilizzato da Documento " + foundType_ + ending);
    }

    // Whether anybody carries the number; the type of the first who does is kept.
    bool search(const char16_t* where) {
        const auto carriers = carriersOf(request_.connection, counter_, numberText(request_.year),
                                         request_.number, where);
        if (carriers->Count() == 0) {
            return false;
        }
        foundType_ = convert::toString(carriers->Leggi(u"Tipo1"));
        return true;
    }

    void setState(const char16_t* state) {
        reservation_.Fields()->Item(kState)->setValue(state);
        reservation_.Update();
    }

    // A counter that is past the number already stays where it is.
    void useUp() {
        reservation_.Delete();
        reservation_.Update();
        const auto order = arithmetic::compare(valueOf(counter_, u"n_Def"), request_.number);
        if (order && *order < 0) {
            storeDefinitive(counter_, request_.number);
        }
    }

    const Request& request_;
    Recordset& reservation_;
    Recordset& counter_;
    const String& documentType_;
    CErrore& errore_;
    String foundType_;
};

}  // namespace

bool checkReservation(const Request& request, const String& code, Recordset& counter,
                      CErrore& errore) {
    if (!(request.number > 0 && request.handling > 0)) {
        return false;
    }
    const auto reservation = make<Recordset>();
    reservation->Open(u"SELECT TOP 1 * FROM vtx_TabProPrenotati WHERE Codice = '" + code +
                          u"' AND Anno = '" + numberText(request.year) + u"' AND Numero = '" +
                          numberText(request.number) + u"'",
                      request.connection, ado::CursorTypeEnum::adOpenKeyset,
                      ado::LockTypeEnum::adLockOptimistic, -1);
    const bool reserved = !reservation->Eof();
    if (reserved) {
        ControllaPrenotato(request, *reservation, counter,
                           request.byCode() ? String() : request.documentType, errore);
    }
    reservation->Close();
    return reserved;
}

void ControllaPrenotato(const Request& request, Recordset& reservation, Recordset& counter,
                        const String& documentType, CErrore& errore) {
    Check(request, reservation, counter, documentType, errore).run();
}

}  // namespace kap::numbering
