#include "com/server/type_library.hpp"

#include <map>
#include <mutex>

#include <kaputil/automation/plain_text.hpp>

#include "com/server/module.hpp"
#include "com/type_libraries.hpp"
#include "platform/win32/automation/interface_pointer.hpp"
#include "platform/win32/automation/object_dispatch.hpp"
#include "platform/win32/wide.hpp"

namespace kap::com {
namespace {

namespace automation = platform::automation;

// One of the module's own type libraries, loaded when it is first asked for.
class CarriedTypes {
public:
    HRESULT find(const TypeLibrary& types, const String& identity, ITypeInfo** information) {
        const std::lock_guard lock(guard_);
        InterfacePointer<ITypeLib>& loaded = loaded_[types.resource];
        if (!loaded) {
            const HRESULT result =
                LoadTypeLibEx(platform::wide(carriedPath(types)), REGKIND_NONE, loaded.out());
            if (FAILED(result)) {
                return result;
            }
        }
        return loaded->GetTypeInfoOfGuid(automation::identityOf(identity), information);
    }

    void drop() {
        const std::lock_guard lock(guard_);
        loaded_.clear();
    }

private:
    template <class Interface>
    using InterfacePointer = automation::InterfacePointer<Interface>;

    std::mutex guard_;
    std::map<int, InterfacePointer<ITypeLib>> loaded_;  // by resource
};

CarriedTypes& carriedTypes() {
    static CarriedTypes own;
    return own;
}

HRESULT findType(const ClassDescription& description, const String& identity,
                 ITypeInfo** information) {
    const TypeLibrary* types = typeLibraryOf(description);
    return types == nullptr ? E_NOTIMPL : carriedTypes().find(*types, identity, information);
}

HRESULT interfaceOf(const ClassDescription& description, ITypeInfo** information) {
    return findType(description, description.interfaceId, information);
}

HRESULT classOf(const ClassDescription& description, ITypeInfo** information) {
    return findType(description, description.classId, information);
}

}  // namespace

std::u16string carriedPath(const TypeLibrary& types) {
    const std::u16string module = modulePath();
    return types.resource == 1 ? module
                               : module + u"\\" + String(plain::text(types.resource)).units();
}

void offerTypeInformation() {
    automation::setTypeInformation({&interfaceOf, &classOf});
}

void dropTypeInformation() {
    carriedTypes().drop();
}

}  // namespace kap::com
