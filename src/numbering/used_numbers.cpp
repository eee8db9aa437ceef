#include <kaputil/numbering/used_numbers.hpp>

#include <limits>
#include <string>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/automation/plain_text.hpp>
#include <kaputil/core/cproprieta.hpp>

#include "numbering/number_text.hpp"

namespace kap::numbering {
namespace {

// Puts the statement together, block by block; the values stand in it as they are given.
class Statement {
public:
    Statement(const String& counter, const String& year, double first, double last)
        : counter_(counter),
          year_(year),
          range_(u"BETWEEN '" + numberText(first) + u"' AND '" + numberText(last) + u"' ") {}

    void documents() {
        text_ +=
            u"SELECT mag_TDocumenti.Tipo , mag_TDocumenti.Numero FROM  mag_TDocumenti "
            u"INNER JOIN vtx_Tabdoc ON vtx_TabDoc.Codice = mag_TDocumenti.Tipo "
            u"WHERE mag_TDocumenti.Anno = '" +
            year_ + u"' AND vtx_TabDoc.TipoProg = '" + counter_ +
            u"' AND (isnull(mag_TDocumenti.MC_Registrazione,'')='' or "
            u"isnull(mag_TDocumenti.MC_Registrazione,'0')='0' ) AND mag_TDocumenti.Numero " +
            range_;
    }

    // Looked for by one column and shown by another; deliberate.
    void invoices() {
        text_ +=
            u"SELECT mag_TFatture.Tipo , mag_TFatture.Numero FROM  mag_TFatture "
            u"INNER JOIN vtx_Tabdoc ON vtx_TabDoc.Codice = mag_TFatture.Tipo "
            u"WHERE mag_TFatture.Anno = '" +
            year_ + u"' AND vtx_TabDoc.TipoProg = '" + counter_ + u"' AND mag_TFatture.NumFat " +
            range_;
    }

    void reservations() {
        text_ +=
            u"SELECT '°°°' as Tipo , vtx_TabProPrenotati.Numero FROM  vtx_TabProPrenotati "
            u"WHERE vtx_TabProPrenotati.Anno = '" +
            year_ + u"' AND vtx_TabProPrenotati.Codice = '" + counter_ +
            u"' AND vtx_TabProPrenotati.Numero " + range_;
    }

    void accountingEntries() {
        text_ +=
            u"SELECT 'MC' as Tipo, con_MovConT.Protocollo AS Numero "
            u"FROM con_MovConT "
            u"INNER JOIN con_TabCausali ON con_TabCausali.Codice = con_MovConT.Causale "
            u"WHERE year(con_MovConT.Data) = '" +
            year_ + u"' AND con_TabCausali.Registro = '" + counter_ +
            u"' AND con_MovConT.Protocollo " + range_;
        join();
        text_ +=
            u"SELECT 'MC' as Tipo, con_MovConD.Protocollo AS Numero "
            u"FROM con_MovConD "
            u"WHERE con_MovConD.Anno = '" +
            year_ + u"' AND con_MovConD.Registro = '" + counter_ +
            u"' AND con_MovConD.Protocollo " + range_;
    }

    void counter() {
        text_ +=
            u"SELECT Codice as Tipo, N_Def AS Numero "
            u"FROM vtx_TabPro "
            u"WHERE vtx_TabPro.Anno = '" +
            year_ + u"' AND vtx_TabPro.Codice = '" + counter_ + u"' AND vtx_TabPro.N_Def " + range_;
    }

    void join() { text_ += u"UNION "; }

    [[nodiscard]] String ordered() const { return text_ + u"ORDER BY Numero "; }

private:
    String counter_;
    String year_;
    String range_;
    String text_;
};

// A code that is none of these leaves nothing but the order, which the database refuses.
String searchFor(Statement statement, const String& search) {
    const bool everything = search == String(u"X");
    const bool several = everything || search == String(u"T");
    if (several || search == String(u"D")) {
        statement.documents();
    }
    if (everything) {
        statement.join();
    }
    if (everything || search == String(u"F")) {
        statement.invoices();
    }
    if (several) {
        statement.join();
    }
    if (several || search == String(u"P")) {
        statement.reservations();
    }
    if (several) {
        statement.join();
    }
    if (several || search == String(u"M")) {
        statement.accountingEntries();
    }
    if (everything) {
        statement.join();
        statement.counter();
    }
    return statement.ordered();
}

}  // namespace

Variant RicercaNumeriDocPre(ByRef<Variant> connessione, const String& progressivo,
                            const String& anno, double daNumero, double aNumero,
                            const String& ricerca) {
    constexpr int kMostRows = std::numeric_limits<std::int16_t>::max();
    auto found = make<CProprieta>();
    const auto rows = make<ado::Recordset>();
    rows->Open(searchFor(Statement(progressivo, anno, daNumero, aNumero), ricerca), *connessione);
    for (int position = 1; !rows->Eof(); ++position) {
        if (position > kMostRows) {
            throw AutomationError(errors::kOverflow);
        }
        const std::string suffix = plain::text(position);
        found->Scrivi("Tipo" + suffix, rows->Fields()->Item(u"Tipo")->Value());
        found->Scrivi("Numero" + suffix, rows->Fields()->Item(u"Numero")->Value());
        rows->MoveNext();
    }
    rows->Close();
    return found->Leggi();
}

}  // namespace kap::numbering
