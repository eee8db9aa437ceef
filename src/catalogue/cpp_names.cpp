#include "catalogue/cpp_names.hpp"

#include <algorithm>
#include <array>
#include <string>

#include <kaputil/ado/command.hpp>
#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/field.hpp>
#include <kaputil/ado/parameter.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/ado/stream.hpp>
#include <kaputil/automation/plain_text.hpp>
#include <kaputil/catalogue/catalogue.hpp>
#include <kaputil/catalogue/documentation.hpp>

namespace kap {
namespace {

struct NamedEnumeration {
    std::string_view owner;  // empty: of any class of data access
    std::string_view name;   // of the property or parameter
    std::string_view enumeration;
};

// What stands first goes before what stands behind it.
constexpr std::array kEnumerations = std::to_array<NamedEnumeration>({
    {"Stream", "Type", "StreamTypeEnum"},
    {"Stream.WriteText", "Options", "StreamWriteEnum"},
    {"Stream.SaveToFile", "Options", "SaveOptionsEnum"},
    {"Fields.Append", "Attributes", "FieldAttributeEnum"},
    {"Field", "Status", "FieldStatusEnum"},
    {"", "AffectRecords", "AffectEnum"},
    {"", "CommandType", "CommandTypeEnum"},
    {"", "CursorLocation", "CursorLocationEnum"},
    {"", "CursorOptions", "CursorOptionEnum"},
    {"", "CursorType", "CursorTypeEnum"},
    {"", "Direction", "ParameterDirectionEnum"},
    {"", "EditMode", "EditModeEnum"},
    {"", "IsolationLevel", "IsolationLevelEnum"},
    {"", "LineSeparator", "LineSeparatorEnum"},
    {"", "LockType", "LockTypeEnum"},
    {"", "MarshalOptions", "MarshalOptionsEnum"},
    {"", "Mode", "ConnectModeEnum"},
    {"", "PersistFormat", "PersistFormatEnum"},
    {"", "QueryType", "SchemaEnum"},
    {"", "ResyncValues", "ResyncEnum"},
    {"", "Schema", "SchemaEnum"},
    {"", "SearchDirection", "SearchDirectionEnum"},
    {"", "SeekOption", "SeekEnum"},
    {"", "State", "ObjectStateEnum"},
    {"", "StringFormat", "StringFormatEnum"},
    {"", "Type", "DataTypeEnum"},
});

bool isOfDataAccess(const ClassDescription& owner) {
    const std::array classes = {
        &ado::Command::classDescription(),   &ado::Connection::classDescription(),
        &ado::Field::classDescription(),     &ado::Fields::classDescription(),
        &ado::Parameter::classDescription(), &ado::Parameters::classDescription(),
        &ado::Recordset::classDescription(), &ado::Stream::classDescription()};
    return std::ranges::find(classes, &owner) != classes.end();
}

struct NeededHeader {
    std::string_view mention;
    std::string_view header;
};

constexpr std::array kHeaders = std::to_array<NeededHeader>({
    {"kap::ado::Command>", "kaputil/ado/command.hpp"},
    {"kap::ado::Connection>", "kaputil/ado/connection.hpp"},
    {"kap::ado::Parameter>", "kaputil/ado/parameter.hpp"},
    {"kap::ado::Recordset>", "kaputil/ado/recordset.hpp"},
    {"kap::ado::Stream>", "kaputil/ado/stream.hpp"},
    {"kap::Array::", "kaputil/automation/array.hpp"},
    {"kap::convert::", "kaputil/automation/convert.hpp"},
    {"kap::AutomationError", "kaputil/automation/error.hpp"},
    {"kap::late::", "kaputil/automation/late_bound.hpp"},
    {"kap::createObject", "kaputil/catalogue/create_object.hpp"},
    {"kap::StdFunctions>", "kaputil/catalogue/std_functions.hpp"},
    {"kap::CFG_Applicazione>", "kaputil/config/cfg_applicazione.hpp"},
    {"kap::CFG_Applicazioni>", "kaputil/config/cfg_applicazione.hpp"},
    {"kap::CFG_Applicazioni>", "kaputil/config/cfg_applicazioni.hpp"},
    {"->Campi()", "kaputil/config/cfg_campi.hpp"},
    {"kap::CFG_Campo>", "kaputil/config/cfg_campo.hpp"},
    {"->Campi()", "kaputil/config/cfg_campo.hpp"},
    {"->Moduli()", "kaputil/config/cfg_moduli.hpp"},
    {"->Moduli()", "kaputil/config/cfg_modulo.hpp"},
    {"->Procedure()", "kaputil/config/cfg_procedura.hpp"},
    {"->Procedure()", "kaputil/config/cfg_procedure.hpp"},
    {"kap::CFG_Stampa>", "kaputil/config/cfg_stampa.hpp"},
    {"kap::CConstant>", "kaputil/core/cconstant.hpp"},
    {"kap::CErrore>", "kaputil/core/cerrore.hpp"},
    {"kap::CProprieta>", "kaputil/core/cproprieta.hpp"},
    {"kap::IClassi>", "kaputil/core/iclassi.hpp"},
    {"kap::CEMail>", "kaputil/host/cemail.hpp"},
    {"kap::CFileINI>", "kaputil/host/cfile_ini.hpp"},
    {"kap::CRegistro>", "kaputil/host/cregistro.hpp"},
    {"kap::CSystem>", "kaputil/host/csystem.hpp"},
    {"kap::CSQL>", "kaputil/sqlscript/csql.hpp"},
    {"std::cout", "iostream"},
});

}  // namespace

CppClass cppClassNamed(std::string_view programmaticName) {
    const String wanted(programmaticName);
    for (const PublishedClass& published : publishedClasses()) {
        if (library().name + u"." + published.name == wanted) {
            return {"kap::" + published.name.utf8(), published.description};
        }
    }
    for (const PlatformClass& platform : platformClasses()) {
        if (platform.programmaticName == wanted && isOfDataAccess(*platform.description)) {
            return {"kap::ado::" + platform.description->name.utf8(), platform.description};
        }
    }
    return {};
}

// EOF is a macro of the standard library.
std::string cppMemberName(std::string_view member) {
    if (member == "EOF" || member == "BOF") {
        return member == "EOF" ? "Eof" : "Bof";
    }
    return std::string(member);
}

std::string_view cppEnumerationOf(const ClassDescription& owner, std::string_view member,
                                  std::string_view name) {
    if (!isOfDataAccess(owner)) {
        return {};
    }
    const std::string ofClass = owner.name.utf8();
    const std::string ofMember = ofClass + "." + std::string(member);
    const auto found = std::ranges::find_if(kEnumerations, [&](const NamedEnumeration& one) {
        return one.name == name &&
               (one.owner.empty() || one.owner == ofClass || one.owner == ofMember);
    });
    return found == kEnumerations.end() ? std::string_view() : found->enumeration;
}

std::string cppEnumerator(std::string_view enumeration, std::int32_t value) {
    const std::string qualified = "kap::ado::" + std::string(enumeration);
    for (const EnumerationDescription& one : dataAccessEnumerations()) {
        if (one.name != String(enumeration)) {
            continue;
        }
        const auto found =
            std::ranges::find(one.values, value, &EnumerationDescription::Value::value);
        if (found != one.values.end()) {
            return qualified + "::" + found->name.utf8();
        }
    }
    return "static_cast<" + qualified + ">(" + plain::text(value) + ")";
}

std::string cppHeaders(std::string_view code) {
    std::string lines;
    for (const NeededHeader& one : kHeaders) {
        const std::string line = "#include <" + std::string(one.header) + ">\n";
        if (code.find(one.mention) != std::string_view::npos &&
            lines.find(line) == std::string::npos) {
            lines += line;
        }
    }
    return lines;
}

}  // namespace kap
