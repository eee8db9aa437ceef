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

    // Factories are dropped without the lock, too: what ends with them is the client's own, and may
    // wait for a thread that waits here.
    void put(std::u16string_view name, ObjectFactory factory) {
        const std::lock_guard lock(guard_);
        factories_[std::u16string(name)].swap(factory);
    }

    void remove(std::u16string_view name) {
        ObjectFactory dropped;
        const std::lock_guard lock(guard_);
        const auto found = factories_.find(std::u16string(name));
        if (found != factories_.end()) {
            dropped = std::move(found->second);
            factories_.erase(found);
        }
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

// The class's name in a programmatic name of the library's; empty in any other.
std::u16string_view nameInLibrary(std::u16string_view programmaticName) {
    const std::size_t point = programmaticName.find(u'.');
    if (point == std::u16string_view::npos ||
        !unicode::sameName(library().name, programmaticName.substr(0, point))) {
        return {};
    }
    return programmaticName.substr(point + 1);
}

const ClassDescription* findClass(std::u16string_view programmaticName) {
    if (const std::u16string_view name = nameInLibrary(programmaticName); !name.empty()) {
        for (const PublishedClass& published : publishedClasses()) {
            if (unicode::sameName(published.name, name)) {
                return published.description;
            }
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
