#include "python/python_object.hpp"

#include <algorithm>
#include <utility>

#include <kaputil/automation/class_description.hpp>
#include <kaputil/automation/error.hpp>

#include "automation/late_bound.hpp"
#include "python/package.hpp"
#include "python/proxy.hpp"
#include "python/python_error.hpp"
#include "python/values.hpp"

namespace kap::python {
namespace {

constexpr const char* kDefaultMemberName = "_default_member_";

py::handle classOf(const py::handle& object) {
    return py::type::handle_of(object);
}

// Whether reading it gives the object itself although it can be called.
bool isObject(const py::handle& attribute) {
    return objectBehind(attribute).has_value() ||
           py::hasattr(classOf(attribute), kDefaultMemberName);
}

bool isCalled(const py::object& attribute, InvokeKind kind, bool hasArguments) {
    if (PyCallable_Check(attribute.ptr()) == 0) {
        return false;
    }
    return hasArguments || (mayBe(kind, InvokeKind::Method) &&
                            (!mayBe(kind, InvokeKind::Get) || !isObject(attribute)));
}

// The library's arguments as Python's, for the length of a call.
class GivenArguments {
public:
    GivenArguments(const py::object& function, const Arguments& arguments) {
        const py::tuple byReference = package().references(function);
        const py::set positions = byReference[0];
        const py::set names = byReference[1];
        for (std::size_t i = 0; i < arguments.positional.size(); ++i) {
            positional_.append(argument(arguments.positional[i], positions.contains(py::int_(i))));
        }
        for (const Arguments::Named& one : arguments.named) {
            const py::str name = toPython(one.name);
            named_[name] = argument(*one.value, names.contains(name));
        }
    }

    [[nodiscard]] py::object passTo(const py::object& function) const {
        return function(*py::tuple(positional_), **named_);
    }

    // What the function has assigned; a variable that it left alone keeps its type, which Python
    // may not have.
    void writeBack() const {
        for (const Reference& one : references_) {
            const py::object now = one.holder.attr("value");
            // A list may have been changed where it is.
            if (!now.is(one.before) || PyList_Check(now.ptr()) != 0) {
                *one.variable = toVariant(now);
            }
        }
    }

private:
    struct Reference {
        Variant* variable;
        py::object holder;
        py::object before;
    };

    py::object argument(Variant& value, bool byReference) {
        py::object given = toPython(value);
        if (!byReference) {
            return given;
        }
        py::object holder = package().ref(given);
        references_.push_back({&value, holder, std::move(given)});
        return holder;
    }

    py::list positional_;
    py::dict named_;
    std::vector<Reference> references_;
};

// `form.Items(3)` where Items is no method: the argument is for the default member of what it
// holds.
bool passesArgumentsOn(InvokeKind kind, const Arguments& arguments) {
    return !arguments.named.empty() ||
           arguments.positional.size() > (mayBe(kind, InvokeKind::LetOrSet) ? 1U : 0U);
}

const Variant& assignedValue(const Arguments& arguments) {
    if (arguments.positional.empty()) {
        throw AutomationError(errors::kArgumentNotOptional);
    }
    return arguments.positional.front();
}

}  // namespace

PythonObject::PythonObject(py::object object) : object_(std::move(object)) {}

PythonObject::~PythonObject() {
    if (Py_IsInitialized() == 0) {
        // The interpreter has ended and taken everything with it.
        object_.release();
        for (py::str& name : names_) {
            name.release();
        }
        return;
    }
    const py::gil_scoped_acquire lock;
    object_ = py::object();
    names_.clear();
}

String PythonObject::className() const {
    return inPython([&] { return toText(classOf(object_).attr("__name__")); });
}

std::optional<std::int32_t> PythonObject::memberId(std::u16string_view name) const {
    return inPython([&]() -> std::optional<std::int32_t> {
        const py::object found = package().findAttribute(object_, toPython(String(name)));
        if (found.is_none()) {
            return std::nullopt;
        }
        const auto known = std::find_if(names_.begin(), names_.end(),
                                        [&](const py::str& one) { return one.equal(found); });
        const auto position = static_cast<std::int32_t>(known - names_.begin());
        if (known == names_.end()) {
            names_.push_back(py::str(found));
        }
        return position + 1;
    });
}

py::str PythonObject::attributeFor(std::int32_t member) const {
    if (member == kDefaultMember && py::hasattr(classOf(object_), kDefaultMemberName)) {
        py::object found =
            package().findAttribute(object_, py::str(classOf(object_).attr(kDefaultMemberName)));
        if (!found.is_none()) {
            return found;
        }
    }
    if (member < 1 || static_cast<std::size_t>(member) > names_.size()) {
        throw AutomationError(errors::kMemberNotFound);
    }
    return names_[static_cast<std::size_t>(member) - 1];
}

Variant PythonObject::read(const py::str& name, InvokeKind kind, const Arguments& arguments) const {
    const py::object attribute = object_.attr(name);
    const bool hasArguments = !arguments.positional.empty() || !arguments.named.empty();
    if (!isCalled(attribute, kind, hasArguments)) {
        const Variant value = toVariant(attribute);
        return hasArguments ? late::invokeDefault(value, kind, arguments) : value;
    }
    if (!hasArguments) {
        return toVariant(attribute());
    }
    const GivenArguments given(attribute, arguments);
    try {
        Variant result = toVariant(given.passTo(attribute));
        given.writeBack();
        return result;
    } catch (...) {
        given.writeBack();  // a reference keeps what it was given before the failure
        throw;
    }
}

Variant PythonObject::invoke(std::int32_t member, InvokeKind kind, const Arguments& arguments) {
    return inPython([&]() -> Variant {
        const py::str attribute = attributeFor(member);
        if (!mayBe(kind, InvokeKind::LetOrSet)) {
            return read(attribute, kind, arguments);
        }
        if (passesArgumentsOn(kind, arguments)) {
            return late::invokeDefault(toVariant(object_.attr(attribute)), kind, arguments);
        }
        py::setattr(object_, attribute, toPython(assignedValue(arguments)));
        return {};
    });
}

Variant PythonObject::invoke(std::u16string_view member, InvokeKind kind,
                             const Arguments& arguments) {
    if (const auto id = memberId(member)) {
        return invoke(*id, kind, arguments);
    }
    if (!mayBe(kind, InvokeKind::LetOrSet) || passesArgumentsOn(kind, arguments)) {
        throw AutomationError(errors::kMemberNotFound);
    }
    makeAttribute(String(member), assignedValue(arguments));
    return {};
}

// Python's own assignment. An object that takes no further attributes has no such member.
void PythonObject::makeAttribute(const String& name, const Variant& value) {
    inPython([&] {
        try {
            py::setattr(object_, toPython(name), toPython(value));
        } catch (const py::error_already_set& error) {
            if (!error.matches(PyExc_AttributeError)) {
                throw;
            }
            throw AutomationError(
                errors::kMemberNotFound,
                toText(classOf(object_).attr("__name__")) + u" has no member " + name);
        }
    });
}

std::vector<Variant> PythonObject::elements() {
    return inPython([&] {
        if (!py::hasattr(classOf(object_), "__iter__")) {
            throw AutomationError(errors::kMemberNotFound);
        }
        std::vector<Variant> values;
        for (const py::handle value : object_) {
            values.push_back(toVariant(value));
        }
        return values;
    });
}

}  // namespace kap::python
