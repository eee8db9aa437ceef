#include "com/type_libraries.hpp"

#include <algorithm>
#include <iterator>

#include <kaputil/ado/command.hpp>
#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/error.hpp>
#include <kaputil/ado/field.hpp>
#include <kaputil/ado/parameter.hpp>
#include <kaputil/ado/property.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/ado/stream.hpp>
#include <kaputil/catalogue/documentation.hpp>

namespace kap::com {
namespace {

PublishedClass ofDataAccess(const ClassDescription& description, Instancing instancing) {
    const MemberDescription* member = description.find(kDefaultMember);
    return {description.name,
            description.classId,
            u"_" + description.name,
            description.interfaceId,
            instancing,
            member == nullptr ? String() : member->name,
            &description};
}

template <class Class>
PublishedClass created() {
    return ofDataAccess(Class::classDescription(), Instancing::Creatable);
}

// Other objects give it.
template <class Class>
PublishedClass given() {
    return ofDataAccess(Class::classDescription(), Instancing::NotCreatable);
}

template <class Element>
std::vector<Element> copied(std::span<const Element> elements) {
    return {elements.begin(), elements.end()};
}

std::vector<TypeLibrary> makeTypeLibraries() {
    const LibraryDescription& self = library();
    return {{self.name, self.description, self.typeLibraryId, self.typeLibraryVersion,
             self.moduleName, 1, copied(publishedClasses()), copied(publishedEnumerations())},
            {u"KapLocal",
             u"KAP Utility 2.6 Data Access",
             u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b01",
             u"1.0",
             u"KapLocal",
             2,
             {created<ado::Connection>(), created<ado::Recordset>(), created<ado::Command>(),
              given<ado::Parameter>(), given<ado::Parameters>(), given<ado::Field>(),
              given<ado::Fields>(), given<ado::Error>(), given<ado::Errors>(),
              created<ado::Stream>(), given<ado::Property>(), given<ado::Properties>()},
             copied(dataAccessEnumerations())}};
}

}  // namespace

String helpOf(const ClassDescription& description) {
    return String(summaryOf(description, DocumentationLanguage::Italian));
}

String helpOf(const ClassDescription& description, const MemberDescription& member) {
    return String(summaryOf(description, member, DocumentationLanguage::Italian));
}

std::span<const TypeLibrary> typeLibraries() {
    static const std::vector<TypeLibrary> libraries = makeTypeLibraries();
    return libraries;
}

const ClassDescription* eventsOf(const PublishedClass& one) {
    return one.description == nullptr || one.description->events == nullptr
               ? nullptr
               : &one.description->events();
}

const TypeLibrary* typeLibraryOf(const ClassDescription& description) {
    const auto describes = [&](const TypeLibrary& types) {
        return std::ranges::any_of(types.classes, [&](const PublishedClass& one) {
            return one.description == &description;
        });
    };
    const auto found = std::ranges::find_if(typeLibraries(), describes);
    return found == typeLibraries().end() ? nullptr : &*found;
}

}  // namespace kap::com
