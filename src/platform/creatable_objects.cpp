#include <kaputil/platform/creatable_objects.hpp>

#include <mutex>
#include <string>
#include <unordered_map>
#include <utility>

#include <kaputil/automation/error.hpp>

#include "base/unicode.hpp"

namespace kap {
namespace {

// The clients' factories, shared by all threads.
class Factories {
public:
    static Factories& instance() {
        static Factories factories;
        return factories;
    }

    void put(std::u16string_view name, ObjectFactory factory) {
        const std::lock_guard lock(guard_);
        factories_.insert_or_assign(std::u16string(name), std::move(factory));
    }

    void remove(std::u16string_view name) {
        const std::lock_guard lock(guard_);
        factories_.erase(std::u16string(name));
    }

    // A copy: it is called without the lock, for a factory may itself create or register objects.
    [[nodiscard]] ObjectFactory find(std::u16string_view name) const {
        const std::lock_guard lock(guard_);
        const auto found = factories_.find(std::u16string(name));
        return found == factories_.end() ? ObjectFactory() : found->second;
    }

private:
    mutable std::mutex guard_;
    std::unordered_map<std::u16string, ObjectFactory, unicode::NameHash, unicode::NameEqual>
        factories_;
};

}  // namespace

void registerFactory(std::u16string_view programmaticName, ObjectFactory factory) {
    if (programmaticName.empty() || !factory) {
        throw AutomationError(errors::kInvalidArgument,
                              u"A factory needs a programmatic name and a function.");
    }
    Factories::instance().put(programmaticName, std::move(factory));
}

void unregisterFactory(std::u16string_view programmaticName) {
    Factories::instance().remove(programmaticName);
}

ObjectFactory registeredFactory(std::u16string_view programmaticName) {
    return Factories::instance().find(programmaticName);
}

namespace platform {

Ref<Object> createObject(std::u16string_view programmaticName) {
    if (const ObjectFactory factory = registeredFactory(programmaticName)) {
        return factory();
    }
    if (Ref<Object> made = createHostObject(programmaticName)) {
        return made;
    }
    throw AutomationError(
        errors::kCannotCreateObject,
        String(u"ActiveX component can't create object '") + programmaticName + u"'");
}

}  // namespace platform
}  // namespace kap
