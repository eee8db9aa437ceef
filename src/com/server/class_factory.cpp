#include "com/server/class_factory.hpp"

#include <atomic>
#include <new>

#include <oaidl.h>

#include "platform/win32/automation/call_errors.hpp"
#include "platform/win32/automation/interface_pointer.hpp"
#include "platform/win32/automation/object_dispatch.hpp"

namespace kap::com {
namespace {

namespace automation = platform::automation;

std::atomic<long> references{0};

class Factory final : public IClassFactory, public ISupportErrorInfo {
public:
    explicit Factory(const ServedClass& served) : served_(served) { ++references; }
    Factory(const Factory&) = delete;
    Factory& operator=(const Factory&) = delete;

    STDMETHODIMP QueryInterface(REFIID wanted, void** out) override {
        if (out == nullptr) {
            return E_POINTER;
        }
        if (wanted == IID_IUnknown || wanted == IID_IClassFactory) {
            *out = static_cast<IClassFactory*>(this);
        } else if (wanted == IID_ISupportErrorInfo) {
            *out = static_cast<ISupportErrorInfo*>(this);
        } else {
            *out = nullptr;
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++count_; }
    STDMETHODIMP_(ULONG) Release() override {
        const ULONG left = --count_;
        if (left == 0) {
            delete this;
        }
        return left;
    }

    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID wanted, void** out) override {
        if (out == nullptr) {
            return E_POINTER;
        }
        *out = nullptr;
        if (outer != nullptr) {
            return CLASS_E_NOAGGREGATION;
        }
        const auto create = [&]() -> HRESULT {
            automation::InterfacePointer<IDispatch> made;
            *made.out() = automation::dispatchOf(served_.description->create());
            return made->QueryInterface(wanted, out);
        };
        return automation::guarded(create, &automation::reportByErrorObject);
    }
    // Languages ask whether the error object is ours before they show it.
    STDMETHODIMP InterfaceSupportsErrorInfo(REFIID asked) override {
        return asked == IID_IClassFactory ? S_OK : S_FALSE;
    }
    STDMETHODIMP LockServer(BOOL lock) override {
        references += lock != FALSE ? 1 : -1;
        return S_OK;
    }

private:
    ~Factory() { --references; }

    std::atomic<ULONG> count_{1};
    const ServedClass& served_;
};

}  // namespace

HRESULT factoryOf(const ServedClass& served, REFIID wanted, void** out) {
    automation::InterfacePointer<IClassFactory> made;
    *made.out() = new (std::nothrow) Factory(served);
    return made ? made->QueryInterface(wanted, out) : E_OUTOFMEMORY;
}

long factoryReferences() noexcept {
    return references;
}

}  // namespace kap::com
