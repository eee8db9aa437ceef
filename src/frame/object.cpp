#include <kaputil/frame/object.hpp>

#include <kaputil/frame/class_description.hpp>
#include <kaputil/frame/error.hpp>

namespace kap {

Variant Object::invoke(std::u16string_view member, InvokeKind kind, const Arguments& arguments) {
    const auto id = memberId(member);
    if (!id) {
        throw AutomationError(errors::kMemberNotFound);
    }
    return invoke(*id, kind, arguments);
}

std::vector<Variant> Object::elements() {
    throw AutomationError(errors::kMemberNotFound);
}

Variant Object::defaultValue() {
    try {
        return invoke(kDefaultMember, InvokeKind::MethodOrGet, Arguments{});
    } catch (const AutomationError& error) {
        if (error.number() == errors::kMemberNotFound ||
            error.number() == errors::kArgumentNotOptional) {
            throw AutomationError(errors::kTypeMismatch);
        }
        throw;
    }
}

}  // namespace kap
