#include "python/class_table.hpp"

#include <algorithm>
#include <span>
#include <unordered_map>
#include <vector>

#include <kaputil/catalogue/catalogue.hpp>
#include <kaputil/catalogue/documentation.hpp>
#include <kaputil/catalogue/std_functions.hpp>

#include "python/docstrings.hpp"
#include "python/member_function.hpp"
#include "python/package.hpp"
#include "python/values.hpp"

namespace kap::python {
namespace {

py::str textOf(std::string_view ascii) {
    return {ascii.data(), ascii.size()};
}

py::object nameOf(ClassReference reference) {
    return reference == nullptr ? py::object(py::none()) : toPython(reference().name);
}

py::dict describe(const ParameterDescription& parameter) {
    py::dict made;
    made["name"] = toPython(parameter.name);
    made["type"] = textOf(typeName(parameter.type));
    made["object_class"] = nameOf(parameter.objectClass);
    made["by_reference"] = parameter.byReference;
    made["optional"] = parameter.defaultValue.has_value();
    made["default"] = parameter.defaultValue ? toPython(*parameter.defaultValue) : py::none();
    return made;
}

py::dict describe(const ClassDescription& owner, const MemberDescription& member) {
    py::list parameters;
    for (const ParameterDescription& parameter : member.parameters) {
        parameters.append(describe(parameter));
    }
    const bool attribute = member.kind != MemberKind::Method && member.parameters.empty();
    py::dict made;
    made["name"] = toPython(member.name);
    made["attribute"] = attribute;
    made["function"] = memberFunction(owner, member, attribute ? MemberUse::Read : MemberUse::Call);
    made["call"] = member.dispatchId == kDefaultMember
                       ? memberFunction(owner, member, MemberUse::Call)
                       : py::object(py::none());
    made["assignable"] = member.let != nullptr || member.set != nullptr;
    made["default"] = member.dispatchId == kDefaultMember;
    made["parameters"] = parameters;
    made["type"] = textOf(typeName(member.result));
    made["object_class"] = nameOf(member.resultClass);
    made["documentation"] = docstringOf(owner, member, attribute);
    return made;
}

py::dict describe(const ClassDescription& description) {
    py::list members;
    for (const MemberDescription& member : description.members) {
        members.append(describe(description, member));
    }
    py::dict made;
    made["name"] = toPython(description.name);
    made["documentation"] = docstringOf(description);
    made["members"] = members;
    return made;
}

void addClass(std::vector<const ClassDescription*>& classes, const ClassDescription* description) {
    if (description != nullptr &&
        std::find(classes.begin(), classes.end(), description) == classes.end()) {
        classes.push_back(description);
    }
}

void addClass(std::vector<const ClassDescription*>& classes, ClassReference reference) {
    addClass(classes, reference == nullptr ? nullptr : &reference());
}

// The catalogue's classes, and behind them those of the objects that their members take and give.
std::vector<const ClassDescription*> findClasses() {
    std::vector<const ClassDescription*> classes;
    for (const PublishedClass& published : publishedClasses()) {
        addClass(classes, published.description);
    }
    for (const PlatformClass& platform : platformClasses()) {
        addClass(classes, platform.description);
    }
    for (std::size_t i = 0; i < classes.size(); ++i) {
        for (const MemberDescription& member : classes[i]->members) {
            addClass(classes, member.resultClass);
            for (const ParameterDescription& parameter : member.parameters) {
                addClass(classes, parameter.objectClass);
            }
        }
    }
    return classes;
}

const std::vector<const ClassDescription*>& knownClasses() {
    static const std::vector<const ClassDescription*> classes = findClasses();
    return classes;
}

py::list classDescriptions() {
    py::list made;
    for (const ClassDescription* description : knownClasses()) {
        made.append(describe(*description));
    }
    return made;
}

py::object classNamed(const py::str& name) {
    const String wanted = toText(name);
    for (const ClassDescription* description : knownClasses()) {
        if (description->name == wanted) {
            return classFor(*description);
        }
    }
    return py::none();
}

void addName(py::list& names, const String& programmaticName, const ClassDescription* description) {
    if (description != nullptr && description->create != nullptr &&
        description->instancing != Instancing::NotCreatable) {
        names.append(py::make_tuple(toPython(programmaticName), toPython(description->name)));
    }
}

py::list classNames() {
    py::list names;
    for (const ClassDescription* description : knownClasses()) {
        names.append(toPython(description->name));
    }
    return names;
}

void addNamedExample(py::list& made, const std::string& name, const std::string& script) {
    if (!script.empty()) {
        made.append(py::make_tuple(name, script));
    }
}

py::list examples() {
    py::list made;
    for (const ClassDescription* description : documentedClasses()) {
        const std::string name = description->name.utf8();
        addNamedExample(made, name, exampleOf(*description));
        for (const MemberDescription& member : description->members) {
            addNamedExample(made, name + "." + member.name.utf8(), exampleOf(*description, member));
        }
    }
    return made;
}

py::list programmaticNames() {
    py::list names;
    for (const PublishedClass& published : publishedClasses()) {
        addName(names, library().name + u"." + published.name, published.description);
    }
    for (const PlatformClass& platform : platformClasses()) {
        addName(names, platform.programmaticName, platform.description);
    }
    return names;
}

void addEnumerations(py::list& made, std::span<const EnumerationDescription> enumerations) {
    for (const EnumerationDescription& enumeration : enumerations) {
        py::list values;
        for (const EnumerationDescription::Value& one : enumeration.values) {
            values.append(py::make_tuple(toPython(one.name), one.value));
        }
        made.append(py::make_tuple(toPython(enumeration.name), values));
    }
}

py::list enumerations() {
    py::list made;
    addEnumerations(made, publishedEnumerations());
    addEnumerations(made, dataAccessEnumerations());
    return made;
}

}  // namespace

py::object classFor(const ClassDescription& description) {
    // Never destroyed: the interpreter is gone before this library is unloaded.
    static auto* const made = new std::unordered_map<const ClassDescription*, py::object>();
    const auto known = made->find(&description);
    if (known != made->end()) {
        return known->second;
    }
    py::object type = package().makeClass(describe(description));
    return made->emplace(&description, std::move(type)).first->second;
}

void bindClassTable(py::module_& module) {
    module.def("class_descriptions", &classDescriptions);
    module.def("class_names", &classNames);
    module.def("examples", &examples);
    module.def("class_named", &classNamed);
    module.def("programmatic_names", &programmaticNames);
    module.def("enumerations", &enumerations);
    module.def("global_class", [] { return describe(StdFunctions::classDescription()); });
}

}  // namespace kap::python
