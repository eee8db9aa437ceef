#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include <kaputil/automation/object.hpp>
#include <kaputil/automation/variant.hpp>
#include <kaputil/base/export.hpp>

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

class ClassDescription;

// The class of an object that a member takes or gives. A function, since classes name each other.
using ClassReference = const ClassDescription& (*)();

struct ParameterDescription {
    String name;
    VarType type = VarType::Variant;
    bool byReference = false;
    // Present when the parameter is optional; `Variant::missing()` when it has no default value.
    std::optional<Variant> defaultValue;
    ClassReference objectClass = nullptr;  // of an Object; null when any object may be given
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
    VarType result = VarType::Empty;       // Empty: a method without result
    ClassReference resultClass = nullptr;  // of an Object; null when it may be any object
    MemberCall method = nullptr;
    MemberCall get = nullptr;
    MemberCall let = nullptr;
    MemberCall set = nullptr;
};

// The shape of one of the library's classes. Dispatch, the command line's object browser and every
// other list of members read this table; nothing repeats it. What the members are for is told by
// <kaputil/catalogue/documentation.hpp>.
class KAPUTIL_EXPORT ClassDescription {
public:
    String name;
    String classId;      // lower-case text of the identity, without braces
    String interfaceId;  // of the class's only interface, named "_" + name
    Instancing instancing = Instancing::Creatable;
    std::vector<MemberDescription> members;  // in interface order
    Ref<Object> (*create)() = nullptr;
    ClassReference events = nullptr;  // the interface of its events; null when it raises none

    // The member with this name, compared ignoring case, or with this identifier; null if none.
    [[nodiscard]] const MemberDescription* find(std::u16string_view memberName) const;
    [[nodiscard]] const MemberDescription* find(std::int32_t dispatchId) const;

    // Called by the builder, in interface order: adds a member, which gets the next identifier of
    // its kind.
    MemberDescription& add(std::u16string_view memberName, MemberKind kind);
    // Called last: gives the default member its identifier and makes the look-ups. Raises
    // std::logic_error for a member with more than 15 parameters.
    void complete(std::u16string_view defaultMember);

private:
    // Positions in `members`, so that a look-up is a step or two and allocates nothing.
    using Position = std::int16_t;
    static constexpr Position kNone = -1;

    std::int32_t nextId(MemberKind kind, Position position);
    void addName(Position position);

    std::array<std::vector<Position>, 3> byKind_;  // by kind and number in it
    Position default_ = kNone;
    std::vector<Position> names_;  // hashed by name; a power of two, at most half full
};

// An object whose members are described by a table.
class KAPUTIL_EXPORT DescribedObject : public Object {
public:
    [[nodiscard]] virtual const ClassDescription& description() const = 0;

    [[nodiscard]] String className() const override;
    [[nodiscard]] std::optional<std::int32_t> memberId(std::u16string_view name) const override;
    Variant invoke(std::int32_t member, InvokeKind kind, const Arguments& arguments) override;
    Variant invoke(std::u16string_view member, InvokeKind kind,
                   const Arguments& arguments) override;
    // The same for who has looked the member up before; it must be one of this description.
    Variant invoke(const MemberDescription& member, InvokeKind kind, const Arguments& arguments);
};

// The table of an object's members; null for an object that has none (a client's own).
[[nodiscard]] KAPUTIL_EXPORT const ClassDescription* descriptionOf(const Object& object);

}  // namespace kap
