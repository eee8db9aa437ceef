#include <kaputil/catalogue/catalogue.hpp>

#include <kaputil/ado/command.hpp>
#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/parameter.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/ado/stream.hpp>
#include <kaputil/catalogue/std_functions.hpp>
#include <kaputil/catalogue/version.hpp>
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
#include <kaputil/host/cemail.hpp>
#include <kaputil/host/cfile_ini.hpp>
#include <kaputil/host/cregistro.hpp>
#include <kaputil/host/csystem.hpp>
#include <kaputil/sqlscript/csql.hpp>

namespace kap {
namespace {

PublishedClass published(const ClassDescription& description) {
    const MemberDescription* member = description.find(kDefaultMember);
    return {description.name,
            description.classId,
            u"_" + description.name,
            description.interfaceId,
            description.instancing,
            member == nullptr ? String() : member->name,
            &description};
}

std::vector<PublishedClass> makeClasses() {
    return {
        published(IClassi::classDescription()),
        published(CSystem::classDescription()),
        published(CRegistro::classDescription()),
        published(CFileINI::classDescription()),
        published(CErrore::classDescription()),
        published(CProprieta::classDescription()),
        published(CFG_Campi::classDescription()),
        published(CFG_Moduli::classDescription()),
        published(CFG_Modulo::classDescription()),
        published(CFG_Procedura::classDescription()),
        published(CFG_Procedure::classDescription()),
        published(CConstant::classDescription()),
        published(CFG_Campo::classDescription()),
        published(CFG_Applicazioni::classDescription()),
        published(CFG_Applicazione::classDescription()),
        published(CFG_Stampa::classDescription()),
        published(CEMail::classDescription()),
        published(CSQL::classDescription()),
        published(StdFunctions::classDescription()),
    };
}

}  // namespace

const LibraryDescription& library() {
    static const LibraryDescription description = {
        u"KapUtil",  u"KAP Utility 2.6", u"749c4a7f-4612-49ed-994a-2e3285c059ca",
        u"1.0",      u"KapUtil26",       KAPUTIL_VERSION,
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
    static const std::vector<PlatformClass> classes = [] {
        std::vector<PlatformClass> all = {
            {u"ADODB.Command", &ado::Command::classDescription()},
            {u"ADODB.Connection", &ado::Connection::classDescription()},
            {u"ADODB.Parameter", &ado::Parameter::classDescription()},
            {u"ADODB.Recordset", &ado::Recordset::classDescription()},
            {u"ADODB.Stream", &ado::Stream::classDescription()}};
        const auto host = platform::hostClasses();
        all.insert(all.end(), host.begin(), host.end());
        return all;
    }();
    return classes;
}

const Ref<StdFunctions>& predeclared() {
    thread_local const Ref<StdFunctions> instance = make<StdFunctions>();
    return instance;
}

}  // namespace kap
