#include "python/calls.hpp"

#include <algorithm>
#include <vector>

#include <kaputil/frame/class_description.hpp>
#include <kaputil/frame/error.hpp>

#include "python/package.hpp"
#include "python/values.hpp"

namespace kap::python {
namespace {

bool sameName(const py::handle& left, const py::handle& right) {
    return left.attr("casefold")().equal(right.attr("casefold")());
}

const ParameterDescription* parameterAt(const MemberDescription* member, std::size_t index) {
    return member != nullptr && index < member->parameters.size() ? &member->parameters[index]
                                                                  : nullptr;
}

const ParameterDescription* parameterNamed(const MemberDescription* member,
                                           const py::handle& name) {
    if (member == nullptr) {
        return nullptr;
    }
    const auto found =
        std::find_if(member->parameters.begin(), member->parameters.end(),
                     [&](const auto& one) { return sameName(toPython(one.name), name); });
    return found == member->parameters.end() ? nullptr : &*found;
}

Variant argumentOf(const py::handle& given, VarType type) {
    Variant value = toVariant(given);
    return value.isNull() && type == VarType::Object ? Variant(Ref<Object>()) : value;
}

// Python's arguments as automation's, for the length of a call. Stays where it was made: named
// arguments point into it.
class CallArguments {
public:
    CallArguments(const MemberDescription* member, const py::tuple& positional,
                  const py::dict& named) {
        values_.reserve(positional.size() + named.size());
        for (std::size_t i = 0; i < positional.size(); ++i) {
            add(positional[i], parameterAt(member, i));
        }
        const std::size_t count = values_.size();
        for (const auto& [name, value] : named) {
            if (value.ptr() != Py_Ellipsis) {
                add(value, parameterNamed(member, name));
                named_.push_back({toText(name), nullptr});
            }
        }
        for (std::size_t i = 0; i < named_.size(); ++i) {
            named_[i].value = &values_[count + i];
        }
        positional_ = std::span(values_).first(count);
    }
    CallArguments(const CallArguments&) = delete;
    CallArguments& operator=(const CallArguments&) = delete;

    [[nodiscard]] Arguments arguments() const { return {positional_, named_}; }

    void writeBack() const {
        for (const Reference& reference : references_) {
            reference.holder.attr("value") = toPython(values_[reference.index]);
        }
    }

private:
    struct Reference {
        std::size_t index;
        py::object holder;
    };

    void add(const py::handle& given, const ParameterDescription* parameter) {
        if (py::isinstance(given, package().ref) &&
            (parameter == nullptr || parameter->byReference)) {
            references_.push_back({values_.size(), py::reinterpret_borrow<py::object>(given)});
        }
        values_.push_back(
            argumentOf(given, parameter == nullptr ? VarType::Variant : parameter->type));
    }

    std::vector<Variant> values_;
    std::vector<Arguments::Named> named_;
    std::span<Variant> positional_;
    std::vector<Reference> references_;
};

// `member` is a name or an identifier.
template <class Member>
Variant invoke(Object& object, Member member, InvokeKind kind, const Arguments& arguments) {
    const py::gil_scoped_release unlocked;
    return object.invoke(member, kind, arguments);
}

template <class Member>
Variant call(Object& object, const MemberDescription* description, Member member, InvokeKind kind,
             const py::tuple& positional, const py::dict& named) {
    const CallArguments given(description, positional, named);
    Variant result;
    try {
        result = invoke(object, member, kind, given.arguments());
    } catch (const AutomationError&) {
        given.writeBack();
        throw;
    }
    given.writeBack();
    return result;
}

}  // namespace

Variant callMember(Object& object, const String& name, InvokeKind kind, const py::tuple& positional,
                   const py::dict& named) {
    const ClassDescription* description = descriptionOf(object);
    return call(object, description == nullptr ? nullptr : description->find(name), name.view(),
                kind, positional, named);
}

Variant callDefault(Object& object, const py::tuple& positional, const py::dict& named) {
    const ClassDescription* description = descriptionOf(object);
    return call(object, description == nullptr ? nullptr : description->find(kDefaultMember),
                kDefaultMember, InvokeKind::MethodOrGet, positional, named);
}

void assignMember(Object& object, const String& name, const py::handle& value) {
    const ClassDescription* description = descriptionOf(object);
    const MemberDescription* member = description == nullptr ? nullptr : description->find(name);
    std::vector<Variant> given = {
        argumentOf(value, member == nullptr ? VarType::Variant : member->result)};
    const InvokeKind kind = given[0].isObject() ? InvokeKind::LetOrSet : InvokeKind::Let;
    static_cast<void>(invoke(object, name.view(), kind, Arguments{given, {}}));
}

}  // namespace kap::python
