#include "python/proxy.hpp"

#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

#include <kaputil/frame/convert.hpp>
#include <kaputil/frame/error.hpp>

#include "python/values.hpp"

namespace kap::python {
namespace {

// Holds the object for Python and knows the thread that it belongs to.
class Proxy {
public:
    explicit Proxy(Ref<Object> object) : object_(std::move(object)) {}

    [[nodiscard]] const Ref<Object>& object() const {
        if (std::this_thread::get_id() != owner_) {
            throw std::runtime_error("a " + object_->className().utf8() +
                                     " belongs to the thread that made it; make one for this "
                                     "thread");
        }
        return object_;
    }
    [[nodiscard]] const Object* identity() const { return object_.get(); }

private:
    Ref<Object> object_;
    std::thread::id owner_ = std::this_thread::get_id();
};

bool isAttribute(const MemberDescription& member) {
    return member.kind != MemberKind::Method && member.parameters.empty();
}

// Python's arguments as automation's, for the length of a call.
class CallArguments {
public:
    CallArguments(const py::args& positional, const py::kwargs& named) {
        values_.reserve(positional.size() + named.size());
        for (const py::handle one : positional) {
            values_.push_back(one.is(py::ellipsis()) ? Variant::missing() : toVariant(one));
            given_.push_back(py::reinterpret_borrow<py::object>(one));
        }
        const std::size_t count = values_.size();
        for (const auto& [name, value] : named) {
            values_.push_back(toVariant(value));
            given_.push_back(py::reinterpret_borrow<py::object>(value));
            named_.push_back({toText(name), nullptr});
        }
        for (std::size_t i = 0; i < named_.size(); ++i) {
            named_[i].value = &values_[count + i];
        }
        positional_ = std::span(values_).first(count);
    }

    [[nodiscard]] Arguments arguments() { return {positional_, named_}; }

    void writeBack() {
        for (std::size_t i = 0; i < values_.size(); ++i) {
            if (py::isinstance(given_[i], packageTypes().ref)) {
                given_[i].attr("value") = toPython(values_[i]);
            }
        }
    }

private:
    std::vector<Variant> values_;
    std::vector<py::object> given_;
    std::vector<Arguments::Named> named_;
    std::span<Variant> positional_;
};

template <class Member>
Variant call(Object& object, const Member& member, InvokeKind kind, const py::args& positional,
             const py::kwargs& named) {
    CallArguments given(positional, named);
    Variant result;
    {
        // Other Python threads go on while a database works.
        const py::gil_scoped_release unlocked;
        result = object.invoke(member, kind, given.arguments());
    }
    given.writeBack();
    return result;
}

void assign(Object& object, const String& name, const py::handle& value) {
    std::vector<Variant> given = {toVariant(value)};
    const InvokeKind kind = given[0].isObject() ? InvokeKind::LetOrSet : InvokeKind::Let;
    const py::gil_scoped_release unlocked;
    object.invoke(name.view(), kind, Arguments{given, {}});
}

py::object boundMethod(const py::object& self, const std::string& name, const std::string& text) {
    return py::cpp_function(
        [self, name](const py::args& positional, const py::kwargs& named) {
            return toPython(callMember(*self.cast<const Proxy&>().object(), String(name),
                                       InvokeKind::MethodOrGet, positional, named));
        },
        py::name(name.c_str()), py::doc(text.c_str()));
}

[[noreturn]] void raiseNoMember(const Object& object, const std::string& name) {
    const std::string text = object.className().utf8() + " has no member " + name;
    PyErr_SetObject(packageTypes().memberNotFound.ptr(),
                    py::make_tuple(errors::kMemberNotFound, text, "").ptr());
    throw py::error_already_set();
}

py::object getAttribute(const py::object& self, const std::string& name) {
    const Ref<Object>& object = self.cast<const Proxy&>().object();
    const ClassDescription* description = descriptionOf(*object);
    const MemberDescription* member =
        description == nullptr ? nullptr : description->find(String(name));
    if (member == nullptr) {
        raiseNoMember(*object, name);
    }
    if (isAttribute(*member)) {
        return toPython(callMember(*object, member->name, InvokeKind::Get, {}, {}));
    }
    return boundMethod(self, member->name.utf8(), memberDocumentation(*member));
}

py::list memberNames(const Proxy& self) {
    py::list names;
    if (const ClassDescription* description = descriptionOf(*self.object())) {
        for (const MemberDescription& member : description->members) {
            names.append(toPython(member.name));
        }
    }
    return names;
}

std::string parametersText(const MemberDescription& member) {
    std::string text;
    for (const ParameterDescription& parameter : member.parameters) {
        text += (text.empty() ? "" : ", ") + parameter.name.utf8();
        if (parameter.defaultValue) {
            text += "=" + py::repr(toPython(*parameter.defaultValue)).cast<std::string>();
        }
    }
    return text;
}

std::string classDocumentation(const ClassDescription& description) {
    std::string text = description.summary.utf8() + "\n";
    for (const MemberDescription& member : description.members) {
        text += "\n" + memberDocumentation(member) + "\n";
    }
    return text;
}

// The Python classes made from descriptions, one each.
py::object classOf(const ClassDescription& description, const py::object& base) {
    static auto* const made = new std::unordered_map<const ClassDescription*, py::object>();
    py::object& known = (*made)[&description];
    if (!known) {
        py::dict body;
        body["__doc__"] = classDocumentation(description);
        body["__module__"] = "kaputil";
        body["__slots__"] = py::tuple();  // the same layout: a proxy changes its class when made
        known = py::module_::import("builtins")
                    .attr("type")(toPython(description.name), py::make_tuple(base), body);
    }
    return known;
}

}  // namespace

std::string memberDocumentation(const MemberDescription& member) {
    std::string text = member.name.utf8();
    if (!isAttribute(member)) {
        text += "(" + parametersText(member) + ")";
    }
    if (member.result != VarType::Empty) {
        text += " -> " + std::string(typeName(member.result));
    }
    text += "\n    " + member.summary.utf8();
    return member.errors.empty() ? text : text + "\n    Errors: " + member.errors.utf8();
}

py::object proxyOf(const Ref<Object>& object) {
    py::object proxy = py::cast(Proxy(object));
    if (const ClassDescription* description = descriptionOf(*object)) {
        proxy.attr("__class__") = classOf(*description, py::type::of<Proxy>());
    }
    return proxy;
}

std::optional<Ref<Object>> objectBehind(const py::handle& value) {
    if (!py::isinstance<Proxy>(value)) {
        return std::nullopt;
    }
    return value.cast<const Proxy&>().object();
}

Variant callMember(Object& object, const String& name, InvokeKind kind, const py::args& positional,
                   const py::kwargs& named) {
    return call(object, name.view(), kind, positional, named);
}

void bindProxies(py::module_& module) {
    py::class_<Proxy>(module, "Object", py::dynamic_attr(),
                      "An automation object: its members are its attributes, in any case.")
        .def("__getattr__", &getAttribute)
        .def("__setattr__",
             [](const py::object& self, const std::string& name, const py::object& value) {
                 if (name == "__class__") {
                     py::module_::import("builtins")
                         .attr("object")
                         .attr("__setattr__")(self, name, value);
                     return;
                 }
                 assign(*self.cast<const Proxy&>().object(), String(name), value);
             })
        .def("__call__",
             [](const Proxy& self, const py::args& positional, const py::kwargs& named) {
                 return toPython(call(*self.object(), kDefaultMember, InvokeKind::MethodOrGet,
                                      positional, named));
             })
        .def("__iter__",
             [](const Proxy& self) {
                 py::list values;
                 for (const Variant& value : self.object()->elements()) {
                     values.append(toPython(value));
                 }
                 return py::iter(values);
             })
        .def("__dir__", &memberNames)
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
}

}  // namespace kap::python
