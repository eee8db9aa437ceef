#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include <kaputil/automation/array.hpp>
#include <kaputil/automation/by_ref.hpp>
#include <kaputil/automation/class_description.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>

#include "automation/same_value.hpp"

// Derives late-bound calls from C++ signatures: a class lists its member functions once, and the
// argument coercion, defaults and write-back follow from the parameter types.
namespace kap {

namespace dispatch {

// How one C++ value type crosses late-bound: its automation type and the conversions. `from` makes
// it of a Variant; a type that does not become a Variant by itself has `to`.
template <class T>
struct Carrier;

#define KAP_CARRIER(Type, automationType, conversion)                                 \
    template <>                                                                       \
    struct Carrier<Type> {                                                            \
        static constexpr VarType kType = VarType::automationType;                     \
        static Type from(const Variant& value) { return convert::conversion(value); } \
    }
KAP_CARRIER(bool, Boolean, toBoolean);
KAP_CARRIER(std::uint8_t, Byte, toByte);
KAP_CARRIER(std::int16_t, Integer, toInteger);
KAP_CARRIER(std::int32_t, Long, toLong);
KAP_CARRIER(float, Single, toSingle);
KAP_CARRIER(double, Double, toDouble);
KAP_CARRIER(Currency, Currency, toCurrency);
KAP_CARRIER(Decimal, Decimal, toDecimal);
KAP_CARRIER(Date, Date, toDate);
KAP_CARRIER(String, String, toString);
#undef KAP_CARRIER

template <>
struct Carrier<Variant> {
    static constexpr VarType kType = VarType::Variant;
    static Variant from(const Variant& value) { return value; }
};

template <class T>
struct Carrier<Ref<T>> {
    static constexpr VarType kType = VarType::Object;
    static Ref<T> from(const Variant& value) {
        if (!value.isObject()) {
            throw AutomationError(errors::kTypeMismatch);
        }
        const Ref<Object>& object = value.as<Ref<Object>>();
        if (!object) {
            return {};
        }
        auto* exact = dynamic_cast<T*>(object.get());
        if (exact == nullptr) {
            throw AutomationError(errors::kTypeMismatch);
        }
        return Ref<T>(exact);
    }
};

// An enumeration of the data-access objects crosses as its Long value.
template <class T>
requires std::is_enum_v<T>
struct Carrier<T> {
    static constexpr VarType kType = VarType::Long;
    static T from(const Variant& value) { return static_cast<T>(convert::toLong(value)); }
};

template <class T>
Variant toVariant(T&& value) {
    using Value = std::remove_cvref_t<T>;
    if constexpr (std::is_enum_v<Value>) {
        return Variant(static_cast<std::int32_t>(value));
    } else if constexpr (requires { Carrier<Value>::to(value); }) {
        return Carrier<Value>::to(value);
    } else {
        return Variant(std::forward<T>(value));
    }
}

// The argument in its slot, or the parameter's default. The value of an assignment has no
// parameter and is always there.
inline const Variant& given(const MemberDescription& member, std::size_t index,
                            const Variant* slot) {
    return slot != nullptr ? *slot : *member.parameters[index].defaultValue;
}

// Holds one argument for the length of a call.
template <class Parameter>
class Argument {
    using Value = std::remove_cvref_t<Parameter>;

public:
    static constexpr VarType kType = Carrier<Value>::kType;
    static constexpr bool kByReference = false;
    static constexpr bool kWritesBack = false;

    Argument(const MemberDescription& member, std::size_t index, Variant* slot)
        : value_(Carrier<Value>::from(given(member, index, slot))) {}
    const Value& pass() { return value_; }

private:
    Value value_;
};

// A Variant is passed as it stands: it needs no conversion and so no copy.
template <>
class Argument<const Variant&> {
public:
    static constexpr VarType kType = VarType::Variant;
    static constexpr bool kByReference = false;
    static constexpr bool kWritesBack = false;

    Argument(const MemberDescription& member, std::size_t index, const Variant* slot)
        : value_(given(member, index, slot)) {}
    const Variant& pass() { return value_; }

private:
    const Variant& value_;
};

// The member works on a copy of the parameter's type. What it assigns goes into the caller's
// variable; one that it left alone keeps its value and its type.
template <class T>
class Argument<ByRef<T>> {
public:
    static constexpr VarType kType = Carrier<T>::kType;
    static constexpr bool kByReference = true;
    static constexpr bool kWritesBack = true;

    Argument(const MemberDescription& member, std::size_t index, Variant* slot)
        : value_(Carrier<T>::from(given(member, index, slot))), before_(value_), slot_(slot) {}
    ByRef<T> pass() { return ByRef<T>(value_); }
    void writeBack() {
        if (slot_ != nullptr && !isSameValue(before_, value_)) {
            *slot_ = toVariant(value_);
        }
    }

private:
    T value_;
    T before_;
    Variant* slot_;
};

// A Variant by reference is the caller's own.
template <>
class Argument<ByRef<Variant>> {
public:
    static constexpr VarType kType = VarType::Variant;
    static constexpr bool kByReference = true;
    static constexpr bool kWritesBack = false;

    Argument(const MemberDescription& member, std::size_t index, Variant* slot)
        : own_(slot == nullptr ? *member.parameters[index].defaultValue : Variant()), slot_(slot) {}
    ByRef<Variant> pass() { return ByRef<Variant>(slot_ == nullptr ? own_ : *slot_); }

private:
    Variant own_;
    Variant* slot_;
};

template <class Function>
struct Signature;

template <class R, class C, class... P>
struct Signature<R (C::*)(P...)> {
    using Result = R;
    using Parameters = std::tuple<P...>;
    static constexpr std::size_t kCount = sizeof...(P);
};
template <class R, class C, class... P>
struct Signature<R (C::*)(P...) const> : Signature<R (C::*)(P...)> {};
template <class R, class C, class... P>
struct Signature<R (C::*)(P...) noexcept> : Signature<R (C::*)(P...)> {};
template <class R, class C, class... P>
struct Signature<R (C::*)(P...) const noexcept> : Signature<R (C::*)(P...)> {};

template <class One>
void writeBackTo(One& argument) {
    if constexpr (One::kWritesBack) {
        argument.writeBack();
    }
}

// Does the call, and writes back what the member assigned, also when it raised: the caller's
// variables then hold what they were given before the failure, as those of typed callers do.
template <class Call, class... One>
Variant writingBack(std::tuple<One...>& arguments, Call call) {
    if constexpr ((One::kWritesBack || ...)) {
        const auto writeBack = [&] {
            std::apply([](auto&... one) { (writeBackTo(one), ...); }, arguments);
        };
        try {
            Variant result = call();
            writeBack();
            return result;
        } catch (...) {
            writeBack();
            throw;
        }
    } else {
        return call();
    }
}

template <class Class, auto Function, std::size_t... Index>
Variant callWith(Object& object, [[maybe_unused]] const MemberDescription& member,
                 [[maybe_unused]] std::span<Variant* const> slots, std::index_sequence<Index...>) {
    using Shape = Signature<decltype(Function)>;
    auto& self = static_cast<Class&>(object);
    std::tuple<Argument<std::tuple_element_t<Index, typename Shape::Parameters>>...> arguments{
        Argument<std::tuple_element_t<Index, typename Shape::Parameters>>(member, Index,
                                                                          slots[Index])...};
    return writingBack(arguments, [&]() -> Variant {
        if constexpr (std::is_void_v<typename Shape::Result>) {
            (self.*Function)(std::get<Index>(arguments).pass()...);
            return {};
        } else if constexpr (std::is_same_v<typename Shape::Result, Variant>) {
            return (self.*Function)(std::get<Index>(arguments).pass()...);
        } else {
            return toVariant((self.*Function)(std::get<Index>(arguments).pass()...));
        }
    });
}

template <class Class, auto Function>
Variant call(Object& object, const MemberDescription& member, std::span<Variant* const> slots) {
    return callWith<Class, Function>(
        object, member, slots, std::make_index_sequence<Signature<decltype(Function)>::kCount>());
}

// The class that a parameter's or a result's C++ type names; null when it names none.
template <class T>
inline constexpr ClassReference kClassOf = nullptr;
template <class T>
requires requires {
    T::classDescription();
}
inline constexpr ClassReference kClassOf<Ref<T>> = &T::classDescription;
template <class T>
inline constexpr ClassReference kClassOf<ByRef<T>> = kClassOf<T>;

template <class T>
constexpr VarType resultType() {
    if constexpr (std::is_void_v<T>) {
        return VarType::Empty;
    } else {
        return Carrier<std::remove_cvref_t<T>>::kType;
    }
}

}  // namespace dispatch

// One parameter in a class's list of members: its name, and what the C++ type cannot tell.
class Parameter {
public:
    Parameter(const char16_t* name) : name_(name) {}

    // Optional, with this default.
    Parameter&& otherwise(Variant value) && {
        default_ = std::move(value);
        return std::move(*this);
    }
    // Published as by reference although the member only reads it.
    Parameter&& byReference() && {
        byReference_ = true;
        return std::move(*this);
    }

    [[nodiscard]] ParameterDescription describe(VarType type, bool byReference,
                                                ClassReference objectClass) const {
        return {name_, type, byReference || byReference_, default_, objectClass};
    }

private:
    String name_;
    bool byReference_ = false;
    std::optional<Variant> default_;
};

template <class Class>
class ClassBuilder {
public:
    ClassBuilder(const char16_t* name, const char16_t* classId, const char16_t* interfaceId) {
        made_.name = name;
        made_.classId = classId;
        made_.interfaceId = interfaceId;
        if constexpr (std::is_default_constructible_v<Class>) {
            made_.create = [] { return Ref<Object>(make<Class>()); };
        } else {
            made_.instancing = Instancing::NotCreatable;
        }
    }

    ClassBuilder&& instancing(Instancing value) && {
        made_.instancing = value;
        return std::move(*this);
    }

    // Objects of the class are event sources, with the events of this interface.
    ClassBuilder&& events(ClassReference value) && {
        made_.events = value;
        return std::move(*this);
    }

    template <auto Function>
    ClassBuilder&& method(const char16_t* name, std::vector<Parameter> parameters = {}) && {
        MemberDescription& member = add<Function>(name, MemberKind::Method, parameters);
        member.method = &dispatch::call<Class, Function>;
        return std::move(*this);
    }

    // A property that is read only.
    template <auto Get>
    ClassBuilder&& property(const char16_t* name, std::vector<Parameter> parameters = {}) && {
        MemberDescription& member = add<Get>(name, MemberKind::Property, parameters);
        member.get = &dispatch::call<Class, Get>;
        return std::move(*this);
    }

    // A property that is read and assigned; of objects it is assigned as a reference (Set).
    template <auto Get, auto Put>
    ClassBuilder&& property(const char16_t* name, std::vector<Parameter> parameters = {}) && {
        addAssignable<Get, Put>(name, MemberKind::Property, parameters);
        return std::move(*this);
    }

    // The same for a public field of the class, which only has an identifier of another range.
    template <auto Get, auto Put>
    ClassBuilder&& field(const char16_t* name) && {
        addAssignable<Get, Put>(name, MemberKind::Field, {});
        return std::move(*this);
    }

    // The Variant property before takes objects as references, too (Set beside Let).
    ClassBuilder&& alsoSet() && {
        MemberDescription& member = made_.members.back();
        member.set = member.let;
        return std::move(*this);
    }

    [[nodiscard]] ClassDescription build(const char16_t* defaultMember = u"") && {
        made_.complete(defaultMember);
        return std::move(made_);
    }

private:
    template <auto Get, auto Put>
    void addAssignable(const char16_t* name, MemberKind kind,
                       const std::vector<Parameter>& parameters) {
        MemberDescription& member = add<Get>(name, kind, parameters);
        member.get = &dispatch::call<Class, Get>;
        if (member.result == VarType::Object) {
            member.set = &dispatch::call<Class, Put>;
        } else {
            member.let = &dispatch::call<Class, Put>;
        }
    }

    template <auto Function>
    MemberDescription& add(const char16_t* name, MemberKind kind,
                           const std::vector<Parameter>& parameters) {
        using Shape = dispatch::Signature<decltype(Function)>;
        MemberDescription& member = made_.add(name, kind);
        member.result = dispatch::resultType<typename Shape::Result>();
        member.resultClass = dispatch::kClassOf<std::remove_cvref_t<typename Shape::Result>>;
        describeParameters<typename Shape::Parameters>(member, parameters,
                                                       std::make_index_sequence<Shape::kCount>());
        return member;
    }

    template <class Types, std::size_t... Index>
    static void describeParameters(MemberDescription& member,
                                   const std::vector<Parameter>& parameters,
                                   std::index_sequence<Index...>) {
        if (parameters.size() != sizeof...(Index)) {
            throw AutomationError(
                errors::kWrongNumberOfArguments,
                u"The description of " + member.name + u" does not name each of its parameters.");
        }
        (member.parameters.push_back(parameters[Index].describe(
             dispatch::Argument<std::tuple_element_t<Index, Types>>::kType,
             dispatch::Argument<std::tuple_element_t<Index, Types>>::kByReference,
             dispatch::kClassOf<std::remove_cvref_t<std::tuple_element_t<Index, Types>>>)),
         ...);
    }

    ClassDescription made_;
};

}  // namespace kap
