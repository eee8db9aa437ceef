#include "com/server/type_library.hpp"

#include <mutex>

#include <kaputil/catalogue/catalogue.hpp>

#include "com/server/module.hpp"
#include "platform/win32/automation/interface_pointer.hpp"
#include "platform/win32/automation/object_dispatch.hpp"
#include "platform/win32/wide.hpp"

namespace kap::com {
namespace {

namespace automation = platform::automation;

// The module's own type library, loaded when it is first asked for.
class TypeLibrary {
public:
    HRESULT find(const String& identity, ITypeInfo** information) {
        const std::lock_guard lock(guard_);
        if (!loaded_) {
            const HRESULT result =
                LoadTypeLibEx(platform::wide(modulePath()), REGKIND_NONE, loaded_.out());
            if (FAILED(result)) {
                return result;
            }
        }
        return loaded_->GetTypeInfoOfGuid(automation::identityOf(identity), information);
    }

    void drop() {
        const std::lock_guard lock(guard_);
        loaded_ = {};
    }

private:
    std::mutex guard_;
    automation::InterfacePointer<ITypeLib> loaded_;
};

TypeLibrary& typeLibrary() {
    static TypeLibrary own;
    return own;
}

bool isPublished(const ClassDescription& description) {
    for (const PublishedClass& one : publishedClasses()) {
        if (one.description == &description) {
            return true;
        }
    }
    return false;
}

HRESULT interfaceOf(const ClassDescription& description, ITypeInfo** information) {
    return isPublished(description) ? typeLibrary().find(description.interfaceId, information)
                                    : E_NOTIMPL;
}

HRESULT classOf(const ClassDescription& description, ITypeInfo** information) {
    return isPublished(description) ? typeLibrary().find(description.classId, information)
                                    : E_NOTIMPL;
}

}  // namespace

void offerTypeInformation() {
    automation::setTypeInformation({&interfaceOf, &classOf});
}

void dropTypeInformation() {
    typeLibrary().drop();
}

}  // namespace kap::com
