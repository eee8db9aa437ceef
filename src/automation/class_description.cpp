#include <kaputil/automation/class_description.hpp>

#include <algorithm>
#include <array>
#include <bit>
#include <stdexcept>
#include <utility>

#include <kaputil/automation/error.hpp>

#include "automation/late_bound.hpp"
#include "base/unicode.hpp"

namespace kap {
namespace {

// Where the identifiers of each kind of member start.
constexpr std::int32_t kFirstField = 0x40030000;
constexpr std::int32_t kFirstMethod = 0x60030000;
constexpr std::int32_t kFirstProperty = 0x68030000;

constexpr std::int32_t firstId(MemberKind kind) {
    return kind == MemberKind::Method     ? kFirstMethod
           : kind == MemberKind::Property ? kFirstProperty
                                          : kFirstField;
}

// A call keeps its slots on the stack: one for each parameter, and one for the value assigned.
constexpr std::size_t kMaxSlots = 16;
constexpr std::size_t kMaxParameters = kMaxSlots - 1;
using Slots = std::array<Variant*, kMaxSlots>;

std::size_t positionOf(const MemberDescription& member, std::u16string_view parameter) {
    for (std::size_t i = 0; i < member.parameters.size(); ++i) {
        if (unicode::sameName(member.parameters[i].name, parameter)) {
            return i;
        }
    }
    throw AutomationError(errors::kNamedArgumentNotFound);
}

void placeNamed(const MemberDescription& member, const Arguments& arguments, Slots& slots) {
    for (const Arguments::Named& named : arguments.named) {
        Variant*& slot = slots[positionOf(member, named.name)];
        if (slot != nullptr) {
            throw AutomationError(errors::kWrongNumberOfArguments);
        }
        slot = named.value;
    }
}

void requireGiven(const MemberDescription& member, const Slots& slots) {
    for (std::size_t i = 0; i < member.parameters.size(); ++i) {
        if (slots[i] == nullptr && !member.parameters[i].defaultValue) {
            throw AutomationError(errors::kArgumentNotOptional);
        }
    }
}

// Lays the arguments out by parameter. With `takesValue` the last positional argument is the value
// of a property assignment and goes behind the parameters.
std::size_t layOut(const MemberDescription& member, const Arguments& arguments, bool takesValue,
                   Slots& slots) {
    auto positional = arguments.positional;
    const std::size_t parameters = member.parameters.size();
    std::fill_n(slots.begin(), parameters + 1, nullptr);
    if (takesValue) {
        if (positional.empty()) {
            throw AutomationError(errors::kArgumentNotOptional);
        }
        slots[parameters] = &positional.back();
        positional = positional.first(positional.size() - 1);
    }
    if (positional.size() > parameters) {
        throw AutomationError(errors::kWrongNumberOfArguments);
    }
    for (std::size_t i = 0; i < positional.size(); ++i) {
        slots[i] = positional[i].isMissing() ? nullptr : &positional[i];
    }
    placeNamed(member, arguments, slots);
    requireGiven(member, slots);
    return parameters + (takesValue ? 1 : 0);
}

// Lays out what most calls give: one positional argument for each parameter. False when it is
// anything else.
bool givesEachInOrder(std::size_t parameters, const Arguments& arguments, Slots& slots) {
    if (arguments.positional.size() != parameters || !arguments.named.empty()) {
        return false;
    }
    bool missing = false;
    for (std::size_t i = 0; i < parameters; ++i) {
        slots[i] = &arguments.positional[i];
        missing = missing || arguments.positional[i].isMissing();
    }
    return !missing;
}

struct ChosenCall {
    MemberCall call = nullptr;
    bool takesValue = false;
};

ChosenCall choose(const MemberDescription& member, InvokeKind kind) noexcept {
    if (mayBe(kind, InvokeKind::Method) && member.method != nullptr) {
        return {member.method, false};
    }
    if (mayBe(kind, InvokeKind::Get) && member.get != nullptr) {
        return {member.get, false};
    }
    if (mayBe(kind, InvokeKind::Let) && member.let != nullptr) {
        return {member.let, true};
    }
    if (mayBe(kind, InvokeKind::Set) && member.set != nullptr) {
        return {member.set, true};
    }
    return {};
}

// `obj.Items(3)` where Items takes no argument: the argument is for the default member of what
// Items returns.
bool passesArgumentsOn(const MemberDescription& member, const Arguments& arguments) {
    return member.parameters.empty() && !arguments.positional.empty() && arguments.named.empty() &&
           member.result != VarType::Empty;
}

// `rows.Fields("Nome") = value`: a member that is not assigned itself, but gives an object whose
// default member is. A method gives one for it only when it is the default member itself, as Item
// of a collection is: no other may be run by an assignment.
bool assignsThrough(const MemberDescription& member, const ChosenCall& chosen,
                    const Arguments& arguments) {
    const bool indexed = arguments.positional.size() > 1 || !arguments.named.empty();
    const bool gives =
        member.get != nullptr || (member.method != nullptr && member.dispatchId == kDefaultMember);
    return indexed && gives &&
           (member.result == VarType::Object || member.result == VarType::Variant) &&
           (chosen.call == nullptr || (chosen.takesValue && member.parameters.empty()));
}

// The arguments in front of the value are the member's own, or, where it takes none, for the
// default member of what it gives.
Variant assignThrough(Object& self, const MemberDescription& member, InvokeKind kind,
                      const Arguments& arguments) {
    const MemberCall read = member.get != nullptr ? member.get : member.method;
    if (member.parameters.empty()) {
        return late::invokeDefault(read(self, member, {}), kind, arguments);
    }
    if (arguments.positional.empty()) {
        throw AutomationError(errors::kArgumentNotOptional);
    }
    const auto indexes = arguments.positional.first(arguments.positional.size() - 1);
    Slots slots;  // NOLINT(*-member-init): as many as there are parameters are written
    const std::size_t count = layOut(member, Arguments{indexes, arguments.named}, false, slots);
    const Variant given = read(self, member, std::span<Variant* const>(slots.data(), count));
    if (!given.isObject()) {
        throw AutomationError(errors::kMemberNotFound);  // a value by itself is not assigned to
    }
    return late::invokeDefault(given, kind, Arguments{arguments.positional.last(1), {}});
}

const MemberDescription& required(const MemberDescription* member) {
    if (member == nullptr) {
        throw AutomationError(errors::kMemberNotFound);
    }
    return *member;
}

}  // namespace

const MemberDescription* ClassDescription::find(std::u16string_view memberName) const {
    const std::size_t mask = names_.size() - 1;
    for (std::size_t slot = unicode::NameHash()(memberName) & mask; names_[slot] != kNone;
         slot = (slot + 1) & mask) {
        const MemberDescription& member = members[static_cast<std::size_t>(names_[slot])];
        if (unicode::sameName(member.name, memberName)) {
            return &member;
        }
    }
    return nullptr;
}

const MemberDescription* ClassDescription::find(std::int32_t dispatchId) const {
    Position position = dispatchId == kDefaultMember ? default_ : kNone;
    if (dispatchId >= kFirstField) {
        const MemberKind kind = dispatchId >= kFirstProperty ? MemberKind::Property
                                : dispatchId >= kFirstMethod ? MemberKind::Method
                                                             : MemberKind::Field;
        const auto& numbered = byKind_[static_cast<std::size_t>(kind)];
        const auto number = static_cast<std::size_t>(dispatchId - firstId(kind));
        if (number < numbered.size()) {
            position = numbered[number];
        }
    }
    return position == kNone ? nullptr : &members[static_cast<std::size_t>(position)];
}

MemberDescription& ClassDescription::add(std::u16string_view memberName, MemberKind kind) {
    const auto position = static_cast<Position>(members.size());
    MemberDescription& member = members.emplace_back();
    member.name = memberName;
    member.kind = kind;
    member.dispatchId = nextId(kind, position);
    return member;
}

std::int32_t ClassDescription::nextId(MemberKind kind, Position position) {
    auto& numbered = byKind_[static_cast<std::size_t>(kind)];
    numbered.push_back(position);
    return firstId(kind) + static_cast<std::int32_t>(numbered.size()) - 1;
}

void ClassDescription::addName(Position position) {
    const String& memberName = members[static_cast<std::size_t>(position)].name;
    const std::size_t mask = names_.size() - 1;
    std::size_t slot = unicode::NameHash()(memberName) & mask;
    while (names_[slot] != kNone) {
        slot = (slot + 1) & mask;
    }
    names_[slot] = position;
}

void ClassDescription::complete(std::u16string_view defaultMember) {
    names_.assign(std::bit_ceil(2 * members.size() + 1), kNone);
    for (std::size_t i = 0; i < members.size(); ++i) {
        MemberDescription& member = members[i];
        const auto position = static_cast<Position>(i);
        if (member.parameters.size() > kMaxParameters) {
            throw std::logic_error(name.utf8() + "." + member.name.utf8() +
                                   " has more parameters than a call can carry");
        }
        addName(position);
        if (member.name.view() == defaultMember) {
            // It answers to the identifier 0 and to no other.
            byKind_[static_cast<std::size_t>(member.kind)]
                   [static_cast<std::size_t>(member.dispatchId - firstId(member.kind))] = kNone;
            member.dispatchId = kDefaultMember;
            default_ = position;
        }
    }
}

const ClassDescription* descriptionOf(const Object& object) {
    const auto* described = dynamic_cast<const DescribedObject*>(&object);
    return described == nullptr ? nullptr : &described->description();
}

String DescribedObject::className() const {
    return description().name;
}

std::optional<std::int32_t> DescribedObject::memberId(std::u16string_view name) const {
    const MemberDescription* member = description().find(name);
    return member == nullptr ? std::nullopt : std::optional(member->dispatchId);
}

Variant DescribedObject::invoke(std::int32_t id, InvokeKind kind, const Arguments& arguments) {
    return invoke(required(description().find(id)), kind, arguments);
}

Variant DescribedObject::invoke(std::u16string_view name, InvokeKind kind,
                                const Arguments& arguments) {
    return invoke(required(description().find(name)), kind, arguments);
}

Variant DescribedObject::invoke(const MemberDescription& member, InvokeKind kind,
                                const Arguments& arguments) {
    const ChosenCall chosen = choose(member, kind);
    if (mayBe(kind, InvokeKind::LetOrSet) && assignsThrough(member, chosen, arguments)) {
        return assignThrough(*this, member, kind, arguments);
    }
    if (chosen.call == nullptr) {
        throw AutomationError(errors::kMemberNotFound);
    }
    Slots slots;  // NOLINT(*-member-init): as many as there are parameters are written
    const std::size_t parameters = member.parameters.size();
    if (!chosen.takesValue && givesEachInOrder(parameters, arguments, slots)) {
        return chosen.call(*this, member, std::span<Variant* const>(slots.data(), parameters));
    }
    if (!chosen.takesValue && passesArgumentsOn(member, arguments)) {
        return late::invokeDefault(chosen.call(*this, member, {}), kind, arguments);
    }
    const std::size_t count = layOut(member, arguments, chosen.takesValue, slots);
    return chosen.call(*this, member, std::span<Variant* const>(slots.data(), count));
}

}  // namespace kap
