#include <kaputil/catalogue/catalogue.hpp>

#include <kaputil/ado/command.hpp>
#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/parameter.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/catalogue/std_functions.hpp>
#include <kaputil/config/cfg_applicazione.hpp>
#include <kaputil/config/cfg_applicazioni.hpp>
#include <kaputil/config/cfg_campo.hpp>
#include <kaputil/config/cfg_modulo.hpp>
#include <kaputil/config/cfg_procedura.hpp>
#include <kaputil/config/cfg_stampa.hpp>
#include <kaputil/core/cconstant.hpp>
#include <kaputil/core/cerrore.hpp>
#include <kaputil/core/cproprieta.hpp>
#include <kaputil/core/iclassi.hpp>
#include <kaputil/sqlscript/csql.hpp>

namespace kap {
namespace {

// A class whose module describes it.
PublishedClass written(const ClassDescription& description) {
    const MemberDescription* member = description.find(kDefaultMember);
    return {description.name,        description.classId,
            u"_" + description.name, description.interfaceId,
            description.instancing,  member == nullptr ? String() : member->name,
            description.summary,     &description};
}

// A class whose module is still to come; only its place and its identities are fixed.
PublishedClass announced(const char16_t* name, const char16_t* classId, const char16_t* interfaceId,
                         const char16_t* summary, const char16_t* defaultMember = u"") {
    return {
        name,    classId, u"_" + String(name), interfaceId, Instancing::Creatable, defaultMember,
        summary, nullptr};
}

std::vector<PublishedClass> makeClasses() {
    return {
        written(IClassi::classDescription()),
        announced(u"CSystem", u"71c6409f-464e-4b9b-9829-a930eabaef1c",
                  u"a2c17a63-37ab-4d29-9e05-faee796d2a41", u"The host's system folder."),
        announced(u"CRegistro", u"1312d785-c222-48a5-808f-95b7d63f149b",
                  u"9f2fdde1-9264-4fd3-ad53-59409a82c19e", u"Values of the registry."),
        announced(u"CFileINI", u"6d508732-1be6-4a1b-b796-8fe52569b49e",
                  u"3f65d614-9991-4046-97ea-fd7a2eac2c21", u"Values of profile files."),
        written(CErrore::classDescription()),
        written(CProprieta::classDescription()),
        written(CFG_Campi::classDescription()),
        written(CFG_Moduli::classDescription()),
        written(CFG_Modulo::classDescription()),
        written(CFG_Procedura::classDescription()),
        written(CFG_Procedure::classDescription()),
        written(CConstant::classDescription()),
        written(CFG_Campo::classDescription()),
        written(CFG_Applicazioni::classDescription()),
        written(CFG_Applicazione::classDescription()),
        written(CFG_Stampa::classDescription()),
        announced(u"CEMail", u"6ad333e0-4535-4a1f-9d0c-6075308b5714",
                  u"dfb00056-0c60-4a29-a43a-4f09fee6c732", u"Contacts of the mail client."),
        written(CSQL::classDescription()),
        written(StdFunctions::classDescription()),
    };
}

}  // namespace

const LibraryDescription& library() {
    static const LibraryDescription description = {
        u"KapUtil",  u"KAP Utility 2.6", u"749c4a7f-4612-49ed-994a-2e3285c059ca",
        u"1.0",      u"KapUtil26",       u"2.6.0.5",
        u"2.06.0005"};
    return description;
}

std::span<const PublishedClass> publishedClasses() {
    static const std::vector<PublishedClass> classes = makeClasses();
    return classes;
}

std::span<const EnumerationDescription> publishedEnumerations() {
    static const std::vector<EnumerationDescription> enumerations = {
        {u"CostantiNumeriche",
         u"The numbers that the library and its clients share.",
         {{u"kaOK", kaOK, u"success"},
          {u"kaerror", kaerror, u"failure"},
          {u"kaCodiceFiscale", kaCodiceFiscale, u"kind of code: Italian personal tax code"},
          {u"kaPartitaIva", kaPartitaIva, u"kind of code: Italian VAT number"},
          {u"kaHBordo", kaHBordo, u"height of a window border, in twips"},
          {u"kaHBarra", kaHBarra, u"height of a title or tool bar, in twips"}}}};
    return enumerations;
}

std::span<const PlatformClass> platformClasses() {
    static const std::vector<PlatformClass> classes = {
        {u"ADODB.Command", &ado::Command::classDescription()},
        {u"ADODB.Connection", &ado::Connection::classDescription()},
        {u"ADODB.Parameter", &ado::Parameter::classDescription()},
        {u"ADODB.Recordset", &ado::Recordset::classDescription()}};
    return classes;
}

const Ref<StdFunctions>& predeclared() {
    thread_local const Ref<StdFunctions> instance = make<StdFunctions>();
    return instance;
}

}  // namespace kap
