#include "platform/win32/automation/call_arguments.hpp"

#include <optional>

#include <kaputil/automation/error.hpp>

#include "automation/same_value.hpp"
#include "platform/win32/automation/values.hpp"

namespace kap::platform::automation {

CallArguments::CallArguments(const DISPPARAMS& passed, const MemberDescription* member,
                             bool assigns)
    : member_(member), values_(passed.cArgs), assignable_(passed.cArgs) {
    // The caller gives the last argument first, and the named ones in front of all. The value of an
    // assignment is named, too; here it is the last positional one.
    const bool namesValue =
        assigns && passed.cNamedArgs > 0 && passed.rgdispidNamedArgs[0] == DISPID_PROPERTYPUT;
    for (std::size_t i = passed.cArgs; i > passed.cNamedArgs; --i) {
        add(passed.rgvarg[i - 1], isAssignable(passed.cArgs - i));
    }
    if (namesValue) {
        add(passed.rgvarg[0], false);
    }
    positional_ = values_.all().size();
    for (std::size_t i = namesValue ? 1 : 0; i < passed.cNamedArgs; ++i) {
        addNamed(passed.rgvarg[i], passed.rgdispidNamedArgs[i]);
    }
}

bool CallArguments::isAssignable(std::size_t parameter) const noexcept {
    return member_ == nullptr || parameter >= member_->parameters.size() ||
           member_->parameters[parameter].byReference;
}

void CallArguments::add(const VARIANT& from, bool assignable) {
    const Variant& value = values_.add([&] { return fromSystem(from); });
    if (assignable && (V_VT(&from) & VT_BYREF) != 0) {
        assignable_.add([&] { return Assignable{&from, &value, value}; });
    }
}

void CallArguments::addNamed(const VARIANT& from, DISPID parameter) {
    const auto number = static_cast<std::size_t>(parameter);
    if (member_ == nullptr || number >= member_->parameters.size()) {
        throw AutomationError(errors::kNamedArgumentNotFound);
    }
    add(from, isAssignable(number));
    named_.push_back({member_->parameters[number].name, &values_.all().back()});
}

Arguments CallArguments::arguments() noexcept {
    return {values_.all().first(positional_), named_};
}

template <class Refused>
void CallArguments::storeAssigned(Refused refused) {
    for (const Assignable& one : assignable_.all()) {
        if (isSameValue(one.before, *one.value)) {
            continue;
        }
        try {
            assignThrough(*one.variable, *one.value);
        } catch (const AutomationError& error) {
            refused(error);
        }
    }
}

void CallArguments::writeBack() {
    std::optional<AutomationError> first;
    storeAssigned([&](const AutomationError& error) {
        if (!first) {
            first = error;
        }
    });
    if (first) {
        throw AutomationError(*first);
    }
}

void CallArguments::writeBackWhatFits() {
    storeAssigned([](const AutomationError& /*keptByTheVariable*/) {});
}

}  // namespace kap::platform::automation
