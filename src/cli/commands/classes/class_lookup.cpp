#include "cli/commands/classes/class_lookup.hpp"

#include <algorithm>

#include <kaputil/catalogue/documentation.hpp>

#include "base/ascii.hpp"
#include "cli/names.hpp"

namespace kap::cli {
namespace {

std::vector<ShownClass> makeLibraryClasses() {
    const std::string prefix = library().name.utf8() + ".";
    std::vector<ShownClass> classes;
    for (const PublishedClass& published : publishedClasses()) {
        ShownClass shown;
        shown.name = published.name.utf8();
        shown.programmaticName = prefix + shown.name;
        shown.classId = published.classId.utf8();
        shown.interfaceName = published.interfaceName.utf8();
        shown.interfaceId = published.interfaceId.utf8();
        shown.instancing = published.instancing;
        shown.defaultMember = published.defaultMember.utf8();
        shown.members = published.description;
        classes.push_back(std::move(shown));
    }
    return classes;
}

std::string defaultMemberOf(const ClassDescription& description) {
    const MemberDescription* member = description.find(kDefaultMember);
    return member == nullptr ? std::string() : member->name.utf8();
}

ShownClass shownAs(const ClassDescription& description, const String& programmaticName) {
    ShownClass shown;
    shown.programmaticName = programmaticName.utf8();
    shown.name = description.name.utf8();
    shown.classId = description.classId.utf8();
    shown.interfaceName = "_" + shown.name;
    shown.interfaceId = description.interfaceId.utf8();
    shown.instancing = description.instancing;
    shown.defaultMember = defaultMemberOf(description);
    shown.members = &description;
    return shown;
}

std::vector<ShownClass> makePlatformClasses() {
    std::vector<ShownClass> classes;
    for (const auto& platform : kap::platformClasses()) {
        classes.push_back(shownAs(*platform.description, platform.programmaticName));
    }
    return classes;
}

bool isListed(const std::vector<ShownClass>& classes, const ClassDescription* description) {
    return std::ranges::find(classes, description, &ShownClass::members) != classes.end();
}

std::vector<ShownClass> makeObjectClasses() {
    std::vector<ShownClass> classes;
    for (const ClassDescription* description : documentedClasses()) {
        if (!isListed(libraryClasses(), description) &&
            !isListed(platformClassList(), description)) {
            classes.push_back(shownAs(*description, description->name));
        }
    }
    return classes;
}

// Classes of the platform are known by their whole name only.
const ShownClass* findIn(const std::vector<ShownClass>& classes, std::string_view name,
                         bool shortNames) {
    const auto found = std::ranges::find_if(classes, [&](const ShownClass& shown) {
        return equalsIgnoringCase(shown.programmaticName, name) ||
               (shortNames && equalsIgnoringCase(shown.name, name));
    });
    return found == classes.end() ? nullptr : &*found;
}

}  // namespace

const std::vector<ShownClass>& libraryClasses() {
    static const std::vector<ShownClass> classes = makeLibraryClasses();
    return classes;
}

const std::vector<ShownClass>& platformClassList() {
    static const std::vector<ShownClass> classes = makePlatformClasses();
    return classes;
}

const std::vector<ShownClass>& objectClasses() {
    static const std::vector<ShownClass> classes = makeObjectClasses();
    return classes;
}

const ShownClass* findClass(std::string_view name) {
    const ShownClass* found = findIn(libraryClasses(), name, /*shortNames=*/true);
    if (found == nullptr) {
        found = findIn(platformClassList(), name, /*shortNames=*/false);
    }
    return found != nullptr ? found : findIn(objectClasses(), name, /*shortNames=*/true);
}

const EnumerationDescription* findEnumeration(std::string_view name) {
    const std::string prefix = library().name.utf8() + ".";
    for (const auto enumerations : {publishedEnumerations(), dataAccessEnumerations()}) {
        for (const EnumerationDescription& enumeration : enumerations) {
            const std::string known = enumeration.name.utf8();
            if (equalsIgnoringCase(known, name) || equalsIgnoringCase(prefix + known, name)) {
                return &enumeration;
            }
        }
    }
    return nullptr;
}

const MemberDescription* findMember(const ShownClass& shown, std::string_view name) {
    return shown.members->find(String(name));
}

std::vector<std::string> classNames() {
    std::vector<std::string> names;
    for (const ShownClass& shown : libraryClasses()) {
        names.push_back(shown.name);
    }
    for (const ShownClass& shown : platformClassList()) {
        names.push_back(shown.programmaticName);
    }
    return names;
}

std::vector<std::string> enumerationNames() {
    std::vector<std::string> names;
    for (const auto enumerations : {publishedEnumerations(), dataAccessEnumerations()}) {
        for (const EnumerationDescription& enumeration : enumerations) {
            names.push_back(enumeration.name.utf8());
        }
    }
    return names;
}

std::vector<std::string> memberNames(const ShownClass& shown) {
    std::vector<std::string> names;
    for (const MemberDescription& member : shown.members->members) {
        names.push_back(member.name.utf8());
    }
    return names;
}

}  // namespace kap::cli
