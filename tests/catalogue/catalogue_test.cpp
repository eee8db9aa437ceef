#include <kaputil/catalogue/catalogue.hpp>

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/automation/locale.hpp>
#include <kaputil/catalogue/create_object.hpp>
#include <kaputil/catalogue/std_functions.hpp>
#include <kaputil/config/cfg_applicazione.hpp>
#include <kaputil/config/cfg_campo.hpp>
#include <kaputil/config/cfg_modulo.hpp>
#include <kaputil/config/cfg_procedura.hpp>
#include <kaputil/config/cfg_stampa.hpp>
#include <kaputil/core/cconstant.hpp>
#include <kaputil/core/iclassi.hpp>
#include <kaputil/host/cemail.hpp>
#include <kaputil/host/cfile_ini.hpp>
#include <kaputil/host/cregistro.hpp>
#include <kaputil/host/csystem.hpp>
#include <kaputil/sqlscript/csql.hpp>

#include "support/build_folders.hpp"
#include "support/late_bound.hpp"
#include "support/shown.hpp"

namespace kap {
namespace {

using test::call;
using test::raisedBy;

std::string instancingName(Instancing instancing) {
    switch (instancing) {
        case Instancing::Creatable:
            return "creatable";
        case Instancing::Global:
            return "global";
        case Instancing::NotCreatable:
            break;
    }
    return "not creatable";
}

// "Name classId interfaceId instancing defaultMember".
std::string line(const PublishedClass& published) {
    return (published.name + u" " + published.classId + u" " + published.interfaceName + u" " +
            published.interfaceId)
               .utf8() +
           " " + instancingName(published.instancing) + " " + published.defaultMember.utf8();
}

TEST(Catalogue, PublishesEveryClassWithItsIdentitiesInTheirOrder) {
    const std::vector<std::string> expected = {
        "IClassi 736ffbea-1819-44c2-b5a7-6ec1539a1fec _IClassi "
        "961feff4-57e1-4aba-9225-10c1227daf97 creatable ",
        "CSystem 71c6409f-464e-4b9b-9829-a930eabaef1c _CSystem "
        "a2c17a63-37ab-4d29-9e05-faee796d2a41 creatable ",
        "CRegistro 1312d785-c222-48a5-808f-95b7d63f149b _CRegistro "
        "9f2fdde1-9264-4fd3-ad53-59409a82c19e creatable ",
        "CFileINI 6d508732-1be6-4a1b-b796-8fe52569b49e _CFileINI "
        "3f65d614-9991-4046-97ea-fd7a2eac2c21 creatable ",
        "CErrore feb2ec34-3b6a-45b8-90c5-87f442d1898e _CErrore "
        "fb6ea86a-741a-4273-9191-c3873d6b8657 creatable ",
        "CProprieta 80368bd9-a134-4db3-b976-3eff993d4529 _CProprieta "
        "47799a54-02c1-4447-9acc-eb0cc14f0d34 creatable ",
        "CFG_Campi e20b2bad-f777-4633-ab8e-5e9b00307ad2 _CFG_Campi "
        "d83a0c09-6a68-435b-9557-f8485cc61f84 creatable Item",
        "CFG_Moduli c3381f15-199b-4b0b-8249-307c7495cbfd _CFG_Moduli "
        "1f519c02-76a0-438d-86e9-075d9d3384aa creatable Item",
        "CFG_Modulo 9c372610-0bee-45bf-b14d-921dea05c6f2 _CFG_Modulo "
        "bf7b3016-c968-4b36-afc2-9407aa5cf7ca creatable Campi",
        "CFG_Procedura da5fdcb9-22b5-40a9-868e-c536c872ce49 _CFG_Procedura "
        "f9899346-9239-442d-bec8-9975c40c39f4 creatable Moduli",
        "CFG_Procedure 1078f8da-19d3-4206-8eab-6a543fa334b1 _CFG_Procedure "
        "496399e7-9b32-488b-be65-dca3df5610dd creatable Item",
        "CConstant 9136269b-1192-4caf-ab2a-0b55b4cfdba3 _CConstant "
        "b1ca7f4e-f8d9-4c85-bee2-07900c2efd48 not creatable ",
        "CFG_Campo a4169f44-3a5d-48b9-b45d-da6731b9f27a _CFG_Campo "
        "9cf3faee-d251-4c33-8601-1139e8470dce creatable ",
        "CFG_Applicazioni a1493e40-ee46-4833-8ef1-58e3b80d0cef _CFG_Applicazioni "
        "cee9d7b3-31a7-492b-8740-f94992332c8a creatable Item",
        "CFG_Applicazione 0a766aae-60de-4642-bc23-1824483c3a3a _CFG_Applicazione "
        "e698acc0-57a2-4c8a-916b-907e57f58f76 creatable Procedure",
        "CFG_Stampa 751365ef-c473-43b7-8dc1-8e404c5fb3a2 _CFG_Stampa "
        "1286c8fd-6205-4973-a472-388401bca382 creatable ",
        "CEMail 6ad333e0-4535-4a1f-9d0c-6075308b5714 _CEMail "
        "dfb00056-0c60-4a29-a43a-4f09fee6c732 creatable ",
        "CSQL 4ac5a4f4-d431-4aa4-8211-93d6a4754c2f _CSQL "
        "913252bc-c034-4f8e-8135-2bef7b1c2cf5 creatable ",
        "StdFunctions ebe940f4-1cec-417c-9ee1-7425c4fae5fc _StdFunctions "
        "fca6683b-acb8-41e7-8f8f-351624e536e7 global ",
    };
    std::vector<std::string> published;
    for (const PublishedClass& one : publishedClasses()) {
        published.push_back(line(one));
    }
    EXPECT_EQ(published, expected);
}

TEST(Catalogue, TellsWhatTheLibraryIs) {
    EXPECT_EQ(library().name, u"KapUtil");
    EXPECT_EQ(library().description, u"KAP Utility 2.6");
    EXPECT_EQ(library().typeLibraryId, u"749c4a7f-4612-49ed-994a-2e3285c059ca");
    EXPECT_EQ(library().typeLibraryVersion, u"1.0");
    EXPECT_EQ(library().moduleName, u"KapUtil26");
    EXPECT_EQ(library().fileVersion, u"2.6.0.5");
    EXPECT_EQ(library().fileVersionText, u"2.06.0005");
}

TEST(Catalogue, PublishesTheSharedNumbers) {
    std::string values;
    for (const EnumerationDescription& enumeration : publishedEnumerations()) {
        values += enumeration.name.utf8() + ":";
        for (const auto& value : enumeration.values) {
            values += " " + value.name.utf8() + "=" + std::to_string(value.value);
        }
    }
    EXPECT_EQ(values,
              "CostantiNumeriche: kaOK=0 kaerror=1 kaCodiceFiscale=2 kaPartitaIva=3 kaHBordo=60 "
              "kaHBarra=270");
    EXPECT_EQ(kaHBarra, 270);
}

// What the C++ header declares, as "name=value name=value".
std::string declaredEnumerators() {
    std::ifstream header(std::string(test::kSourceFolder) +
                         "/include/kaputil/data/enumerations.hpp");
    const std::string text(std::istreambuf_iterator<char>(header), {});
    static const std::regex kEnumerator(R"(\b(ad\w+) = (-?\w+),)");
    std::string found;
    for (std::sregex_iterator one(text.begin(), text.end(), kEnumerator), end; one != end; ++one) {
        found +=
            (*one)[1].str() + "=" + std::to_string(std::stol((*one)[2].str(), nullptr, 0)) + " ";
    }
    return found;
}

TEST(Catalogue, PublishesEveryConstantOfDataAccess) {
    std::string values;
    for (const EnumerationDescription& enumeration : dataAccessEnumerations()) {
        EXPECT_FALSE(enumeration.summary.empty()) << enumeration.name.utf8();
        for (const auto& value : enumeration.values) {
            values += value.name.utf8() + "=" + std::to_string(value.value) + " ";
        }
    }
    EXPECT_EQ(values, declaredEnumerators());
    EXPECT_NE(values.find("adUseClient=3 "), std::string::npos);
}

// Every member of a class with its identifier, kind, parameters and defaults.
std::string signatureOf(const MemberDescription& member) {
    std::array<char, 16> id{};
    std::snprintf(id.data(), id.size(), "%08x ", static_cast<unsigned>(member.dispatchId));
    std::string text = id.data() + member.name.utf8();
    if (member.kind != MemberKind::Method) {
        text += " [get" + std::string(member.let != nullptr ? ", let" : "") +
                (member.set != nullptr ? ", set]" : "]");
    }
    for (const ParameterDescription& parameter : member.parameters) {
        text += std::string(parameter.byReference ? " ref " : " val ") + parameter.name.utf8() +
                ":" + std::string(typeName(parameter.type));
        if (parameter.defaultValue) {
            const LocaleScope plain("en-US");
            text += "=" + convert::toString(*parameter.defaultValue).utf8();
        }
    }
    return text +
           (member.result == VarType::Empty ? "" : " -> " + std::string(typeName(member.result)));
}

std::vector<std::string> signaturesOf(const ClassDescription& description) {
    std::vector<std::string> signatures;
    for (const MemberDescription& member : description.members) {
        signatures.push_back(signatureOf(member));
    }
    return signatures;
}

TEST(Catalogue, KeepsTheMembersOfTheGlobalClassInTheirPlaces) {
    const std::vector<std::string> expected = {
        "68030000 Errore [get, set] -> Object",
        "60030000 kapSendKeys ref KeyString:String",
        "60030001 AspettaDueSecondi -> Variant",
        "60030002 OpenRecordset ref SQLString:String ref Connessione:Variant "
        "ref CursorType:Integer=-1 ref LockType:Integer=-1 ref Options:Integer=-1 "
        "ref DeleteNull:Boolean=True ref CloseConnection:Boolean=True "
        "ref CursorLocation:Integer=-1 -> Object",
        "60030003 DB_Read ref Connessione:Variant ref sSQL:String ref StringaProprieta:Variant "
        "-> Boolean",
        "60030004 DB_Update ref Connessione:Variant ref sSQL:String val StringaProprieta:Variant "
        "-> Boolean",
        "60030005 DB_Delete ref Connessione:Variant ref sSQL:String ref StringaProprieta:Variant "
        "-> Boolean",
        "60030006 kapLeggiRecord ref Connessione:Variant ref sStringaSQL:String "
        "ref sNomeCampi:String=°°° -> Variant",
        "60030007 TrovaTop ref frmPadre:Variant ref nTop:Integer -> Integer",
        "60030008 PosizionaForm ref frmFiglio:Variant ref frmPadre:Variant ref nTop:Integer",
        "60030009 KapCFG ref Connessione:Variant ref sPrefissoProgramma:String "
        "ref sProcedura:String ref sApplicazione:String=°°° ref sCampo:String=°°° -> Variant",
        "6003000a Progressivi_OLD ref sTipoDoc:String ref cDefinitivoProvvisorio:String "
        "ref CLeggoScrivo:String ref nAnno:Integer ref nNumero:Double ref Connessione:Variant "
        "ref sTipoProgressivo:String=°°° ref sAliasTabDoc:String=vtx_TabDoc "
        "val GestionePrenotati:Integer=0 -> Variant",
        "6003000b WLog ref sLog_File:Variant ref sLog_Messaggio:Variant",
        "6003000c EsportaTXT ref stringaSql:String ref Connessione:Variant ref sNomeTxt:String "
        "ref sPathTxt:String ref lRicreoSchemaIni:Boolean=True -> Boolean",
        "6003000d ControllaConnessione ref Connessione:Variant",
        "6003000e kapNomeUtente -> String",
        "6003000f AttributiFile ref sNomeFile:String ref sAttributo:String=MOD -> Variant",
        "60030010 kapEmpty val vValore:Variant -> Boolean",
        "60030011 kapVal val vValore:Variant ref sDataType:String=Double -> Variant",
        "60030012 ConvertiData val sData:String val sLingua:String=ING -> Variant",
        "60030013 NomeMese val nMese:Integer val sLingua:String=ING -> String",
        "60030014 kapApice val sStringa:Variant -> String",
        "60030015 kapInviaEMail ref sDestinatario:String ref sOggetto:String ref sBody:String= "
        "ref sBodyHtml:String= ref sFileAllegato:String=",
        "60030016 Riga_Prog ref Connessione:Variant ref sSQL:String ref nPasso:Integer=1 "
        "ref nInizio:Integer=1 -> Variant",
        "60030017 TSToHex ref sBinRep:Variant -> String",
        "60030018 CalcVal ref Connessione:Variant ref sValuta:String ref nPrezzo:Double "
        "ref nQta:Double ref nSc1:Variant=0 ref nSc2:Variant=0 ref nsc3:Variant=0 "
        "ref nScTestata:Variant=0 -> Variant",
        "60030019 Ripeti ref txtDA_Campo:Variant ref txtA_Campo:Variant",
        "6003001a KapRound val Numero:Variant ref Decimali:Integer=0 ref Arrotonda:String=A "
        "-> Variant",
        "6003001b Progressivi ref sTipoDoc:String ref cDefinitivoProvvisorio:String "
        "ref CLeggoScrivo:String ref nAnno:Integer ref nNumero:Double ref Connessione:Variant "
        "ref sTipoProgressivo:String=°°° ref sAliasTabDoc:String=vtx_TabDoc "
        "val GestionePrenotati:Integer=0 -> Variant",
        "6003001c RicercaNumeriDocPre ref Connessione:Variant ref Progressivo:String "
        "ref Anno:String ref DaNumero:Double ref ANumero:Double ref Ricerca:String=T -> Variant",
        "6003001d kapControllaData val Valore:Variant ref sFormat:String=dd/mm/yyyy -> String",
        "6003001e DtoSQL val Valore:Variant -> Variant",
        "6003001f kapGoTo ref rst:Object ref Posizione:Variant -> Boolean",
    };
    EXPECT_EQ(signaturesOf(StdFunctions::classDescription()), expected);
}

TEST(Catalogue, KeepsTheMembersOfTheOtherClassesInTheirPlaces) {
    const std::vector<std::string> properties = {
        "60030000 Elimina ref sNomeProprieta:String",
        "60030001 Leggi ref sNomeProprieta:Variant=DEFAULT -> Variant",
        "60030002 Scrivi ref sNomeProprieta:String ref sValore:Variant",
        "60030003 Count -> Integer", "60030004 NomeProprieta ref PosizioneCampo:Integer -> String"};
    const std::vector<std::string> error = {
        "68030000 Numero [get, let] -> Variant",
        "60030000 AddMessaggio ref Messaggio:Variant",
        "60030001 Clear",
        "60030002 MsgToArray -> Variant",
        "60030003 MsgToString -> Variant",
        "60030004 ToString -> Variant",
        "60030005 Init ref Stringa:String",
        "60030006 LeggiAttributo ref NomeAttributo:String -> Variant",
        "60030007 ScriviAttributo ref NomeAttributo:String ref Valore:String"};
    const std::vector<std::string> contract = {
        "68030000 Errore [get] -> Object",
        "68030001 Proprieta [get, let] -> Variant",
        "60030000 Read ref Connessione:Variant -> Variant",
        "60030001 Update ref Connessione:Variant -> Variant",
        "60030002 Delete ref Connessione:Variant -> Variant",
        "60030003 PgUpDown ref sTasto:String ref Connessione:Variant -> Variant",
        "60030004 XCP val CampoAttivo:String val Parametri:String ref Connessione:Variant "
        "-> Variant"};
    EXPECT_EQ(signaturesOf(CProprieta::classDescription()), properties);
    EXPECT_EQ(signaturesOf(CErrore::classDescription()), error);
    EXPECT_EQ(signaturesOf(IClassi::classDescription()), contract);
    EXPECT_TRUE(CConstant::classDescription().members.empty());
}

TEST(Catalogue, KeepsTheMembersOfTheConfigurationInTheirPlaces) {
    const std::vector<std::string> root = {"40030000 Gruppo [get, let] -> String",
                                           "68030000 NomeTabella [get, let] -> String",
                                           "68030001 ActiveConnection [get, set] -> Object",
                                           "68030002 Path [get] -> String",
                                           "60030000 Add val Item:Variant -> Object",
                                           "60030001 Delete val Nome:String",
                                           "00000000 Item [get] val Nome:String -> Object",
                                           "68030004 Collezione [get] -> Object",
                                           "68030005 Count [get] -> Integer",
                                           "60030002 CaricaCfgPersonalizzati"};
    const std::vector<std::string> inner = {
        "68030000 Parent [get, set] -> Object", "60030000 Add val Nome:String -> Object",
        "60030001 Delete val Nome:String",      "00000000 Item [get] val Nome:String -> Object",
        "68030002 Collezione [get] -> Object",  "68030003 Count [get] -> Integer"};
    const std::vector<std::string> application = {
        "40030000 Nome [get, let] -> String", "00000000 Procedure [get, set] -> Object",
        "68030000 Parent [get, set] -> Object", "68030001 Path [get] -> String"};
    const std::vector<std::string> procedure = {
        "40030000 Nome [get, let] -> String", "00000000 Moduli [get, set] -> Object",
        "68030000 NomeMenu [get, let] -> String", "68030001 Parent [get, set] -> Object",
        "68030002 Path [get] -> String"};
    const std::vector<std::string> module = {
        "40030000 Nome [get, let] -> String", "00000000 Campi [get, set] -> Object",
        "68030000 Parent [get, set] -> Object", "68030001 Path [get] -> String"};
    EXPECT_EQ(signaturesOf(CFG_Applicazioni::classDescription()), root);
    EXPECT_EQ(signaturesOf(CFG_Procedure::classDescription()), inner);
    EXPECT_EQ(signaturesOf(CFG_Moduli::classDescription()), inner);
    EXPECT_EQ(signaturesOf(CFG_Campi::classDescription()), inner);
    EXPECT_EQ(signaturesOf(CFG_Applicazione::classDescription()), application);
    EXPECT_EQ(signaturesOf(CFG_Procedura::classDescription()), procedure);
    EXPECT_EQ(signaturesOf(CFG_Modulo::classDescription()), module);
}

TEST(Catalogue, KeepsTheMembersOfConfigurationFieldsAndPrintsInTheirPlaces) {
    const std::vector<std::string> field = {"68030000 Parent [get, set] -> Object",
                                            "68030001 Obbligatorio [get, let] -> Boolean",
                                            "68030002 Nome [get, let] -> String",
                                            "68030003 Gruppo [get, let] -> String",
                                            "68030004 ValoreDefault [get, let] -> String",
                                            "68030005 Valore [get, let] -> String",
                                            "68030006 FlagDefault [get, let] -> String",
                                            "68030007 Flag [get, let] -> String",
                                            "68030008 Note [get, let] -> String",
                                            "68030009 ValoriConsentiti [get, let] -> String",
                                            "6803000a FlagConsentiti [get, let] -> String",
                                            "6803000b Personalizzato [get] -> Boolean",
                                            "60030000 Update",
                                            "60030001 ResetDefault val ResetTabella:Boolean",
                                            "6803000c Path [get] -> String"};
    const std::vector<std::string> print = {
        "60030000 InitDefault ref vNewValue:Object",   "60030001 Init ref vNewValue:Object",
        "68030000 CFGCampo [get, set] -> Object",      "68030001 Nome [get] -> String",
        "68030002 AddRunTime [get] -> Boolean",        "68030003 Titolo [get, let] -> String",
        "68030004 Flag [get, let] -> String",          "68030005 EMail [get, let] -> String",
        "68030006 EsportaReport [get, let] -> String", "68030007 InElenco [get, let] -> Boolean",
        "68030008 Sigla [get, let] -> String",         "68030009 CodiceBreve [get, let] -> String",
        "6803000a ClasseEsterna [get, let] -> String", "6803000b Stampante [get, let] -> String",
        "6803000c Layout [get, let] -> String",        "6803000d Vidsta [get, let] -> String",
        "6803000e Copie [get, let] -> String",         "6803000f OrigineCarta [get, let] -> String",
        "68030010 Note [get, let] -> String"};
    EXPECT_EQ(signaturesOf(CFG_Campo::classDescription()), field);
    EXPECT_EQ(signaturesOf(CFG_Stampa::classDescription()), print);
}

TEST(Catalogue, KeepsTheMembersOfTheHostClassesInTheirPlaces) {
    const std::vector<std::string> registry = {
        "68030000 IClassi_Errore [get] -> Object", "68030001 NomeValore [get, let] -> Variant",
        "68030002 Chiave [get, let] -> Variant",
        "60030000 Leggi val sWhere:String ref sNomeValore:String= ref sChiave:String= -> Variant",
        "60030001 Scrivi val sWhere:String ref sValoreDaImpostare:String ref sTipo:String "
        "ref sNomeValore:String= ref sChiave:String= -> Variant"};
    const std::vector<std::string> profile = {
        "60030000 ReadIni val ApplicationName:String val KeyName:String val FileINI:String "
        "-> String",
        "60030001 WriteIni val ApplicationName:String val KeyName:String val Value:String "
        "val FileINI:String -> Integer",
        "60030002 NomeFileINI ref sPath:String= ref sNomeApplicazione:String=Vertex -> Variant"};
    const std::vector<std::string> mail = {
        "68030000 IClassi_Errore [get] -> Object",
        "68030001 EMail [get, let] -> Variant",
        "68030002 Nome [get, let] -> Variant",
        "68030003 Cognome [get, let] -> Variant",
        "68030004 RagioneSociale [get, let] -> Variant",
        "68030005 Indirizzo [get, let] -> Variant",
        "68030006 Telefono [get, let] -> Variant",
        "68030007 CodAna [get, let] -> Variant",
        "68030008 VisualizzaCome [get, let] -> Variant",
        "68030009 Chiave [get, let] -> Variant",
        "60030000 Update ref sFolderName:String=°°° -> Variant",
        "60030001 Delete ref sFolderName:String=°°° -> Variant",
        "60030002 Count ref sFolderName:String=°°° -> Variant",
        "60030003 InviaMail ref sDestinatario:String ref sOggetto:String ref sBody:String= "
        "ref sBodyHtml:String= ref sAllegato:String="};
    const std::vector<std::string> system = {"60030000 WindowsDirectory -> String"};
    EXPECT_EQ(signaturesOf(CRegistro::classDescription()), registry);
    EXPECT_EQ(signaturesOf(CFileINI::classDescription()), profile);
    EXPECT_EQ(signaturesOf(CEMail::classDescription()), mail);
    EXPECT_EQ(signaturesOf(CSystem::classDescription()), system);
}

TEST(Catalogue, KeepsTheMembersOfScriptsInTheirPlaces) {
    const std::vector<std::string> script = {
        "40030000 Parametri [get, set] -> Object",
        "40030001 SQLString [get, let] -> String",
        "40030002 Errore [get, set] -> Object",
        "68030000 ConnectionString [get, let] -> String",
        "68030001 ActiveConnection [get, set] -> Object",
        "68030002 SQL_Execute [get] -> String",
        "60030000 Execute -> Boolean",
        "60030001 Command val CommandText:String val MessaggioErrore:String= -> String",
        "60030002 AddTmp -> String",
        "60030003 Clear"};
    EXPECT_EQ(signaturesOf(CSQL::classDescription()), script);
}

TEST(Predeclared, AnswersLikeAnInstanceThatIsCreated) {
    const auto created = createObject(u"KapUtil.StdFunctions");
    EXPECT_EQ(test::shown(call(*predeclared(), u"KapRound", {2.675, 2})),
              test::shown(call(*created, u"KapRound", {2.675, 2})));
    EXPECT_EQ(predeclared(), predeclared());
}

TEST(Predeclared, LooksUpAConfigurationByName) {
    const auto answer = call(*predeclared(), u"KapCFG", {Variant(), u"ABC", u""});
    EXPECT_EQ(test::shown(call(*answer.as<Ref<Object>>(), u"Leggi")), "String <FLAG>0</FLAG>");
}

TEST(Predeclared, IsAnotherOneInEveryThread) {
    const Object* other = nullptr;
    std::thread([&] { other = predeclared().get(); }).join();
    EXPECT_NE(other, predeclared().get());
}

TEST(IClassiContract, DoesNothingByItself) {
    const auto object = createObject(u"KapUtil.IClassi");
    EXPECT_FALSE(call(*object, u"Errore").as<Ref<Object>>());
    test::invoke(*object, u"Proprieta", InvokeKind::Let, {u"<A>1</A>"});
    EXPECT_TRUE(call(*object, u"Proprieta").isEmpty());
    for (const char16_t* member : {u"Read", u"Update", u"Delete"}) {
        EXPECT_TRUE(call(*object, member, {u"connessione"}).isEmpty()) << String(member).utf8();
    }
    EXPECT_TRUE(call(*object, u"PgUpDown", {u"{PGDN}", Variant()}).isEmpty());
    EXPECT_TRUE(call(*object, u"XCP", {u"Codice", u"", Variant()}).isEmpty());
}

// A program's own business class.
class Customer final : public IClassi {
public:
    Variant Proprieta() override { return name_; }
    void setProprieta(const Variant& value) override { name_ = value; }
    Variant PgUpDown(ByRef<String> sTasto, ByRef<Variant> /*connessione*/) override {
        *sTasto = u"FATTO";
        return true;
    }

private:
    Variant name_ = u"Rossi";
};

TEST(IClassiContract, IsImplementedByOverridingItsMembers) {
    const Ref<Object> customer = make<Customer>();
    test::invoke(*customer, u"proprieta", InvokeKind::Let, {u"Bianchi"});
    EXPECT_EQ(test::shown(call(*customer, u"Proprieta")), "String Bianchi");
    std::vector<Variant> arguments = {u"{PGDN}", Variant()};
    EXPECT_TRUE(
        customer->invoke(u"PgUpDown", InvokeKind::Method, Arguments{arguments, {}}).as<bool>());
    EXPECT_EQ(test::shown(arguments[0]), "String FATTO");
    EXPECT_TRUE(call(*customer, u"Read", {Variant()}).isEmpty());
}

TEST(CreateObject, RefusesClassesThatClientsCannotMake) {
    EXPECT_EQ(raisedBy([] { return createObject(u"KapUtil.CConstant"); }),
              errors::kCannotCreateObject);
}

TEST(CreateObject, PrefersTheClientsFactory) {
    const auto mail = make<Customer>();
    registerFactory(u"Outlook.Application", [mail] { return Ref<Object>(mail); });
    registerFactory(u"kaputil.CERRORE", [mail] { return Ref<Object>(mail); });
    EXPECT_EQ(createObject(u"OUTLOOK.application"), Ref<Object>(mail));
    EXPECT_EQ(createObject(u"KapUtil.CErrore"), Ref<Object>(mail));
    unregisterFactory(u"KAPUTIL.CErrore");
    unregisterFactory(u"outlook.application");
    unregisterFactory(u"outlook.application");
    EXPECT_EQ(createObject(u"KapUtil.CErrore")->className(), u"CErrore");
    EXPECT_EQ(createObject(u"Outlook.Application")->className(), u"Application");
}

TEST(CreateObject, RefusesFactoriesWithoutNameOrFunction) {
    EXPECT_EQ(raisedBy([] {
                  registerFactory(u"", [] { return Ref<Object>(); });
                  return 0;
              }),
              errors::kInvalidArgument);
    EXPECT_EQ(raisedBy([] {
                  registerFactory(u"A.B", {});
                  return 0;
              }),
              errors::kInvalidArgument);
}

}  // namespace
}  // namespace kap
