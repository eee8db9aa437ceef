#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <kaputil/frame/object.hpp>
#include <kaputil/frame/variant.hpp>

namespace kap {

// The arguments of a late-bound call. Positional ones first, then named ones; a position the
// caller left out holds `Variant::missing()`. By-reference arguments are written back in place.
struct Arguments {
    struct Named {
        String name;
        Variant* value;
    };
    std::span<Variant> positional;
    std::span<const Named> named;
};

enum class Instancing : std::uint8_t { Creatable, Global, NotCreatable };

// What a member is backed by; it decides the range of its dispatch identifier.
enum class MemberKind : std::uint8_t { Method, Property, Field };

struct ParameterDescription {
    String name;
    VarType type = VarType::Variant;
    bool byReference = false;
    // Present when the parameter is optional; `Variant::missing()` when it has no default value.
    std::optional<Variant> defaultValue;
};

// Carries one call to the C++ function; `slots` has one entry a parameter (for Let and Set one
// more, the value), null where the argument is missing.
using MemberCall = Variant (*)(Object& self, const struct MemberDescription& member,
                               std::span<Variant* const> slots);

struct MemberDescription {
    String name;
    MemberKind kind = MemberKind::Method;
    std::int32_t dispatchId = 0;
    std::vector<ParameterDescription> parameters;
    VarType result = VarType::Empty;  // Empty: a method without result
    String summary;
    String errors;  // what it raises and when, beyond what converting the arguments raises
    MemberCall method = nullptr;
    MemberCall get = nullptr;
    MemberCall let = nullptr;
    MemberCall set = nullptr;
};

// Everything the library tells about one of its classes. Dispatch, the command line's object
// browser and every other list of members read this table; nothing repeats it.
class ClassDescription {
public:
    String name;
    String classId;      // lower-case text of the identity, without braces
    String interfaceId;  // of the class's only interface, named "_" + name
    Instancing instancing = Instancing::Creatable;
    String summary;
    std::vector<MemberDescription> members;  // in interface order
    std::vector<String> reserved;            // members to come, whose identifiers are kept for them
    Ref<Object> (*create)() = nullptr;

    // The member with this name, compared ignoring case, or with this identifier; null if none.
    [[nodiscard]] const MemberDescription* find(std::u16string_view memberName) const;
    [[nodiscard]] const MemberDescription* find(std::int32_t dispatchId) const;

    // Called by the builder, in interface order: adds a member, which gets the next identifier of
    // its kind, or keeps the next identifier of a method for one to come.
    MemberDescription& add(std::u16string_view memberName, MemberKind kind);
    void reserve(std::u16string_view memberName);
    // Called last: gives the default member its identifier and makes the look-ups.
    void complete(std::u16string_view defaultMember);

private:
    std::int32_t nextId(MemberKind kind);

    std::array<std::int32_t, 3> used_{};  // identifiers given, by kind
    std::unordered_map<std::u16string, std::size_t> byName_;  // upper-cased
    std::unordered_map<std::int32_t, std::size_t> byId_;
};

// An object whose members are described by a table.
class DescribedObject : public Object {
public:
    [[nodiscard]] virtual const ClassDescription& description() const = 0;

    using Object::invoke;
    [[nodiscard]] String className() const override;
    [[nodiscard]] std::optional<std::int32_t> memberId(std::u16string_view name) const override;
    Variant invoke(std::int32_t member, InvokeKind kind, const Arguments& arguments) override;
};

}  // namespace kap
