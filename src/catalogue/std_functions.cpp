#include <kaputil/catalogue/std_functions.hpp>

#include <kaputil/config/direct_lookup.hpp>
#include <kaputil/db/records.hpp>
#include <kaputil/db/recordsets.hpp>
#include <kaputil/host/cemail.hpp>
#include <kaputil/host/services.hpp>
#include <kaputil/host/text_export.hpp>
#include <kaputil/numbering/document_numbers.hpp>
#include <kaputil/numbering/used_numbers.hpp>
#include <kaputil/util/amounts.hpp>
#include <kaputil/util/dates.hpp>
#include <kaputil/util/values.hpp>

#include "automation/class_builder.hpp"

namespace kap {

namespace {

// Both members of numbering take the same.
std::vector<Parameter> numberParameters() {
    constexpr std::int16_t kNoHandling = 0;
    return {Parameter(u"sTipoDoc").byReference(),
            Parameter(u"cDefinitivoProvvisorio").byReference(),
            Parameter(u"CLeggoScrivo").byReference(),
            Parameter(u"nAnno").byReference(),
            Parameter(u"nNumero").byReference(),
            u"Connessione",
            Parameter(u"sTipoProgressivo").otherwise(u"°°°").byReference(),
            Parameter(u"sAliasTabDoc").otherwise(u"vtx_TabDoc").byReference(),
            Parameter(u"GestionePrenotati").otherwise(kNoHandling)};
}

}  // namespace

const ClassDescription& StdFunctions::classDescription() {
    constexpr std::int16_t kChoose = -1;
    constexpr std::int16_t kNone = 0;
    static const ClassDescription description =
        ClassBuilder<StdFunctions>(u"StdFunctions", u"ebe940f4-1cec-417c-9ee1-7425c4fae5fc",
                                   u"fca6683b-acb8-41e7-8f8f-351624e536e7")
            .instancing(Instancing::Global)
            .property<&StdFunctions::Errore, &StdFunctions::setErrore>(u"Errore")
            .method<&StdFunctions::kapSendKeys>(u"kapSendKeys",
                                                {Parameter(u"KeyString").byReference()})
            .method<&StdFunctions::AspettaDueSecondi>(u"AspettaDueSecondi")
            .method<&StdFunctions::OpenRecordset>(
                u"OpenRecordset",
                {Parameter(u"SQLString").byReference(), u"Connessione",
                 Parameter(u"CursorType").otherwise(kChoose),
                 Parameter(u"LockType").otherwise(kChoose),
                 Parameter(u"Options").otherwise(kChoose), Parameter(u"DeleteNull").otherwise(true),
                 Parameter(u"CloseConnection").otherwise(true),
                 Parameter(u"CursorLocation").otherwise(kChoose)})
            .method<&StdFunctions::DB_Read>(
                u"DB_Read", {u"Connessione", Parameter(u"sSQL").byReference(), u"StringaProprieta"})
            .method<&StdFunctions::DB_Update>(
                u"DB_Update",
                {u"Connessione", Parameter(u"sSQL").byReference(), u"StringaProprieta"})
            .method<&StdFunctions::DB_Delete>(
                u"DB_Delete",
                {u"Connessione", Parameter(u"sSQL").byReference(), u"StringaProprieta"})
            .method<&StdFunctions::kapLeggiRecord>(
                u"kapLeggiRecord", {u"Connessione", Parameter(u"sStringaSQL").byReference(),
                                    Parameter(u"sNomeCampi").otherwise(u"°°°").byReference()})
            .method<&StdFunctions::TrovaTop>(u"TrovaTop", {Parameter(u"frmPadre").byReference(),
                                                           Parameter(u"nTop").byReference()})
            .method<&StdFunctions::PosizionaForm>(
                u"PosizionaForm",
                {Parameter(u"frmFiglio").byReference(), Parameter(u"frmPadre").byReference(),
                 Parameter(u"nTop").byReference()})
            .method<&StdFunctions::KapCFG>(
                u"KapCFG", {u"Connessione", Parameter(u"sPrefissoProgramma").byReference(),
                            Parameter(u"sProcedura").byReference(),
                            Parameter(u"sApplicazione").otherwise(u"°°°").byReference(),
                            Parameter(u"sCampo").otherwise(u"°°°").byReference()})
            .method<&StdFunctions::Progressivi_OLD>(u"Progressivi_OLD", numberParameters())
            .method<&StdFunctions::WLog>(u"WLog", {Parameter(u"sLog_File").byReference(),
                                                   Parameter(u"sLog_Messaggio").byReference()})
            .method<&StdFunctions::EsportaTXT>(
                u"EsportaTXT", {u"stringaSql", u"Connessione", u"sNomeTxt", u"sPathTxt",
                                Parameter(u"lRicreoSchemaIni").otherwise(true)})
            .method<&StdFunctions::ControllaConnessione>(u"ControllaConnessione", {u"Connessione"})
            .method<&StdFunctions::kapNomeUtente>(u"kapNomeUtente")
            .method<&StdFunctions::AttributiFile>(
                u"AttributiFile", {Parameter(u"sNomeFile").byReference(),
                                   Parameter(u"sAttributo").otherwise(u"MOD").byReference()})
            .method<&StdFunctions::kapEmpty>(u"kapEmpty", {u"vValore"})
            .method<&StdFunctions::kapVal>(
                u"kapVal", {u"vValore", Parameter(u"sDataType").otherwise(u"Double").byReference()})
            .method<&StdFunctions::ConvertiData>(
                u"ConvertiData", {u"sData", Parameter(u"sLingua").otherwise(u"ING")})
            .method<&StdFunctions::NomeMese>(u"NomeMese",
                                             {u"nMese", Parameter(u"sLingua").otherwise(u"ING")})
            .method<&StdFunctions::kapApice>(u"kapApice", {u"sStringa"})
            .method<&StdFunctions::kapInviaEMail>(
                u"kapInviaEMail",
                {Parameter(u"sDestinatario").byReference(), Parameter(u"sOggetto").byReference(),
                 Parameter(u"sBody").otherwise(u"").byReference(),
                 Parameter(u"sBodyHtml").otherwise(u"").byReference(),
                 Parameter(u"sFileAllegato").otherwise(u"").byReference()})
            .method<&StdFunctions::Riga_Prog>(
                u"Riga_Prog",
                {u"Connessione", u"sSQL", Parameter(u"nPasso").otherwise(std::int16_t{1}),
                 Parameter(u"nInizio").otherwise(std::int16_t{1})})
            .method<&StdFunctions::TSToHex>(u"TSToHex", {Parameter(u"sBinRep").byReference()})
            .method<&StdFunctions::CalcVal>(
                u"CalcVal",
                {u"Connessione", Parameter(u"sValuta").byReference(),
                 Parameter(u"nPrezzo").byReference(), Parameter(u"nQta").byReference(),
                 Parameter(u"nSc1").otherwise(kNone), Parameter(u"nSc2").otherwise(kNone),
                 Parameter(u"nsc3").otherwise(kNone), Parameter(u"nScTestata").otherwise(kNone)})
            .method<&StdFunctions::Ripeti>(u"Ripeti", {Parameter(u"txtDA_Campo").byReference(),
                                                       Parameter(u"txtA_Campo").byReference()})
            .method<&StdFunctions::KapRound>(
                u"KapRound", {u"Numero", Parameter(u"Decimali").otherwise(kNone).byReference(),
                              Parameter(u"Arrotonda").otherwise(u"A").byReference()})
            .method<&StdFunctions::Progressivi>(u"Progressivi", numberParameters())
            .method<&StdFunctions::RicercaNumeriDocPre>(
                u"RicercaNumeriDocPre",
                {u"Connessione", Parameter(u"Progressivo").byReference(),
                 Parameter(u"Anno").byReference(), Parameter(u"DaNumero").byReference(),
                 Parameter(u"ANumero").byReference(),
                 Parameter(u"Ricerca").otherwise(u"T").byReference()})
            .method<&StdFunctions::kapControllaData>(
                u"kapControllaData", {u"Valore", Parameter(u"sFormat").otherwise(u"dd/mm/yyyy")})
            .method<&StdFunctions::DtoSQL>(u"DtoSQL", {u"Valore"})
            .method<&StdFunctions::kapGoTo>(u"kapGoTo",
                                            {u"rst", Parameter(u"Posizione").byReference()})
            .build();
    return description;
}

Ref<CErrore> StdFunctions::Errore() {
    if (!errore_) {
        errore_ = make<CErrore>();
    }
    return errore_;
}

Ref<ado::Recordset> StdFunctions::OpenRecordset(const String& sqlString, ByRef<Variant> connessione,
                                                ByRef<std::int16_t> cursorType,
                                                ByRef<std::int16_t> lockType,
                                                ByRef<std::int16_t> options, ByRef<bool> deleteNull,
                                                ByRef<bool> closeConnection,
                                                ByRef<std::int16_t> cursorLocation) {
    return db::OpenRecordset(sqlString, connessione, cursorType, lockType, options, deleteNull,
                             closeConnection, cursorLocation);
}

bool StdFunctions::DB_Read(ByRef<Variant> connessione, const String& sSQL,
                           ByRef<Variant> stringaProprieta) {
    return db::DB_Read(connessione, sSQL, stringaProprieta);
}

bool StdFunctions::DB_Update(ByRef<Variant> connessione, const String& sSQL,
                             const Variant& stringaProprieta) {
    return db::DB_Update(connessione, sSQL, stringaProprieta, *Errore());
}

bool StdFunctions::DB_Delete(ByRef<Variant> connessione, const String& sSQL,
                             ByRef<Variant> stringaProprieta) {
    return db::DB_Delete(connessione, sSQL, stringaProprieta, *Errore());
}

Variant StdFunctions::kapLeggiRecord(ByRef<Variant> connessione, const String& sStringaSQL,
                                     const String& sNomeCampi) {
    return Variant(db::kapLeggiRecord(connessione, sStringaSQL, sNomeCampi));
}

Variant StdFunctions::KapCFG(ByRef<Variant> connessione, const String& sPrefissoProgramma,
                             const String& sProcedura, const String& sApplicazione,
                             const String& sCampo) {
    return Variant(
        config::KapCFG(connessione, sPrefissoProgramma, sProcedura, sApplicazione, sCampo));
}

void StdFunctions::ControllaConnessione(ByRef<Variant> connessione) {
    db::ControllaConnessione(connessione);
}

bool StdFunctions::kapEmpty(const Variant& vValore) {
    return util::kapEmpty(vValore);
}

Variant StdFunctions::kapVal(const Variant& vValore, const String& sDataType) {
    return util::kapVal(vValore, sDataType);
}

String StdFunctions::kapApice(const Variant& sStringa) {
    return util::kapApice(sStringa);
}

Variant StdFunctions::Riga_Prog(ByRef<Variant> connessione, ByRef<String> sSQL,
                                ByRef<std::int16_t> nPasso, ByRef<std::int16_t> nInizio) {
    return db::Riga_Prog(connessione, sSQL, nPasso, nInizio);
}

String StdFunctions::TSToHex(const Variant& sBinRep) {
    return util::TSToHex(sBinRep);
}

Variant StdFunctions::Progressivi(const String& sTipoDoc, const String& cDefinitivoProvvisorio,
                                  const String& cLeggoScrivo, std::int16_t nAnno, double nNumero,
                                  ByRef<Variant> connessione, const String& sTipoProgressivo,
                                  const String& sAliasTabDoc, std::int16_t gestionePrenotati) {
    return numbering::Progressivi(sTipoDoc, cDefinitivoProvvisorio, cLeggoScrivo, nAnno, nNumero,
                                  connessione, sTipoProgressivo, sAliasTabDoc, gestionePrenotati,
                                  errore_);
}

Variant StdFunctions::Progressivi_OLD(const String& sTipoDoc, const String& cDefinitivoProvvisorio,
                                      const String& cLeggoScrivo, std::int16_t nAnno,
                                      double nNumero, ByRef<Variant> connessione,
                                      const String& sTipoProgressivo, const String& sAliasTabDoc,
                                      std::int16_t /*gestionePrenotati*/) {
    return numbering::Progressivi_OLD(sTipoDoc, cDefinitivoProvvisorio, cLeggoScrivo, nAnno,
                                      nNumero, connessione, sTipoProgressivo, sAliasTabDoc,
                                      errore_);
}

Variant StdFunctions::RicercaNumeriDocPre(ByRef<Variant> connessione, const String& progressivo,
                                          const String& anno, double daNumero, double aNumero,
                                          const String& ricerca) {
    return numbering::RicercaNumeriDocPre(connessione, progressivo, anno, daNumero, aNumero,
                                          ricerca);
}

Variant StdFunctions::ConvertiData(const String& sData, const String& sLingua) {
    return util::ConvertiData(sData, sLingua);
}

String StdFunctions::NomeMese(std::int16_t nMese, const String& sLingua) {
    return util::NomeMese(nMese, sLingua);
}

Variant StdFunctions::CalcVal(ByRef<Variant> connessione, const String& sValuta, double nPrezzo,
                              double nQta, ByRef<Variant> nSc1, ByRef<Variant> nSc2,
                              ByRef<Variant> nsc3, ByRef<Variant> nScTestata) {
    return util::CalcVal(connessione, sValuta, nPrezzo, nQta, nSc1, nSc2, nsc3, nScTestata);
}

Variant StdFunctions::KapRound(const Variant& numero, std::int16_t decimali,
                               const String& arrotonda) {
    return util::KapRound(numero, decimali, arrotonda);
}

String StdFunctions::kapControllaData(const Variant& valore, ByRef<String> sFormat) {
    return util::kapControllaData(valore, sFormat);
}

Variant StdFunctions::DtoSQL(const Variant& valore) {
    return util::DtoSQL(valore);
}

bool StdFunctions::kapGoTo(ByRef<Ref<Object>> rst, const Variant& posizione) {
    return db::kapGoTo(rst, posizione);
}

void StdFunctions::kapSendKeys(const String& keyString) {
    host::kapSendKeys(keyString);
}

Variant StdFunctions::AspettaDueSecondi() {
    host::AspettaDueSecondi();
    return {};
}

std::int16_t StdFunctions::TrovaTop(const Variant& frmPadre, std::int16_t nTop) {
    return host::TrovaTop(frmPadre, nTop);
}

void StdFunctions::PosizionaForm(const Variant& frmFiglio, const Variant& frmPadre,
                                 std::int16_t nTop) {
    host::PosizionaForm(frmFiglio, frmPadre, nTop);
}

void StdFunctions::WLog(const Variant& sLog_File, const Variant& sLog_Messaggio) {
    host::WLog(sLog_File, sLog_Messaggio);
}

String StdFunctions::kapNomeUtente() {
    return host::kapNomeUtente();
}

Variant StdFunctions::AttributiFile(const String& sNomeFile, const String& sAttributo) {
    return host::AttributiFile(sNomeFile, sAttributo);
}

void StdFunctions::Ripeti(const Variant& txtDA_Campo, const Variant& txtA_Campo) {
    host::Ripeti(txtDA_Campo, txtA_Campo);
}

void StdFunctions::kapInviaEMail(const String& sDestinatario, const String& sOggetto,
                                 const String& sBody, const String& sBodyHtml,
                                 const String& sFileAllegato) {
    host::kapInviaEMail(sDestinatario, sOggetto, sBody, sBodyHtml, sFileAllegato);
}

bool StdFunctions::EsportaTXT(ByRef<String> stringaSql, ByRef<Variant> connessione,
                              ByRef<String> sNomeTxt, ByRef<String> sPathTxt,
                              ByRef<bool> lRicreoSchemaIni) {
    return host::EsportaTXT(stringaSql, connessione, sNomeTxt, sPathTxt, lRicreoSchemaIni);
}

}  // namespace kap
