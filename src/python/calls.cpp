#include "python/calls.hpp"

#include <algorithm>
#include <utility>
#include <vector>

#include <kaputil/automation/class_description.hpp>
#include <kaputil/automation/error.hpp>

#include "automation/same_value.hpp"
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
    CallArguments(const MemberDescription* member, const PythonArguments& given) {
        values_.reserve(given.positional.size() + given.named.size());
        for (std::size_t i = 0; i < given.positional.size(); ++i) {
            add(given.positional[i], parameterAt(member, i));
        }
        const std::size_t count = values_.size();
        for (const auto& [name, value] : given.named) {
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

    // What the member has assigned; a holder that it left alone keeps the object it holds.
    void writeBack() const {
        for (const Reference& reference : references_) {
            const Variant& now = values_[reference.index];
            if (!isSameValue(reference.before, now)) {
                reference.holder.attr("value") = toPython(now);
            }
        }
    }

private:
    struct Reference {
        std::size_t index;
        py::object holder;
        Variant before;
    };

    void add(const py::handle& given, const ParameterDescription* parameter) {
        values_.push_back(
            argumentOf(given, parameter == nullptr ? VarType::Variant : parameter->type));
        auto* const holder = reinterpret_cast<PyTypeObject*>(package().ref.ptr());
        if (PyObject_TypeCheck(given.ptr(), holder) != 0 &&
            (parameter == nullptr || parameter->byReference)) {
            references_.push_back(
                {values_.size() - 1, py::reinterpret_borrow<py::object>(given), values_.back()});
        }
    }

    std::vector<Variant> values_;
    std::vector<Arguments::Named> named_;
    std::span<Variant> positional_;
    std::vector<Reference> references_;
};

// The interpreter is let go while the member works: another thread may need it.
template <class Target, class Member>
Variant invoke(Target& object, const Member& member, InvokeKind kind, const Arguments& arguments) {
    const py::gil_scoped_release unlocked;
    return object.invoke(member, kind, arguments);
}

// `member` is a name, an identifier or the description of one.
template <class Target, class Member>
Variant call(Target& object, const MemberDescription* description, const Member& member,
             InvokeKind kind, const PythonArguments& positionalAndNamed) {
    const CallArguments given(description, positionalAndNamed);
    try {
        Variant result = invoke(object, member, kind, given.arguments());
        given.writeBack();
        return result;
    } catch (...) {
        given.writeBack();
        throw;
    }
}

PythonArguments givenIn(const py::tuple& positional, const py::dict& named) {
    PythonArguments given;
    given.positional = {PySequence_Fast_ITEMS(positional.ptr()), positional.size()};
    for (const auto& [name, value] : named) {
        given.named.emplace_back(name, value);
    }
    return given;
}

// `member` is a name or an identifier.
template <class Member>
void assign(Object& object, Member member, const py::tuple& indexes, Variant value) {
    // Like languages with one statement for both, objects are assigned as values are.
    const InvokeKind kind = value.isObject() ? InvokeKind::LetOrSet : InvokeKind::Let;
    std::vector<Variant> given;
    given.reserve(indexes.size() + 1);
    for (const py::handle index : indexes) {
        given.push_back(toVariant(index));
    }
    given.push_back(std::move(value));
    static_cast<void>(invoke(object, member, kind, Arguments{given, {}}));
}

}  // namespace

Variant callMember(Object& object, const String& name, InvokeKind kind, const py::tuple& positional,
                   const py::dict& named) {
    const ClassDescription* description = descriptionOf(object);
    return call(object, description == nullptr ? nullptr : description->find(name), name.view(),
                kind, givenIn(positional, named));
}

Variant callMember(DescribedObject& object, const MemberDescription& member, InvokeKind kind,
                   const PythonArguments& given) {
    return call(object, &member, member, kind, given);
}

Variant callDefault(Object& object, const py::tuple& positional, const py::dict& named) {
    const ClassDescription* description = descriptionOf(object);
    return call(object, description == nullptr ? nullptr : description->find(kDefaultMember),
                kDefaultMember, InvokeKind::MethodOrGet, givenIn(positional, named));
}

void assignMember(Object& object, const String& name, const py::tuple& indexes,
                  const py::handle& value) {
    const ClassDescription* description = descriptionOf(object);
    const MemberDescription* member = description == nullptr ? nullptr : description->find(name);
    const bool isItsOwn = member != nullptr && indexes.empty();
    assign(object, name.view(), indexes,
           argumentOf(value, isItsOwn ? member->result : VarType::Variant));
}

void assignDefault(Object& object, const py::tuple& indexes, const py::handle& value) {
    assign(object, kDefaultMember, indexes, toVariant(value));
}

}  // namespace kap::python
