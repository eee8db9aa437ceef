#include "python/factories.hpp"

#include <memory>
#include <set>
#include <string>

#include <kaputil/automation/error.hpp>
#include <kaputil/catalogue/create_object.hpp>

#include "python/python_error.hpp"
#include "python/values.hpp"

namespace kap::python {
namespace {

// The names that Python gave factories for.
std::set<std::u16string>& registeredNames() {
    static auto* const names = new std::set<std::u16string>();
    return *names;
}

// None stands for an unset object here.
Ref<Object> requireObject(const Variant& made) {
    if (made.isNull()) {
        return {};
    }
    if (!made.isObject()) {
        throw AutomationError(errors::kTypeMismatch);
    }
    return made.as<Ref<Object>>();
}

void registerPython(const py::str& name, const py::object& factory) {
    if (PyCallable_Check(factory.ptr()) == 0) {
        throw py::type_error("a factory is a function without arguments");
    }
    // Dropped under the interpreter's lock, wherever the last copy of the factory goes.
    const std::shared_ptr<py::object> held(new py::object(factory), [](py::object* object) {
        const py::gil_scoped_acquire lock;
        delete object;
    });
    const String key = toText(name);
    registerFactory(
        key, [held] { return inPython([&] { return requireObject(toVariant((*held)())); }); });
    registeredNames().insert(key.units());
}

void unregisterPython(const py::str& name) {
    const String key = toText(name);
    unregisterFactory(key);
    registeredNames().erase(key.units());
}

void unregisterAll() {
    for (const std::u16string& name : registeredNames()) {
        unregisterFactory(name);
    }
    registeredNames().clear();
}

}  // namespace

void bindFactories(py::module_& module) {
    module.def("register", &registerPython);
    module.def("unregister", &unregisterPython);
    module.def("unregister_all", &unregisterAll);
}

}  // namespace kap::python
