#include "python/member_function.hpp"

#include <structmember.h>

#include <array>
#include <cstddef>
#include <string>

#include <kaputil/catalogue/catalogue.hpp>
#include <kaputil/catalogue/std_functions.hpp>

#include "python/calls.hpp"
#include "python/proxy.hpp"
#include "python/python_error.hpp"
#include "python/values.hpp"

namespace kap::python {
namespace {

// Laid out as the interpreter reads it: a call and the dictionary of attributes are found by their
// offsets.
struct MemberFunction {
    PyObject_HEAD vectorcallfunc call;
    PyObject* attributes;
    const ClassDescription* owner;
    const MemberDescription* member;
    MemberUse use;
};

PyTypeObject* functionType = nullptr;

const MemberFunction& functionOf(PyObject* self) {
    return *reinterpret_cast<const MemberFunction*>(self);
}

std::string nameOf(const MemberFunction& function) {
    return function.owner->name.utf8() + "." + function.member->name.utf8();
}

DescribedObject& targetOf(const MemberFunction& function, PyObject* given) {
    const Proxy* proxy = given == nullptr ? nullptr : proxyBehind(given);
    DescribedObject* object = proxy == nullptr ? nullptr : proxy->describedAs(*function.owner);
    if (object == nullptr) {
        throw py::type_error(nameOf(function) + " is called of a " + function.owner->name.utf8());
    }
    return *object;
}

// The interpreter gives the values of named arguments behind the others.
PythonArguments argumentsOf(PyObject* const* values, std::size_t positional, PyObject* names) {
    PythonArguments given;
    given.positional = {values, positional};
    const Py_ssize_t count = names == nullptr ? 0 : PyTuple_GET_SIZE(names);
    for (Py_ssize_t i = 0; i < count; ++i) {
        given.named.emplace_back(PyTuple_GET_ITEM(names, i),
                                 values[positional + static_cast<std::size_t>(i)]);
    }
    return given;
}

py::object resultOf(const MemberDescription& member, const Variant& result) {
    return member.result == VarType::Empty ? py::object(py::none()) : toPython(result);
}

PyObject* callOfObject(PyObject* self, PyObject* const* values, std::size_t flags,
                       PyObject* names) {
    return answering([&] {
        const MemberFunction& function = functionOf(self);
        const auto count = static_cast<std::size_t>(PyVectorcall_NARGS(flags));
        // Held for the call, in which the last name for it may go.
        const Ref<DescribedObject> object(&targetOf(function, count == 0 ? nullptr : values[0]));
        const bool reads = function.use == MemberUse::Read;
        return resultOf(
            *function.member,
            callMember(*object, *function.member, reads ? InvokeKind::Get : InvokeKind::MethodOrGet,
                       argumentsOf(values + 1, count - 1, names)));
    });
}

PyObject* callOfPredeclared(PyObject* self, PyObject* const* values, std::size_t flags,
                            PyObject* names) {
    return answering([&] {
        const MemberFunction& function = functionOf(self);
        const Ref<StdFunctions>& object = predeclared();
        const auto count = static_cast<std::size_t>(PyVectorcall_NARGS(flags));
        return resultOf(*function.member,
                        callMember(*object, *function.member, InvokeKind::MethodOrGet,
                                   argumentsOf(values, count, names)));
    });
}

PyObject* bound(PyObject* self, PyObject* object, PyObject* /*type*/) {
    if (object == nullptr || functionOf(self).use == MemberUse::Global) {
        return Py_NewRef(self);
    }
    return PyMethod_New(self, object);
}

PyObject* represented(PyObject* self) {
    return answering([&] { return py::str("<kaputil member " + nameOf(functionOf(self)) + ">"); });
}

void destroy(PyObject* self) {
    PyTypeObject* type = Py_TYPE(self);
    Py_XDECREF(functionOf(self).attributes);
    type->tp_free(self);
    Py_DECREF(type);
}

std::array<PyMemberDef, 3> offsets = {{
    {"__vectorcalloffset__", T_PYSSIZET, offsetof(MemberFunction, call), READONLY, nullptr},
    {"__dictoffset__", T_PYSSIZET, offsetof(MemberFunction, attributes), READONLY, nullptr},
    {nullptr, 0, 0, 0, nullptr},
}};

std::array<PyGetSetDef, 2> accessors = {{
    {"__dict__", PyObject_GenericGetDict, PyObject_GenericSetDict, nullptr, nullptr},
    {nullptr, nullptr, nullptr, nullptr, nullptr},
}};

template <class Function>
void* slot(Function* function) {
    return reinterpret_cast<void*>(function);
}

PyTypeObject* makeType() {
    std::array<PyType_Slot, 7> slots = {{
        {Py_tp_call, slot(&PyVectorcall_Call)},
        {Py_tp_descr_get, slot(&bound)},
        {Py_tp_repr, slot(&represented)},
        {Py_tp_dealloc, slot(&destroy)},
        {Py_tp_members, offsets.data()},
        {Py_tp_getset, accessors.data()},
        {0, nullptr},
    }};
    PyType_Spec spec{"kaputil._native.MemberFunction", sizeof(MemberFunction), 0,
                     Py_TPFLAGS_DEFAULT | Py_TPFLAGS_HAVE_VECTORCALL |
                         Py_TPFLAGS_METHOD_DESCRIPTOR | Py_TPFLAGS_DISALLOW_INSTANTIATION,
                     slots.data()};
    PyObject* made = PyType_FromSpec(&spec);
    if (made == nullptr) {
        throw py::error_already_set();
    }
    return reinterpret_cast<PyTypeObject*>(made);
}

}  // namespace

py::object memberFunction(const ClassDescription& owner, const MemberDescription& member,
                          MemberUse use) {
    PyObject* made = functionType->tp_alloc(functionType, 0);
    if (made == nullptr) {
        throw py::error_already_set();
    }
    auto& function = *reinterpret_cast<MemberFunction*>(made);
    function.call = use == MemberUse::Global ? &callOfPredeclared : &callOfObject;
    function.owner = &owner;
    function.member = &member;
    function.use = use;
    return py::reinterpret_steal<py::object>(made);
}

void bindMemberFunctions(py::module_& module) {
    functionType = makeType();
    module.attr("MemberFunction") = py::handle(reinterpret_cast<PyObject*>(functionType));
    module.def("global_function", [](const py::str& name) {
        const ClassDescription& owner = StdFunctions::classDescription();
        const MemberDescription* member = owner.find(toText(name));
        if (member == nullptr) {
            throw py::key_error(name.cast<std::string>());
        }
        return memberFunction(owner, *member, MemberUse::Global);
    });
}

}  // namespace kap::python
