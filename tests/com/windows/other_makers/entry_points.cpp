// Components of other makers, which the library works with: a mail client and data-access objects.
// They stay loaded, for tests end with their process.
#include <windows.h>

#include <unknwn.h>

#include "data_access.hpp"
#include "mail_objects.hpp"
#include "platform/win32/automation/interface_pointer.hpp"
#include "platform/win32/automation/object_dispatch.hpp"

namespace {

namespace automation = kap::platform::automation;

using Maker = kap::Ref<kap::Object> (*)();

class Factory final : public IClassFactory {
public:
    explicit Factory(Maker make) : make_(make) {}

    STDMETHODIMP QueryInterface(REFIID /*wanted*/, void** out) override {
        *out = static_cast<IClassFactory*>(this);
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP CreateInstance(IUnknown* /*outer*/, REFIID wanted, void** out) override {
        automation::InterfacePointer<IDispatch> made;
        *made.out() = automation::dispatchOf(make_());
        return made->QueryInterface(wanted, out);
    }
    STDMETHODIMP LockServer(BOOL /*lock*/) override { return S_OK; }

private:
    Maker make_;
};

}  // namespace

extern "C" {

STDAPI DllGetClassObject(REFCLSID wantedClass, REFIID wanted, void** out) {
    static Factory mail(&kap::test::makeMailClient);
    static Factory connections(&kap::test::makeConnection);
    const bool isMail =
        wantedClass == automation::identityOf(u"7d1f5b53-5d0b-4b53-9c56-1f5f6f7d1a01");
    return (isMail ? mail : connections).QueryInterface(wanted, out);
}

STDAPI DllCanUnloadNow() {
    return S_FALSE;
}

}  // extern "C"
