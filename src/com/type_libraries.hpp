#pragma once

#include <span>
#include <vector>

#include <kaputil/catalogue/catalogue.hpp>

namespace kap::com {

// One of the type libraries that the module carries, each as a resource of its own.
struct TypeLibrary {
    String name;         // "KapUtil"
    String description;  // for people
    String identity;     // lower-case text without braces
    String version;
    String fileName;  // without ending
    int resource = 1;
    std::vector<PublishedClass> classes;
    std::vector<EnumerationDescription> enumerations;
};

// That of the published classes, and behind it that of data access, KapLocal. They know nothing of
// each other: a member of one that gives an object of the other gives any object.
[[nodiscard]] std::span<const TypeLibrary> typeLibraries();

// What object browsers and the registry say of a class or a member: the first sentence of its
// documentation, in Italian, as everything else that users of programs see.
[[nodiscard]] String helpOf(const ClassDescription& description);
[[nodiscard]] String helpOf(const ClassDescription& description, const MemberDescription& member);

// The interface of a class's events; null when it raises none.
[[nodiscard]] const ClassDescription* eventsOf(const PublishedClass& one);

// The library that describes a class; null when none does.
[[nodiscard]] const TypeLibrary* typeLibraryOf(const ClassDescription& description);

}  // namespace kap::com
