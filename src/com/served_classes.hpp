#pragma once

#include <span>

#include <kaputil/frame/class_description.hpp>

namespace kap::com {

// A class that clients create through the system's component model.
struct ServedClass {
    String programmaticName;  // "KapUtil.CProprieta"
    String classId;           // lower-case text without braces
    String summary;
    const ClassDescription* description = nullptr;
    bool published = true;  // false: one beside those of the type library
};

// The creatable classes that the library publishes, and beside them those of data access, so that
// scripts have the embedded database: KapLocal.Connection, KapLocal.Recordset, KapLocal.Command.
[[nodiscard]] std::span<const ServedClass> servedClasses();

}  // namespace kap::com
