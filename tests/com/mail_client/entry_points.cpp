// A component of its own, as another maker's mail client is one. It stays loaded: tests end with
// their process.
#include <windows.h>

#include <unknwn.h>

#include "mail_objects.hpp"
#include "platform/win32/automation/interface_pointer.hpp"
#include "platform/win32/automation/object_dispatch.hpp"

namespace {

namespace automation = kap::platform::automation;

class Factory final : public IClassFactory {
public:
    STDMETHODIMP QueryInterface(REFIID /*wanted*/, void** out) override {
        *out = static_cast<IClassFactory*>(this);
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP CreateInstance(IUnknown* /*outer*/, REFIID wanted, void** out) override {
        automation::InterfacePointer<IDispatch> made;
        *made.out() = automation::dispatchOf(kap::test::makeMailClient());
        return made->QueryInterface(wanted, out);
    }
    STDMETHODIMP LockServer(BOOL /*lock*/) override { return S_OK; }
};

}  // namespace

extern "C" {

STDAPI DllGetClassObject(REFCLSID /*wantedClass*/, REFIID wanted, void** out) {
    static Factory factory;
    return factory.QueryInterface(wanted, out);
}

STDAPI DllCanUnloadNow() {
    return S_FALSE;
}

}  // extern "C"
