#include <kaputil/catalogue/catalogue.hpp>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/catalogue/std_functions.hpp>
#include <kaputil/core/cconstant.hpp>
#include <kaputil/core/cerrore.hpp>
#include <kaputil/core/cproprieta.hpp>
#include <kaputil/core/iclassi.hpp>
#include <kaputil/host/cemail.hpp>
#include <kaputil/host/cfile_ini.hpp>
#include <kaputil/host/cregistro.hpp>
#include <kaputil/host/csystem.hpp>

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
        written(CSystem::classDescription()),
        written(CRegistro::classDescription()),
        written(CFileINI::classDescription()),
        written(CErrore::classDescription()),
        written(CProprieta::classDescription()),
        announced(u"CFG_Campi", u"e20b2bad-f777-4633-ab8e-5e9b00307ad2",
                  u"d83a0c09-6a68-435b-9557-f8485cc61f84", u"The fields of a configuration module.",
                  u"Item"),
        announced(u"CFG_Moduli", u"c3381f15-199b-4b0b-8249-307c7495cbfd",
                  u"1f519c02-76a0-438d-86e9-075d9d3384aa",
                  u"The modules of a configuration procedure.", u"Item"),
        announced(u"CFG_Modulo", u"9c372610-0bee-45bf-b14d-921dea05c6f2",
                  u"bf7b3016-c968-4b36-afc2-9407aa5cf7ca", u"A configuration module.", u"Campi"),
        announced(u"CFG_Procedura", u"da5fdcb9-22b5-40a9-868e-c536c872ce49",
                  u"f9899346-9239-442d-bec8-9975c40c39f4", u"A configuration procedure.",
                  u"Moduli"),
        announced(u"CFG_Procedure", u"1078f8da-19d3-4206-8eab-6a543fa334b1",
                  u"496399e7-9b32-488b-be65-dca3df5610dd",
                  u"The procedures of a configured application.", u"Item"),
        written(CConstant::classDescription()),
        announced(u"CFG_Campo", u"a4169f44-3a5d-48b9-b45d-da6731b9f27a",
                  u"9cf3faee-d251-4c33-8601-1139e8470dce", u"A configuration field."),
        announced(u"CFG_Applicazioni", u"a1493e40-ee46-4833-8ef1-58e3b80d0cef",
                  u"cee9d7b3-31a7-492b-8740-f94992332c8a", u"The applications of a configuration.",
                  u"Item"),
        announced(u"CFG_Applicazione", u"0a766aae-60de-4642-bc23-1824483c3a3a",
                  u"e698acc0-57a2-4c8a-916b-907e57f58f76", u"A configured application.",
                  u"Procedure"),
        announced(u"CFG_Stampa", u"751365ef-c473-43b7-8dc1-8e404c5fb3a2",
                  u"1286c8fd-6205-4973-a472-388401bca382", u"The configuration of a print."),
        written(CEMail::classDescription()),
        announced(u"CSQL", u"4ac5a4f4-d431-4aa4-8211-93d6a4754c2f",
                  u"913252bc-c034-4f8e-8135-2bef7b1c2cf5",
                  u"Builds and runs transactional scripts."),
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
    static const std::vector<PlatformClass> classes = [] {
        std::vector<PlatformClass> all = {
            {u"ADODB.Connection", &ado::Connection::classDescription()},
            {u"ADODB.Recordset", &ado::Recordset::classDescription()}};
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
