#include <kaputil/automation/object.hpp>

#include <memory>
#include <new>
#include <utility>
#include <vector>

#include <kaputil/automation/class_description.hpp>
#include <kaputil/automation/error.hpp>

namespace kap {
namespace {

constexpr int kDeepestEnd = 100;

// The objects that are ending in this thread: how deep within each other, and those that wait for
// the outermost one. Without a destructor of its own: objects end also while the thread does.
struct Ending {
    int depth;
    std::vector<const Object*>* waiting;
};

Ending& endingOfThread() noexcept {
    thread_local Ending ending{};
    return ending;
}

// False when there is no memory for it.
bool putOff(Ending& ending, const Object* object) noexcept {
    try {
        if (ending.waiting == nullptr) {
            ending.waiting = new std::vector<const Object*>();
        }
        ending.waiting->push_back(object);
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

}  // namespace

void Object::destroy() const noexcept {
    Ending& ending = endingOfThread();
    if (ending.depth >= kDeepestEnd && putOff(ending, this)) {
        return;
    }
    ++ending.depth;
    delete this;
    while (ending.depth == 1 && ending.waiting != nullptr) {
        const std::unique_ptr<std::vector<const Object*>> waiting(
            std::exchange(ending.waiting, nullptr));
        for (const Object* next : *waiting) {
            delete next;
        }
    }
    --ending.depth;
}

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
