#pragma once

#include <cstdint>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/by_ref.hpp>
#include <kaputil/automation/class_description.hpp>
#include <kaputil/base/export.hpp>
#include <kaputil/core/cerrore.hpp>
#include <kaputil/core/cproprieta.hpp>

namespace kap {

// The general functions of the library, as members of one object that keeps their outcome.
//
// Each member is described where its work is done: recordsets in <kaputil/db/recordsets.hpp>,
// records in <kaputil/db/records.hpp>, configuration in <kaputil/config/direct_lookup.hpp>,
// document numbers in <kaputil/numbering/document_numbers.hpp> and
// <kaputil/numbering/used_numbers.hpp>, values in <kaputil/util/values.hpp>, dates in
// <kaputil/util/dates.hpp>, amounts in <kaputil/util/amounts.hpp>, logs, keys and forms in
// <kaputil/host/services.hpp>, messages in <kaputil/host/cemail.hpp>, text files in
// <kaputil/host/text_export.hpp>.
//
//     auto f = kap::make<kap::StdFunctions>();
//     kap::Variant record;
//     f->DB_Read(connection, u"SELECT * FROM Clienti WHERE Codice = 12", record);
class KAPUTIL_EXPORT StdFunctions final : public DescribedObject {
public:
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    // What went wrong in the last member that reports here, of records and of numbers; made on
    // first use. Taking a number replaces it by another object.
    [[nodiscard]] Ref<CErrore> Errore();
    void setErrore(const Ref<CErrore>& value) { errore_ = value; }

    Ref<ado::Recordset> OpenRecordset(const String& sqlString, ByRef<Variant> connessione,
                                      ByRef<std::int16_t> cursorType = -1,
                                      ByRef<std::int16_t> lockType = -1,
                                      ByRef<std::int16_t> options = -1,
                                      ByRef<bool> deleteNull = true,
                                      ByRef<bool> closeConnection = true,
                                      ByRef<std::int16_t> cursorLocation = -1);
    bool DB_Read(ByRef<Variant> connessione, const String& sSQL, ByRef<Variant> stringaProprieta);
    bool DB_Update(ByRef<Variant> connessione, const String& sSQL, const Variant& stringaProprieta);
    bool DB_Delete(ByRef<Variant> connessione, const String& sSQL, ByRef<Variant> stringaProprieta);
    Variant kapLeggiRecord(ByRef<Variant> connessione, const String& sStringaSQL,
                           const String& sNomeCampi = u"°°°");
    Variant KapCFG(ByRef<Variant> connessione, const String& sPrefissoProgramma,
                   const String& sProcedura, const String& sApplicazione = u"°°°",
                   const String& sCampo = u"°°°");
    Variant Progressivi_OLD(const String& sTipoDoc, const String& cDefinitivoProvvisorio,
                            const String& cLeggoScrivo, std::int16_t nAnno, double nNumero,
                            ByRef<Variant> connessione, const String& sTipoProgressivo = u"°°°",
                            const String& sAliasTabDoc = u"vtx_TabDoc",
                            std::int16_t gestionePrenotati = 0);
    void ControllaConnessione(ByRef<Variant> connessione);
    bool kapEmpty(const Variant& vValore);
    Variant kapVal(const Variant& vValore, const String& sDataType = u"Double");
    String kapApice(const Variant& sStringa);
    Variant ConvertiData(const String& sData, const String& sLingua = u"ING");
    String NomeMese(std::int16_t nMese, const String& sLingua = u"ING");
    Variant Riga_Prog(ByRef<Variant> connessione, ByRef<String> sSQL,
                      ByRef<std::int16_t> nPasso = 1, ByRef<std::int16_t> nInizio = 1);
    String TSToHex(const Variant& sBinRep);
    Variant CalcVal(ByRef<Variant> connessione, const String& sValuta, double nPrezzo, double nQta,
                    ByRef<Variant> nSc1 = Variant(std::int16_t{0}),
                    ByRef<Variant> nSc2 = Variant(std::int16_t{0}),
                    ByRef<Variant> nsc3 = Variant(std::int16_t{0}),
                    ByRef<Variant> nScTestata = Variant(std::int16_t{0}));
    Variant KapRound(const Variant& numero, std::int16_t decimali = 0,
                     const String& arrotonda = u"A");
    Variant Progressivi(const String& sTipoDoc, const String& cDefinitivoProvvisorio,
                        const String& cLeggoScrivo, std::int16_t nAnno, double nNumero,
                        ByRef<Variant> connessione, const String& sTipoProgressivo = u"°°°",
                        const String& sAliasTabDoc = u"vtx_TabDoc",
                        std::int16_t gestionePrenotati = 0);
    Variant RicercaNumeriDocPre(ByRef<Variant> connessione, const String& progressivo,
                                const String& anno, double daNumero, double aNumero,
                                const String& ricerca = u"T");
    String kapControllaData(const Variant& valore, ByRef<String> sFormat = u"dd/mm/yyyy");
    Variant DtoSQL(const Variant& valore);
    bool kapGoTo(ByRef<Ref<Object>> rst, const Variant& posizione);
    void kapSendKeys(const String& keyString);
    Variant AspettaDueSecondi();
    std::int16_t TrovaTop(const Variant& frmPadre, std::int16_t nTop);
    void PosizionaForm(const Variant& frmFiglio, const Variant& frmPadre, std::int16_t nTop);
    void WLog(const Variant& sLog_File, const Variant& sLog_Messaggio);
    bool EsportaTXT(ByRef<String> stringaSql, ByRef<Variant> connessione, ByRef<String> sNomeTxt,
                    ByRef<String> sPathTxt, ByRef<bool> lRicreoSchemaIni = true);
    String kapNomeUtente();
    Variant AttributiFile(const String& sNomeFile, const String& sAttributo = u"MOD");
    void kapInviaEMail(const String& sDestinatario, const String& sOggetto,
                       const String& sBody = {}, const String& sBodyHtml = {},
                       const String& sFileAllegato = {});
    void Ripeti(const Variant& txtDA_Campo, const Variant& txtA_Campo);

private:
    Ref<CErrore> errore_;
};

}  // namespace kap
