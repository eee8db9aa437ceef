#include "cli/commands/call/call_session.hpp"

#include <cstddef>
#include <optional>

#include <kaputil/automation/class_description.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/plain_text.hpp>
#include <kaputil/catalogue/catalogue.hpp>
#include <kaputil/catalogue/create_object.hpp>
#include <kaputil/catalogue/std_functions.hpp>

#include "cli/commands/classes/class_lookup.hpp"
#include "cli/names.hpp"
#include "cli/output/usage_error.hpp"
#include "cli/output/value_text.hpp"

namespace kap::cli {
namespace {

// Names of classes have one part, or two with their library's in front.
constexpr std::size_t kMostPartsOfAClass = 2;

std::string joinedParts(const std::vector<std::string>& path, std::size_t parts) {
    std::string name = path.front();
    for (std::size_t i = 1; i < parts; ++i) {
        name += "." + path[i];
    }
    return name;
}

std::vector<std::string> namesOf(const ClassDescription& description) {
    std::vector<std::string> names;
    for (const MemberDescription& member : description.members) {
        names.push_back(member.name.utf8());
    }
    return names;
}

// What may stand in front of a point as well as alone is suggested with the members.
std::string memberSuggestion(const ClassDescription& description, const std::string& wanted) {
    std::vector<std::string> known = namesOf(description);
    if (description.instancing == Instancing::Global) {
        for (std::string& name : classNames()) {
            known.push_back(std::move(name));
        }
    }
    return suggestion(wanted, known);
}

const MemberDescription* requireMember(const Object& object, const std::string& name) {
    const ClassDescription* description = descriptionOf(object);
    if (description == nullptr) {
        return nullptr;
    }
    const MemberDescription* member = description->find(String(name));
    if (member == nullptr) {
        throw UsageError(description->name.utf8() + " has no member " + name +
                         memberSuggestion(*description, name));
    }
    return member;
}

Ref<Object> follow(const Ref<Object>& object, const std::string& name) {
    requireMember(*object, name);
    const Variant next = object->invoke(String(name).view(), InvokeKind::MethodOrGet, {});
    if (!next.isObject() || !next.as<Ref<Object>>()) {
        throw UsageError(name + " gives no object to call a member of");
    }
    return next.as<Ref<Object>>();
}

bool isPlainNumber(const Variant& value) {
    switch (value.type()) {
        case VarType::Byte:
        case VarType::Integer:
        case VarType::Long:
        case VarType::Single:
        case VarType::Double:
        case VarType::Currency:
        case VarType::Decimal:
            return true;
        default:
            return false;
    }
}

// A number that only moved to the type of its parameter reads as before.
bool readsAsBefore(const Variant& before, const Variant& after) {
    if (before.isObject() && after.isObject()) {
        return before.as<Ref<Object>>().get() == after.as<Ref<Object>>().get();
    }
    if (isPlainNumber(before) && isPlainNumber(after)) {
        return convert::toDouble(before) == convert::toDouble(after);
    }
    return typeText(before) == typeText(after) && literalText(before) == literalText(after);
}

// The arguments of a call laid out as dispatch takes them. Stays where it was made: named
// arguments point into it.
class LaidOut {
public:
    explicit LaidOut(const std::vector<GivenArgument>& given) {
        for (const GivenArgument& argument : given) {
            values_.push_back(argument.value);
        }
        for (std::size_t i = 0; i < given.size(); ++i) {
            if (!given[i].name.empty()) {
                named_.push_back({String(given[i].name), &values_[i]});
            }
        }
    }
    LaidOut(const LaidOut&) = delete;
    LaidOut& operator=(const LaidOut&) = delete;

    Arguments arguments() {
        return {std::span(values_).first(values_.size() - named_.size()), named_};
    }
    [[nodiscard]] const Variant& value(std::size_t index) const { return values_[index]; }

private:
    std::vector<Variant> values_;
    std::vector<Arguments::Named> named_;
};

std::string nameOfArgument(const GivenArgument& argument, std::size_t index,
                           const MemberDescription* member) {
    if (!argument.name.empty()) {
        return argument.name;
    }
    if (member != nullptr && index < member->parameters.size()) {
        return member->parameters[index].name.utf8();
    }
    return "argument " + plain::text(index + 1);
}

CallOutcome callMember(Object& object, const std::string& name,
                       const std::vector<GivenArgument>& given) {
    const MemberDescription* member = requireMember(object, name);
    LaidOut laidOut(given);
    CallOutcome outcome;
    outcome.hasResult = member == nullptr || member->result != VarType::Empty;
    try {
        outcome.result =
            object.invoke(String(name).view(), InvokeKind::MethodOrGet, laidOut.arguments());
    } catch (const AutomationError& error) {
        outcome.failure = error;
        outcome.hasResult = false;
    }
    for (std::size_t i = 0; i < given.size(); ++i) {
        if (!readsAsBefore(given[i].value, laidOut.value(i))) {
            outcome.changed.emplace_back(nameOfArgument(given[i], i, member), laidOut.value(i));
        }
    }
    return outcome;
}

}  // namespace

std::vector<std::string> CallSession::begin(const std::vector<std::string>& path) {
    for (std::size_t parts = kMostPartsOfAClass; parts > 0; --parts) {
        const ShownClass* shown =
            parts <= path.size() ? findClass(joinedParts(path, parts)) : nullptr;
        if (shown == nullptr) {
            continue;
        }
        if (parts == path.size()) {
            throw UsageError(shown->name + " is a class; name a member of it, as in " +
                             shown->name + ".MEMBER");
        }
        object_ = createObject(String(shown->programmaticName));
        return {path.begin() + static_cast<std::ptrdiff_t>(parts), path.end()};
    }
    object_ = predeclared();
    return path;
}

CallOutcome CallSession::call(const GivenCall& given) {
    std::vector<std::string> path = object_ ? given.path : begin(given.path);
    Ref<Object> object = object_;
    for (std::size_t i = 0; i + 1 < path.size(); ++i) {
        object = follow(object, path[i]);
    }
    return callMember(*object, path.back(), given.arguments);
}

}  // namespace kap::cli
