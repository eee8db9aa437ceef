#include "com/server/class_factory.hpp"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <new>
#include <set>

#include <oaidl.h>

#include "platform/win32/automation/call_errors.hpp"
#include "platform/win32/automation/interface_pointer.hpp"
#include "platform/win32/automation/object_dispatch.hpp"

namespace kap::com {
namespace {

namespace automation = platform::automation;

class Factory;

// The factories there are, and the locks of clients.
struct Factories {
    std::mutex guard;
    std::set<const Factory*> all;
    std::atomic<long> locks{0};
};

Factories& factories() {
    static auto* const held = new Factories();  // the last factory may go after everything else
    return *held;
}

class Factory final : public IClassFactory, public ISupportErrorInfo {
public:
    explicit Factory(const ServedClass& served) : served_(served) {
        const std::lock_guard lock(factories().guard);
        factories().all.insert(this);
    }
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
            taken_ = taken_ || wanted == IID_IMarshal;
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
        factories().locks += lock != FALSE ? 1 : -1;
        return S_OK;
    }

    // Whether a client holds it. Of one that the system has taken for another apartment, which has
    // references of its own to it, one more is not a client's: Wine never gives back that with
    // which it took the factory.
    [[nodiscard]] bool isHeld() const noexcept { return count_ > (taken_ ? 1U : 0U); }

private:
    ~Factory() {
        const std::lock_guard lock(factories().guard);
        factories().all.erase(this);
    }

    std::atomic<ULONG> count_{1};
    std::atomic<bool> taken_{false};
    const ServedClass& served_;
};

}  // namespace

HRESULT factoryOf(const ServedClass& served, REFIID wanted, void** out) {
    automation::InterfacePointer<IClassFactory> made;
    *made.out() = new (std::nothrow) Factory(served);
    return made ? made->QueryInterface(wanted, out) : E_OUTOFMEMORY;
}

long factoryReferences() noexcept {
    Factories& known = factories();
    const std::lock_guard lock(known.guard);
    return known.locks + static_cast<long>(std::ranges::count_if(
                             known.all, [](const Factory* one) { return one->isHeld(); }));
}

}  // namespace kap::com
