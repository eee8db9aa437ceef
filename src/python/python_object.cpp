#include "python/python_object.hpp"

#include <algorithm>

#include <kaputil/frame/class_description.hpp>

#include "python/values.hpp"

namespace kap::python {
namespace {

// What an exception that is no automation error counts as: "exception occurred".
constexpr std::int32_t kException = -2147352567;

constexpr const char* kDefaultMemberName = "_default_member_";

bool isAutomationError(const py::error_already_set& error) {
    return error.matches(packageTypes().automationError);
}

std::int32_t numberOf(const py::error_already_set& error) {
    return isAutomationError(error) ? error.value().attr("number").cast<std::int32_t>()
                                    : kException;
}

String descriptionOf(const py::error_already_set& error) {
    return toText(isAutomationError(error) ? py::str(error.value().attr("description"))
                                           : py::str(error.value()));
}

String sourceOf(const py::error_already_set& error) {
    return isAutomationError(error) ? toText(py::str(error.value().attr("source"))) : String();
}

py::tuple pythonArguments(std::span<Variant> positional) {
    py::tuple given(positional.size());
    for (std::size_t i = 0; i < positional.size(); ++i) {
        given[i] = toPython(positional[i]);
    }
    return given;
}

py::dict pythonNamed(std::span<const Arguments::Named> named) {
    py::dict given;
    for (const Arguments::Named& one : named) {
        given[toPython(one.name)] = toPython(*one.value);
    }
    return given;
}

}  // namespace

PythonObject::PythonObject(py::object object) : object_(std::move(object)) {}

PythonObject::~PythonObject() {
    const py::gil_scoped_acquire lock;
    object_ = py::object();
}

String PythonObject::className() const {
    const py::gil_scoped_acquire lock;
    return toText(py::str(py::type::handle_of(object_).attr("__name__")));
}

std::optional<std::string> PythonObject::attributeNamed(const std::string& name) const {
    if (py::hasattr(object_, name.c_str())) {
        return name;
    }
    const py::object wanted = py::str(name).attr("casefold")();
    for (const py::handle known : py::module_::import("builtins").attr("dir")(object_)) {
        if (known.attr("casefold")().equal(wanted)) {
            return known.cast<std::string>();
        }
    }
    return std::nullopt;
}

std::optional<std::int32_t> PythonObject::memberId(std::u16string_view name) const {
    const py::gil_scoped_acquire lock;
    auto attribute = attributeNamed(String(name).utf8());
    if (!attribute) {
        return std::nullopt;
    }
    const auto known = std::find(names_.begin(), names_.end(), *attribute);
    const auto position = static_cast<std::int32_t>(known - names_.begin());
    if (known == names_.end()) {
        names_.push_back(std::move(*attribute));
    }
    return position + 1;
}

std::string PythonObject::nameOf(std::int32_t member) const {
    if (member == kDefaultMember && py::hasattr(object_, kDefaultMemberName)) {
        return object_.attr(kDefaultMemberName).cast<std::string>();
    }
    if (member < 1 || static_cast<std::size_t>(member) > names_.size()) {
        throw AutomationError(errors::kMemberNotFound);
    }
    return names_[static_cast<std::size_t>(member) - 1];
}

Variant PythonObject::invoke(std::int32_t member, InvokeKind kind, const Arguments& arguments) {
    const py::gil_scoped_acquire lock;
    const std::string name = nameOf(member);
    try {
        if (mayBe(kind, InvokeKind::LetOrSet)) {
            py::setattr(object_, name.c_str(), toPython(arguments.positional.back()));
            return {};
        }
        const py::object attribute = object_.attr(name.c_str());
        const bool callable = PyCallable_Check(attribute.ptr()) != 0;
        const bool given = !arguments.positional.empty() || !arguments.named.empty();
        if (!given && (!callable || !mayBe(kind, InvokeKind::Method))) {
            return toVariant(attribute);
        }
        return toVariant(
            attribute(*pythonArguments(arguments.positional), **pythonNamed(arguments.named)));
    } catch (py::error_already_set& error) {
        throw PythonError(error);
    }
}

std::vector<Variant> PythonObject::elements() {
    const py::gil_scoped_acquire lock;
    try {
        std::vector<Variant> values;
        for (const py::handle value : object_) {
            values.push_back(toVariant(value));
        }
        return values;
    } catch (py::error_already_set& error) {
        throw PythonError(error);
    }
}

PythonError::PythonError(py::error_already_set& error)
    : AutomationError(numberOf(error), descriptionOf(error), sourceOf(error)),
      original_(new py::error_already_set(error), [](py::error_already_set* held) {
          const py::gil_scoped_acquire lock;
          delete held;
      }) {}

void PythonError::restore() const {
    py::error_already_set(*original_).restore();
}

}  // namespace kap::python
