#include "python/proxy.hpp"

#include <memory>
#include <string>
#include <utility>

#include <kaputil/automation/class_description.hpp>
#include <kaputil/automation/error.hpp>

#include "python/calls.hpp"
#include "python/class_table.hpp"
#include "python/instance.hpp"
#include "python/package.hpp"
#include "python/python_error.hpp"
#include "python/python_object.hpp"
#include "python/values.hpp"

namespace kap::python {
namespace {

// The type of the class `Object`, of which the package's classes are made.
PyTypeObject* proxyType = nullptr;

[[noreturn]] void raiseNoMember(const Object& object, const String& name) {
    throw AutomationError(errors::kMemberNotFound, object.className() + u" has no member " + name);
}

// A member of an object that no table describes: nobody knows of what kind it is, so it is called.
py::object undescribedMember(const py::object& self, const String& name) {
    return py::cpp_function(
        [self, name](const py::args& positional, const py::kwargs& named) {
            return toPython(callMember(*self.cast<const Proxy&>().object(), name,
                                       InvokeKind::MethodOrGet, positional, named));
        },
        py::name(name.utf8().c_str()));
}

py::object memberInAnotherCase(const py::object& self, const py::str& name) {
    const Ref<Object>& object = self.cast<const Proxy&>().object();
    const String wanted = toText(name);
    if (const ClassDescription* description = descriptionOf(*object)) {
        if (const MemberDescription* member = description->find(wanted)) {
            auto found = py::reinterpret_steal<py::object>(
                PyObject_GenericGetAttr(self.ptr(), toPython(member->name).ptr()));
            if (!found) {
                throw py::error_already_set();
            }
            return found;
        }
    } else if (object->memberId(wanted)) {
        return undescribedMember(self, wanted);
    }
    raiseNoMember(*object, wanted);
}

// The attributes of its class by their exact names; those are the described members. Other names
// are members written in another case. Not left to `__getattr__`, which Python would call after
// every AttributeError that a member raised.
PyObject* attributeOf(PyObject* self, PyObject* name) {
    if (_PyType_Lookup(Py_TYPE(self), name) != nullptr) {
        return PyObject_GenericGetAttr(self, name);
    }
    return answering([&] {
        return memberInAnotherCase(py::reinterpret_borrow<py::object>(self),
                                   py::reinterpret_borrow<py::str>(name));
    });
}

// To any object, Python's own among them, as the library assigns.
void assignIndexed(const py::object& target, const py::str& name, const py::tuple& indexes,
                   const py::object& value) {
    const Variant held = toVariant(target);
    const Ref<Object>& object = held.as<Ref<Object>>();
    const String member = toText(name);
    const bool decidesItself = dynamic_cast<const PythonObject*>(object.get()) != nullptr;
    if (!decidesItself && !object->memberId(member)) {
        raiseNoMember(*object, member);
    }
    assignMember(*object, member, indexes, value);
}

void assignTo(const py::object& target, const py::str& name, const py::object& value) {
    assignIndexed(target, name, py::tuple(), value);
}

// Every attribute that is assigned is a member.
int assignAttribute(PyObject* self, PyObject* name, PyObject* value) {
    if (value == nullptr) {
        return PyObject_GenericSetAttr(self, name, value);
    }
    PyObject* done = answering([&] {
        assignTo(py::reinterpret_borrow<py::object>(self), py::reinterpret_borrow<py::str>(name),
                 py::reinterpret_borrow<py::object>(value));
        return py::none();
    });
    Py_XDECREF(done);
    return done == nullptr ? -1 : 0;
}

void setAttributeAccess(PyHeapTypeObject* type) {
    type->ht_type.tp_getattro = &attributeOf;
    type->ht_type.tp_setattro = &assignAttribute;
}

// Of any object, Python's own among them, as the library enumerates it.
py::list elementsOf(const py::object& target) {
    const Variant object = toVariant(target);
    py::list values;
    for (const Variant& value : object.as<Ref<Object>>()->elements()) {
        values.append(toPython(value));
    }
    return values;
}

}  // namespace

Proxy::Proxy(Ref<Object> object)
    : object_(std::move(object)), description_(descriptionOf(*object_)) {}

// Made in its class at once: to be given another class later costs more than all the rest.
py::object proxyOf(const Ref<Object>& object) {
    auto held = std::make_unique<Proxy>(object);
    const py::object type =
        held->description() == nullptr ? package().object : classFor(*held->description());
    return instanceOf(reinterpret_cast<PyTypeObject*>(type.ptr()), std::move(held));
}

const Proxy* proxyBehind(const py::handle& value) {
    if (PyObject_TypeCheck(value.ptr(), proxyType) == 0) {
        return nullptr;
    }
    auto* const held = reinterpret_cast<py::detail::instance*>(value.ptr());
    return held->get_value_and_holder().value_ptr<Proxy>();
}

std::optional<Ref<Object>> objectBehind(const py::handle& value) {
    const Proxy* proxy = proxyBehind(value);
    return proxy == nullptr ? std::nullopt : std::optional(proxy->object());
}

void bindProxies(py::module_& module) {
    // With an attribute dictionary, which stays empty: without one the classes made from it in
    // Python are laid out otherwise, and a proxy could not become one of theirs.
    py::class_<Proxy> type(module, "Object", py::dynamic_attr(),
                           py::custom_type_setup(&setAttributeAccess));
    proxyType = reinterpret_cast<PyTypeObject*>(type.ptr());
    type.def("__repr__",
             [](const Proxy& self) {
                 return "<kaputil " + self.identity()->className().utf8() + ">";
             })
        .def("__eq__",
             [](const Proxy& self, const py::object& other) {
                 return py::isinstance<Proxy>(other) &&
                        self.identity() == other.cast<const Proxy&>().identity();
             })
        .def("__hash__",
             [](const Proxy& self) { return reinterpret_cast<std::uintptr_t>(self.identity()); });
    module.def("call", [](const Proxy& self, const py::str& name, const py::tuple& positional,
                          const py::dict& named) {
        return toPython(
            callMember(*self.object(), toText(name), InvokeKind::MethodOrGet, positional, named));
    });
    module.def("call_default",
               [](const Proxy& self, const py::tuple& positional, const py::dict& named) {
                   return toPython(callDefault(*self.object(), positional, named));
               });
    module.def("get", [](const Proxy& self, const py::str& name) {
        return toPython(
            callMember(*self.object(), toText(name), InvokeKind::Get, py::tuple(), py::dict()));
    });
    module.def("assign", &assignTo);
    module.def("assign_indexed", &assignIndexed);
    module.def("assign_default",
               [](const Proxy& self, const py::tuple& indexes, const py::handle& value) {
                   assignDefault(*self.object(), indexes, value);
               });
    module.def("elements", &elementsOf);
}

}  // namespace kap::python
