// The extension module behind the package `kaputil`. It knows no class: everything it offers is
// read from the catalogue.
#include <pybind11/functional.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>
#include <pybind11/stl/filesystem.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include <kaputil/catalogue/catalogue.hpp>
#include <kaputil/catalogue/create_object.hpp>
#include <kaputil/catalogue/std_functions.hpp>
#include <kaputil/frame/convert.hpp>
#include <kaputil/frame/format.hpp>
#include <kaputil/frame/locale.hpp>
#include <kaputil/platform/message_box.hpp>

#include "python/proxy.hpp"
#include "python/python_object.hpp"
#include "python/values.hpp"

namespace kap::python {
namespace {

void translate(std::exception_ptr raised) {
    try {
        std::rethrow_exception(std::move(raised));
    } catch (const PythonError& error) {
        error.restore();
    } catch (const AutomationError& error) {
        const bool noMember = error.number() == errors::kMemberNotFound;
        const py::object& type =
            noMember ? packageTypes().memberNotFound : packageTypes().automationError;
        PyErr_SetObject(type.ptr(), py::make_tuple(error.number(), toPython(error.description()),
                                                   toPython(error.source()))
                                        .ptr());
    }
}

// The names that Python gave factories for: they are taken back before the interpreter ends.
std::set<std::u16string>& registeredNames() {
    static auto* const names = new std::set<std::u16string>();
    return *names;
}

void registerPython(const std::string& name, const py::object& factory) {
    // Dropped under the interpreter's lock, wherever the last copy of the factory goes.
    const std::shared_ptr<py::object> held(new py::object(factory), [](py::object* object) {
        const py::gil_scoped_acquire lock;
        delete object;
    });
    const String key(name);
    registerFactory(key, [held] {
        const py::gil_scoped_acquire lock;
        try {
            const Variant made = toVariant((*held)());
            return made.isObject() ? made.as<Ref<Object>>() : Ref<Object>();
        } catch (py::error_already_set& error) {
            throw PythonError(error);
        }
    });
    registeredNames().insert(key.units());
}

void unregisterPython(const std::string& name) {
    const String key(name);
    unregisterFactory(key);
    registeredNames().erase(key.units());
}

void unregisterAll() {
    for (const std::u16string& name : registeredNames()) {
        unregisterFactory(name);
    }
    registeredNames().clear();
}

py::object globalMember(const std::string& name) {
    return py::getattr(proxyOf(predeclared()), name.c_str());
}

py::list globalNames() {
    py::list names;
    for (const MemberDescription& member : StdFunctions::classDescription().members) {
        names.append(toPython(member.name));
    }
    return names;
}

ExactValue invokeExact(const py::object& target, const std::string& member, const py::args& rest,
                       const py::kwargs& named) {
    const auto object = objectBehind(target);
    if (!object) {
        throw py::type_error("invoke needs an automation object");
    }
    return {callMember(**object, String(member), InvokeKind::MethodOrGet, rest, named)};
}

}  // namespace

void bindModule(py::module_& module) {
    py::register_exception_translator(&translate);
    bindProxies(module);
    py::class_<ExactValue>(module, "Variant", "A value with its exact automation type.")
        .def(py::init([](const std::string& type, const py::object& value) {
                 return ExactValue{convert::changeType(toVariant(value), typeNamed(type))};
             }),
             py::arg("type_name"), py::arg("value") = py::none())
        .def_property_readonly(
            "type", [](const ExactValue& self) { return std::string(typeName(self.value.type())); })
        .def_property_readonly("value", [](const ExactValue& self) { return toPython(self.value); })
        .def("__repr__", [](const ExactValue& self) {
            return "kaputil.Variant(" + std::string(typeName(self.value.type())) + ", " +
                   py::repr(toPython(self.value)).cast<std::string>() + ")";
        });
    module.def("set_package_types",
               [](const py::object& automationError, const py::object& memberNotFound,
                  const py::object& empty, const py::object& nothing, const py::object& ref) {
                   setPackageTypes({automationError, memberNotFound, empty, nothing, ref});
               });
    module.def(
        "Dispatch",
        [](const std::string& name) { return toPython(Variant(createObject(String(name)))); },
        py::arg("name"), "A new object by its programmatic name, in any case.");
    module.def("invoke", &invokeExact,
               "Calls a member and gives its result as a Variant with .type and .value.");
    module.def(
        "change_type",
        [](const py::object& value, const std::string& type) {
            return toPython(convert::changeType(toVariant(value), typeNamed(type)));
        },
        py::arg("value"), py::arg("type_name"),
        "The value converted to a type under the current locale.");
    module.def(
        "is_numeric", [](const py::object& value) { return convert::isNumeric(toVariant(value)); },
        "Whether a value is a number or reads as one.");
    module.def(
        "is_date", [](const py::object& value) { return convert::isDate(toVariant(value)); },
        "Whether a value is a date or reads as one.");
    module.def(
        "format",
        [](const py::object& value, const py::str& pattern) {
            return toPython(convert::format(toVariant(value), toText(pattern)));
        },
        py::arg("value"), py::arg("fmt"), "The value written by a format.");
    module.def("register", &registerPython, py::arg("name"), py::arg("factory"),
               "Makes a function answer for a programmatic name.");
    module.def("unregister", &unregisterPython, py::arg("name"), "Takes the function back.");
    module.def("unregister_all", &unregisterAll);
    module.def(
        "set_locale", [](const std::string& name) { setLocale(name); }, py::arg("name"),
        "Sets this thread's locale (\"it-IT\", \"en-US\", ...).");
    module.def(
        "locale", [] { return std::string(currentLocale().name); }, "This thread's locale.");
    module.def(
        "message_log",
        [](const std::optional<std::filesystem::path>& path) { platform::setMessageLog(path); },
        py::arg("path"), "Logs message boxes to a file; None for the system log.");
    module.def("global_member", &globalMember);
    module.def("global_names", &globalNames);
}

}  // namespace kap::python

PYBIND11_MODULE(_native, module) {
    kap::python::bindModule(module);
}
