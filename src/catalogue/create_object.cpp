#include <kaputil/catalogue/create_object.hpp>

#include <kaputil/automation/error.hpp>
#include <kaputil/catalogue/catalogue.hpp>

#include "base/unicode.hpp"

namespace kap {
namespace {

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
    if (const ObjectFactory factory = registeredFactory(programmaticName)) {
        return factory();
    }
    const ClassDescription* found = findClass(programmaticName);
    if (found == nullptr) {
        return platform::createObject(programmaticName);
    }
    if (found->create == nullptr || found->instancing == Instancing::NotCreatable) {
        throw AutomationError(
            errors::kCannotCreateObject,
            String(u"ActiveX component can't create object '") + programmaticName + u"'");
    }
    return found->create();
}

}  // namespace kap
