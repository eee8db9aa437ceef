#include <kaputil/catalogue/create_object.hpp>

#include <mutex>
#include <string>
#include <unordered_map>
#include <utility>

#include <kaputil/catalogue/catalogue.hpp>
#include <kaputil/frame/error.hpp>

#include "frame/unicode.hpp"

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

const ClassDescription* findClass(std::u16string_view programmaticName) {
    const std::size_t point = programmaticName.find(u'.');
    const bool ofLibrary = point != std::u16string_view::npos &&
                           unicode::sameName(library().name, programmaticName.substr(0, point));
    for (const PublishedClass& published : publishedClasses()) {
        if (ofLibrary && unicode::sameName(published.name, programmaticName.substr(point + 1))) {
            return published.description;
        }
    }
    for (const PlatformClass& platform : platformClasses()) {
        if (unicode::sameName(platform.programmaticName, programmaticName)) {
            return platform.description;
        }
    }
    return nullptr;
}

}  // namespace

Ref<Object> createObject(std::u16string_view programmaticName) {
    if (const ObjectFactory factory = Factories::instance().find(programmaticName)) {
        return factory();
    }
    const ClassDescription* found = findClass(programmaticName);
    if (found == nullptr || found->create == nullptr ||
        found->instancing == Instancing::NotCreatable) {
        throw AutomationError(
            errors::kCannotCreateObject,
            String(u"ActiveX component can't create object '") + programmaticName + u"'");
    }
    return found->create();
}

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

}  // namespace kap
