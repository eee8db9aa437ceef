#include "python/proxy.hpp"

#include <string>
#include <utility>

#include <kaputil/automation/class_description.hpp>
#include <kaputil/automation/error.hpp>

#include "python/calls.hpp"
#include "python/class_table.hpp"
#include "python/owner_thread.hpp"
#include "python/package.hpp"
#include "python/python_object.hpp"
#include "python/values.hpp"

namespace kap::python {
namespace {

class Proxy {
public:
    explicit Proxy(Ref<Object> object) : object_(std::move(object)) {}

    // For a call; raises RuntimeError on another thread than its own.
    [[nodiscard]] const Ref<Object>& object() const {
        owner_.require(*object_);
        return object_;
    }
    [[nodiscard]] const Object* identity() const { return object_.get(); }

private:
    Ref<Object> object_;
    OwnerThread owner_;
};

[[noreturn]] void raiseNoMember(const Object& object, const String& name) {
    throw AutomationError(errors::kMemberNotFound, object.className() + u" has no member " + name);
}

py::object genericAttribute(const py::object& self, const py::str& name) {
    auto found = py::reinterpret_steal<py::object>(PyObject_GenericGetAttr(self.ptr(), name.ptr()));
    if (!found) {
        throw py::error_already_set();
    }
    return found;
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

// The attributes of its class by their exact names; those are the described members. Other names
// are members written in another case. Not left to `__getattr__`, which Python would call after
// every AttributeError that a member raised.
py::object attributeOf(const py::object& self, const py::str& name) {
    if (_PyType_Lookup(Py_TYPE(self.ptr()), name.ptr()) != nullptr) {
        return genericAttribute(self, name);
    }
    const Ref<Object>& object = self.cast<const Proxy&>().object();
    const String wanted = toText(name);
    if (const ClassDescription* description = descriptionOf(*object)) {
        if (const MemberDescription* member = description->find(wanted)) {
            return genericAttribute(self, toPython(member->name));
        }
    } else if (object->memberId(wanted)) {
        return undescribedMember(self, wanted);
    }
    raiseNoMember(*object, wanted);
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

py::object proxyOf(const Ref<Object>& object) {
    py::object proxy = py::cast(Proxy(object));
    const ClassDescription* description = descriptionOf(*object);
    const py::object type = description == nullptr ? package().object : classFor(*description);
    // Not by assignment, which is one to a member.
    if (PyObject_GenericSetAttr(proxy.ptr(), py::str("__class__").ptr(), type.ptr()) != 0) {
        throw py::error_already_set();
    }
    return proxy;
}

std::optional<Ref<Object>> objectBehind(const py::handle& value) {
    if (!py::isinstance<Proxy>(value)) {
        return std::nullopt;
    }
    return value.cast<const Proxy&>().object();
}

void bindProxies(py::module_& module) {
    // With an attribute dictionary, which stays empty: without one the classes made from it in
    // Python
    // are laid out otherwise, and a proxy could not become one of theirs.
    py::class_<Proxy>(module, "Object", py::dynamic_attr())
        .def("__getattribute__", &attributeOf)
        .def("__setattr__", &assignTo)
        .def("__repr__",
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
