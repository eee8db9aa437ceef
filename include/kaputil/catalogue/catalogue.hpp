#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include <kaputil/automation/class_description.hpp>
#include <kaputil/base/export.hpp>
#include <kaputil/platform/creatable_objects.hpp>

// What the library publishes: its classes with their identities, its enumerations, and what its
// type library says of itself. Everything that lists classes reads it here.
namespace kap {

class StdFunctions;

// The library as a whole.
struct LibraryDescription {
    String name;         // in front of programmatic names: "KapUtil.CProprieta"
    String description;  // "KAP Utility 2.6"
    String typeLibraryId;
    String typeLibraryVersion;
    String moduleName;
    String fileVersion;      // "2.6.0.5"
    String fileVersionText;  // "2.06.0005"
};
[[nodiscard]] KAPUTIL_EXPORT const LibraryDescription& library();

// One public class. Identities are lower-case texts without braces.
struct PublishedClass {
    String name;
    String classId;
    String interfaceName;  // of its only interface: the class's name behind an underscore
    String interfaceId;
    Instancing instancing = Instancing::Creatable;
    String defaultMember;  // empty: none
    const ClassDescription* description = nullptr;
};
// Every class, in the order of the type library.
[[nodiscard]] KAPUTIL_EXPORT std::span<const PublishedClass> publishedClasses();

struct EnumerationDescription {
    struct Value {
        String name;
        std::int32_t value = 0;
        String summary;
    };
    String name;
    String summary;
    std::vector<Value> values;
};
[[nodiscard]] KAPUTIL_EXPORT std::span<const EnumerationDescription> publishedEnumerations();
// Those of data access beside them (adUseClient, ...), whose C++ names are in
// <kaputil/data/enumerations.hpp>.
[[nodiscard]] KAPUTIL_EXPORT std::span<const EnumerationDescription> dataAccessEnumerations();

// The classes of the platform that can be created by name beside the library's own: those of data
// access and those of the host.
[[nodiscard]] KAPUTIL_EXPORT std::span<const PlatformClass> platformClasses();

// The instance behind the global members, which are called without naming an object. Each thread
// has its own, made when it is first asked for.
[[nodiscard]] KAPUTIL_EXPORT const Ref<StdFunctions>& predeclared();

}  // namespace kap
