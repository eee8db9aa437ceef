#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <kaputil/automation/class_description.hpp>
#include <kaputil/catalogue/catalogue.hpp>

// Finding in the catalogue what a user names.
namespace kap::cli {

// A class that can be shown or made, whichever list of the catalogue it comes from.
struct ShownClass {
    std::string name;              // "CProprieta"
    std::string programmaticName;  // "KapUtil.CProprieta"
    std::string classId;
    std::string interfaceName;
    std::string interfaceId;
    Instancing instancing = Instancing::Creatable;
    std::string defaultMember;  // empty: none
    const ClassDescription* members = nullptr;
};

// Every class of the library in the order of its table, and those of the platform.
[[nodiscard]] const std::vector<ShownClass>& libraryClasses();
[[nodiscard]] const std::vector<ShownClass>& platformClassList();
// Those of the objects that members of these take and give, and the interfaces of events.
[[nodiscard]] const std::vector<ShownClass>& objectClasses();

// A class by its name, with or without its library's in front, or null; an enumeration. Case does
// not matter.
[[nodiscard]] const ShownClass* findClass(std::string_view name);
[[nodiscard]] const EnumerationDescription* findEnumeration(std::string_view name);

// A member of a class, or null. Case does not matter.
[[nodiscard]] const MemberDescription* findMember(const ShownClass& shown, std::string_view name);

// The names of all classes, library and platform; of the enumerations; of a class's members.
[[nodiscard]] std::vector<std::string> classNames();
[[nodiscard]] std::vector<std::string> enumerationNames();
[[nodiscard]] std::vector<std::string> memberNames(const ShownClass& shown);

}  // namespace kap::cli
