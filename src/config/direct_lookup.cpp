#include <kaputil/config/direct_lookup.hpp>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/db/recordsets.hpp>

namespace kap::config {
namespace {

constexpr const char16_t* kNotGiven = u"°°°";

// The names stand in the text as they are given, quotes and all.
String lookupStatement(const String& prefix, const String& procedure, const String& application,
                       const String& field) {
    String statement =
        u"SELECT TOP 1 * FROM " + prefix + u"_KAP_CFG WHERE Procedura ='" + procedure + u"'";
    if (application != String(kNotGiven)) {
        statement += u" AND Applicazione ='" + application + u"'";
    }
    if (field != String(kNotGiven)) {
        statement += u" AND CAMPO ='" + field + u"'";
    }
    return statement + u" ORDER BY Applicazione, Procedura, Campo";
}

}  // namespace

Ref<CProprieta> KapCFG(ByRef<Variant> connessione, const String& sPrefissoProgramma,
                       const String& sProcedura, const String& sApplicazione,
                       const String& sCampo) {
    constexpr std::int16_t kNone = 0;
    auto answer = make<CProprieta>();
    answer->Scrivi(u"Flag", kNone);
    if (sProcedura.empty()) {
        return answer;
    }
    const auto rows = db::OpenRecordset(
        lookupStatement(sPrefissoProgramma, sProcedura, sApplicazione, sCampo), connessione);
    if (!rows->Eof()) {
        for (const char16_t* column : {u"Applicazione", u"Campo", u"Flag"}) {
            answer->Scrivi(column, Variant(rows->Fields()->Item(column)));
        }
    }
    return answer;
}

}  // namespace kap::config
