#include <kaputil/platform/creatable_objects.hpp>

#include <algorithm>
#include <mutex>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include <kaputil/frame/error.hpp>

#include "frame/unicode.hpp"
#include "platform/files/file_system_object.hpp"
#include "platform/mail/application.hpp"

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

std::span<const PlatformClass> hostClasses() {
    static const std::vector<PlatformClass> classes = {
        {u"Scripting.FileSystemObject", &files::FileSystemObject::classDescription()},
        {u"Outlook.Application", &mail::Application::classDescription()}};
    return classes;
}

Ref<Object> createObject(std::u16string_view programmaticName) {
    if (const ObjectFactory factory = registeredFactory(programmaticName)) {
        return factory();
    }
    const auto found = std::ranges::find_if(hostClasses(), [&](const PlatformClass& known) {
        return unicode::sameName(known.programmaticName, programmaticName);
    });
    if (found == hostClasses().end()) {
        throw AutomationError(
            errors::kCannotCreateObject,
            String(u"ActiveX component can't create object '") + programmaticName + u"'");
    }
    return found->description->create();
}

}  // namespace platform
}  // namespace kap
