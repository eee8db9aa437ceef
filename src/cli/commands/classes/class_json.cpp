#include "cli/commands/classes/class_json.hpp"

#include <span>
#include <vector>

#include "cli/commands/classes/member_text.hpp"
#include "cli/commands/classes/page_words.hpp"
#include "cli/output/value_text.hpp"

namespace kap::cli {
namespace {

using Json = nlohmann::ordered_json;

Json orNull(const std::string& text) {
    return text.empty() ? Json() : Json(text);
}

Json libraryJson() {
    const LibraryDescription& about = library();
    return {{"name", about.name.utf8()},
            {"description", about.description.utf8()},
            {"typeLibrary",
             {{"id", about.typeLibraryId.utf8()}, {"version", about.typeLibraryVersion.utf8()}}},
            {"module", about.moduleName.utf8()},
            {"fileVersion", about.fileVersion.utf8()},
            {"fileVersionText", about.fileVersionText.utf8()}};
}

// What is told of a class wherever it is named.
Json headOf(const ShownClass& shown, Language language) {
    return {{"name", shown.name},
            {"programmaticName", shown.programmaticName},
            {"classId", shown.classId},
            {"interface", {{"name", shown.interfaceName}, {"id", shown.interfaceId}}},
            {"instancing", instancingText(shown.instancing)},
            {"defaultMember", orNull(shown.defaultMember)},
            {"summary", summaryOf(*shown.members, language)}};
}

Json listed(const ShownClass& shown, Language language) {
    Json json = headOf(shown, language);
    json["members"] = shown.members->members.size();
    return json;
}

Json listed(const std::vector<ShownClass>& classes, Language language) {
    Json json = Json::array();
    for (const ShownClass& shown : classes) {
        json.push_back(listed(shown, language));
    }
    return json;
}

Json listed(std::span<const EnumerationDescription> enumerations) {
    Json json = Json::array();
    for (const EnumerationDescription& enumeration : enumerations) {
        json.push_back(enumerationJson(enumeration));
    }
    return json;
}

Json parameterJson(const ParameterDescription& parameter) {
    Json json = {{"name", parameter.name.utf8()},
                 {"type", typeName(parameter.type)},
                 {"passing", parameter.byReference ? "ByRef" : "ByVal"},
                 {"optional", parameter.defaultValue.has_value()}};
    if (parameter.defaultValue) {
        json["default"] = jsonValue(*parameter.defaultValue);
    }
    return json;
}

Json valuesJson(const std::vector<DocumentedValue>& values) {
    Json json = Json::array();
    for (const DocumentedValue& value : values) {
        json.push_back({{"value", value.value}, {"text", value.text}});
    }
    return json;
}

Json documentationJson(const Documentation* documentation) {
    if (documentation == nullptr) {
        return {};
    }
    Json parameters = Json::object();
    for (const DocumentedParameter& parameter : documentation->parameters) {
        parameters[parameter.name] = {{"text", parameter.text},
                                      {"values", valuesJson(parameter.values)}};
    }
    Json errors = Json::array();
    for (const DocumentedError& error : documentation->errors) {
        errors.push_back(
            {{"number", error.number ? Json(*error.number) : Json()}, {"text", error.text}});
    }
    return {{"paragraphs", documentation->paragraphs},
            {"parameters", std::move(parameters)},
            {"result", orNull(documentation->result)},
            {"values", valuesJson(documentation->values)},
            {"errors", std::move(errors)},
            {"example", orNull(documentation->example)}};
}

Json describe(const ShownClass& shown, const MemberDescription& member, Language language) {
    Json parameters = Json::array();
    for (const ParameterDescription& parameter : member.parameters) {
        parameters.push_back(parameterJson(parameter));
    }
    const bool property = member.kind == MemberKind::Property;
    const char* kind = member.kind == MemberKind::Method ? "method" : "field";
    return {
        {"name", member.name.utf8()},
        {"kind", property ? "property" : kind},
        {"access", accessOf(member)},
        {"dispatchId", member.dispatchId},
        {"default", member.dispatchId == kDefaultMember},
        {"parameters", std::move(parameters)},
        {"result", member.result == VarType::Empty ? Json() : Json(typeName(member.result))},
        {"summary", summaryOf(*shown.members, member, language)},
        {"documentation", documentationJson(documentationOf(*shown.members, member, language))}};
}

}  // namespace

Json catalogueJson(Language language) {
    return {{"library", libraryJson()},
            {"classes", listed(libraryClasses(), language)},
            {"enumerations", listed(publishedEnumerations())},
            {"platform", listed(platformClassList(), language)},
            {"objects", listed(objectClasses(), language)},
            {"dataAccessEnumerations", listed(dataAccessEnumerations())}};
}

Json classJson(const ShownClass& shown, Language language) {
    Json json = headOf(shown, language);
    const ClassDocumentation* documentation = documentationOf(*shown.members, language);
    json["documentation"] =
        documentationJson(documentation == nullptr ? nullptr : &documentation->itself);
    json["setup"] = orNull(documentation == nullptr ? std::string() : documentation->setup);
    json["members"] = Json::array();
    for (const MemberDescription& member : shown.members->members) {
        json["members"].push_back(describe(shown, member, language));
    }
    return json;
}

Json memberJson(const ShownClass& shown, const MemberDescription& member, Language language) {
    Json json = {{"class", shown.programmaticName}};
    json.update(describe(shown, member, language));
    return json;
}

Json enumerationJson(const EnumerationDescription& enumeration) {
    Json values = Json::array();
    for (const auto& value : enumeration.values) {
        values.push_back({{"name", value.name.utf8()},
                          {"value", value.value},
                          {"summary", value.summary.utf8()}});
    }
    return {{"name", enumeration.name.utf8()},
            {"summary", enumeration.summary.utf8()},
            {"values", std::move(values)}};
}

}  // namespace kap::cli
