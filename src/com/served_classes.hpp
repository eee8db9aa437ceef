#pragma once

#include <span>

#include <kaputil/automation/class_description.hpp>

#include "com/type_libraries.hpp"

namespace kap::com {

// A class that clients create through the system's component model.
struct ServedClass {
    String programmaticName;  // "KapUtil.CProprieta"
    String classId;           // lower-case text without braces
    String summary;
    const ClassDescription* description = nullptr;
    const TypeLibrary* types = nullptr;  // the one that describes it
};

// The creatable classes of the type libraries: those that the library publishes, and beside them
// those of data access, so that scripts have the embedded database: KapLocal.Connection,
// KapLocal.Recordset, KapLocal.Command, KapLocal.Stream.
[[nodiscard]] std::span<const ServedClass> servedClasses();

}  // namespace kap::com
