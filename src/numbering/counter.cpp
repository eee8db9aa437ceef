#include "numbering/counter.hpp"

#include <memory>
#include <utility>

#include <kaputil/ado/connection.hpp>
#include <kaputil/automation/arithmetic.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/db/recordsets.hpp>
#include <kaputil/numbering/used_numbers.hpp>

#include "data/driver.hpp"
#include "numbering/number_text.hpp"

namespace kap::numbering {
namespace {

using ado::Recordset;

constexpr std::int16_t kFailed = 1;
constexpr std::int16_t kNoDocumentType = -9;
constexpr std::int16_t kOne = 1;

// The row stays connected, because the call may write it.
Ref<Recordset> openWritable(const String& query, Variant& connection) {
    return db::OpenRecordset(query, connection, -1, -1, -1, /*deleteNull=*/true,
                             /*closeConnection=*/false);
}

// The counter with this code, or the failure to find it.
FoundCounter found(Ref<Recordset> row, String code, const Request& request, Variant failure,
                   CErrore& errore) {
    if (!row->Eof()) {
        return {std::move(row), std::move(code), {}};
    }
    report(errore, u"Tipo progressivo (" + code + u"/" + numberText(request.year) +
                       u") NON trovato in tabella!");
    return {{}, std::move(code), std::move(failure)};
}

// Runs one step of a writing whose errors are looked at later.
template <class Action>
void trapping(bool& pending, Action action) {
    try {
        action();
    } catch (const AutomationError&) {
        pending = true;
    }
}

// Lets the other writers of a database wait until this one has read its row again and written it.
// Many that want the same counter would otherwise go past each other for long, each finding that
// what it has read has changed.
class FirstToWrite {
public:
    void become(const Recordset& row) {
        const Variant client = row.ActiveConnection();
        auto* connection = dynamic_cast<ado::Connection*>(client.as<Ref<Object>>().get());
        if (connection != nullptr && !place_) {
            session_ = connection->session();
            place_ = session_->precedence();
        }
    }

private:
    std::shared_ptr<ado::Session> session_;  // in which the place is
    std::shared_ptr<void> place_;
};

}  // namespace

void report(CErrore& errore, const String& message) {
    errore.setNumero(kFailed);
    errore.AddMessaggio(message);
}

FoundCounter findByCode(const Request& request, CErrore& errore) {
    auto row = openWritable(u"SELECT TOP 1 * FROM vtx_TabPro WHERE Codice='" + request.counterCode +
                                u"' AND Anno = " + numberText(request.year),
                            request.connection);
    // Empty, where a counter found through a document type gives the caller's number; deliberate.
    return found(std::move(row), request.counterCode, request, Variant(), errore);
}

FoundCounter findByDocumentType(const Request& request, CErrore& errore) {
    if (request.documentType.empty()) {
        report(errore, u"Obbligatorio passare il tipo di documento!");
        return {{}, {}, kNoDocumentType};
    }
    const auto type = db::OpenRecordset(u"SELECT * FROM " + request.documentTypes +
                                            u" WHERE CODICE ='" + request.documentType + u"'",
                                        request.connection);
    if (type->Eof()) {
        report(errore, u"Tipo Documento non trovato in tabella!");
        return {{}, {}, request.number};
    }
    String code = convert::toString(valueOf(*type, u"TipoProg"));
    auto row = openWritable(u"SELECT * FROM vtx_TabPro WHERE Codice = '" + code + u"' AND ANNO = " +
                                numberText(request.year),
                            request.connection);
    return found(std::move(row), std::move(code), request, request.number, errore);
}

Variant valueOf(const Recordset& row, const char16_t* column) {
    return row.Fields()->Item(column)->Value();
}

Variant nextNumber(const Recordset& counter, const char16_t* column) {
    return arithmetic::add(valueOf(counter, column), kOne);
}

Ref<CProprieta> carriersOf(Variant& connection, const Recordset& counter, const String& year,
                           const Variant& number, const char16_t* search) {
    const double wanted = convert::toDouble(number);
    auto carriers = make<CProprieta>();
    carriers->Scrivi(
        u"", RicercaNumeriDocPre(connection, convert::toString(valueOf(counter, u"Codice")), year,
                                 wanted, wanted, search));
    return carriers;
}

Variant firstUnused(Variant& connection, const Recordset& counter, const String& year,
                    Variant candidate) {
    while (carriersOf(connection, counter, year, candidate, u"T")->Count() != 0) {
        candidate = arithmetic::add(candidate, kOne);
    }
    return candidate;
}

Ref<CErrore> AggiornaContatore(Recordset& counter, const char16_t* column, double value) {
    constexpr int kAttempts = 5;
    const int attempts = value == 0 ? kAttempts : 1;
    bool written = false;
    FirstToWrite first;
    // An error of reading the row again is still pending when the next attempt is judged.
    bool pending = false;
    for (int i = 1; i <= attempts && !written; ++i) {
        trapping(pending, [&] {
            counter.Fields()->Item(column)->setValue(value == 0 ? nextNumber(counter, column)
                                                                : Variant(value));
        });
        trapping(pending, [&] { counter.Update(); });
        written = !pending;
        if (pending) {
            pending = false;
            trapping(pending, [&] { counter.CancelUpdate(); });
            trapping(pending, [&] {
                if (i < attempts) first.become(counter);
                counter.Resync(ado::AffectEnum::adAffectCurrent,
                               ado::ResyncEnum::adResyncAllValues);
            });
        }
    }
    auto outcome = make<CErrore>();
    if (!written) {
        report(*outcome, u"Errore di update su tabella progressivi !!!");
    }
    return outcome;
}

Ref<CErrore> RegistraProgressivo(Variant& connection, Recordset& counter, const char16_t* column,
                                 double value, std::int16_t gestionePrenotati) {
    if (gestionePrenotati == 0) {
        return AggiornaContatore(counter, column, 0);
    }
    const Variant from = value == 0 ? nextNumber(counter, column) : Variant(value);
    const String year = convert::toString(valueOf(counter, u"Anno"));
    const Variant unused = firstUnused(connection, counter, year, from);
    return AggiornaContatore(counter, column, convert::toDouble(unused));
}

Variant resultOfWriting(const Ref<CErrore>& outcome, const Recordset& counter,
                        const Request& request, Ref<CErrore>& errore) {
    errore = outcome;
    if (convert::toLong(errore->Numero()) != 0) {
        return request.number;
    }
    return valueOf(counter, request.column());
}

void storeDefinitive(Recordset& counter, const Variant& number) {
    counter.Fields()->Item(kDefinitive)->setValue(number);
    counter.Update();
}

}  // namespace kap::numbering
