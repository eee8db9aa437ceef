// What the system calls in the module.
#include <windows.h>

#include <olectl.h>

#include <cwchar>

#include "com/served_classes.hpp"
#include "com/server/class_factory.hpp"
#include "com/server/module.hpp"
#include "com/server/registration.hpp"
#include "com/server/system_connections.hpp"
#include "com/server/type_library.hpp"
#include "platform/win32/automation/call_errors.hpp"
#include "platform/win32/automation/object_dispatch.hpp"

using namespace kap::com;

extern "C" {

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, void* /*reserved*/) {
    if (reason == DLL_PROCESS_ATTACH) {
        setModule(module);
        offerTypeInformation();
        offerSystemConnections();
    }
    return TRUE;
}

STDAPI DllGetClassObject(REFCLSID wantedClass, REFIID wanted, void** out) {
    if (out == nullptr) {
        return E_POINTER;
    }
    *out = nullptr;
    const auto find = [&]() -> HRESULT {
        for (const ServedClass& one : servedClasses()) {
            if (kap::platform::automation::identityOf(one.classId) == wantedClass) {
                return factoryOf(one, wanted, out);
            }
        }
        return CLASS_E_CLASSNOTAVAILABLE;
    };
    return kap::platform::automation::guarded(find,
                                              &kap::platform::automation::reportByErrorObject);
}

STDAPI DllCanUnloadNow() {
    if (kap::platform::automation::liveViews() != 0 || factoryReferences() != 0) {
        return S_FALSE;
    }
    dropTypeInformation();
    return S_OK;
}

STDAPI DllRegisterServer() {
    return registerModule(allowedRegistration());
}

STDAPI DllUnregisterServer() {
    const HRESULT ofUser = unregisterModule(Registration::User);
    if (allowedRegistration() == Registration::User) {
        return ofUser;
    }
    return unregisterModule(Registration::Machine);
}

// With "user" for the user alone, whatever rights there are.
STDAPI DllInstall(BOOL install, PCWSTR what) {
    const bool forUser = what != nullptr && _wcsicmp(what, L"user") == 0;
    const Registration registration = forUser ? Registration::User : allowedRegistration();
    return install != FALSE ? registerModule(registration) : unregisterModule(registration);
}

}  // extern "C"
