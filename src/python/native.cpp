// The extension module behind the package `kaputil`. It knows no class: everything it offers is
// read from the catalogue. What programs see of it is documented in the package's own Python code.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>
#include <pybind11/stl/filesystem.h>

#include <filesystem>
#include <optional>
#include <string>

#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/automation/format.hpp>
#include <kaputil/automation/locale.hpp>
#include <kaputil/catalogue/catalogue.hpp>
#include <kaputil/catalogue/create_object.hpp>
#include <kaputil/catalogue/std_functions.hpp>
#include <kaputil/platform/message_box.hpp>

#include "python/calls.hpp"
#include "python/class_table.hpp"
#include "python/events.hpp"
#include "python/exact_value.hpp"
#include "python/factories.hpp"
#include "python/member_function.hpp"
#include "python/number_registers.hpp"
#include "python/package.hpp"
#include "python/proxy.hpp"
#include "python/python_error.hpp"
#include "python/values.hpp"

namespace kap::python {
namespace {

void translate(std::exception_ptr raised) {
    try {
        std::rethrow_exception(std::move(raised));
    } catch (const AutomationError&) {
        raiseInPython();
    }
}

// A member of any object, Python's own among them, called as the library calls it.
py::object invokeExact(const py::object& target, const py::str& member, const py::tuple& positional,
                       const py::dict& named) {
    const Variant value = toVariant(target);
    if (!value.isObject()) {
        throw py::type_error("a member belongs to an object");
    }
    const Ref<Object>& object = value.as<Ref<Object>>();
    if (!object) {
        throw AutomationError(errors::kObjectNotSet);
    }
    return exactObject(
        callMember(*object, toText(member), InvokeKind::MethodOrGet, positional, named));
}

void bindValues(py::module_& module) {
    module.def("change_type", [](const py::object& value, const std::string& type) {
        return toPython(ExactValue(type, value).value());
    });
    module.def("is_numeric",
               [](const py::object& value) { return convert::isNumeric(toVariant(value)); });
    module.def("is_date",
               [](const py::object& value) { return convert::isDate(toVariant(value)); });
    module.def("format", [](const py::object& value, const py::str& pattern) {
        return toPython(convert::format(toVariant(value), toText(pattern)));
    });
}

void bindSettings(py::module_& module) {
    module.def("set_locale", [](const std::string& name) { setLocale(name); });
    module.def("locale", [] { return std::string(currentLocale().name); });
    module.def("message_log", [](const std::optional<std::filesystem::path>& path) {
        platform::setMessageLog(path);
    });
}

}  // namespace

void bindModule(py::module_& module) {
    py::options options;
    options.disable_function_signatures();  // the package documents what it offers
    py::register_exception_translator(&translate);
    module.def("set_package", [](const py::kwargs& given) { setPackage(given); });
    bindProxies(module);
    bindMemberFunctions(module);
    bindExactValue(module);
    bindClassTable(module);
    bindFactories(module);
    bindEvents(module);
    module.def("version", [] { return toPython(library().fileVersion); });
    module.def("create", [](const py::str& programmaticName) {
        return toPython(Variant(createObject(toText(programmaticName))));
    });
    module.def("predeclared", [] { return proxyOf(predeclared()); });
    module.def("invoke", &invokeExact);
    bindValues(module);
    bindSettings(module);
    bindNumberRegisters(module);
}

}  // namespace kap::python

PYBIND11_MODULE(_native, module) {
    kap::python::bindModule(module);
}
