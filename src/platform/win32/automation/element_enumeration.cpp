#include "platform/win32/automation/element_enumeration.hpp"

#include <atomic>
#include <memory>
#include <new>

#include <kaputil/automation/error.hpp>

#include "platform/win32/automation/call_errors.hpp"
#include "platform/win32/automation/values.hpp"

namespace kap::platform::automation {
namespace {

class ElementEnumeration final : public IEnumVARIANT {
public:
    using Elements = std::shared_ptr<const std::vector<Variant>>;

    ElementEnumeration(Elements elements, std::size_t position)
        : elements_(std::move(elements)), position_(position) {
        ++count;
    }
    ElementEnumeration(const ElementEnumeration&) = delete;
    ElementEnumeration& operator=(const ElementEnumeration&) = delete;

    STDMETHODIMP QueryInterface(REFIID wanted, void** out) override {
        if (out == nullptr) {
            return E_POINTER;
        }
        if (wanted != IID_IUnknown && wanted != IID_IEnumVARIANT) {
            *out = nullptr;
            return E_NOINTERFACE;
        }
        *out = static_cast<IEnumVARIANT*>(this);
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
    STDMETHODIMP_(ULONG) Release() override {
        const ULONG left = --references_;
        if (left == 0) {
            delete this;
        }
        return left;
    }

    STDMETHODIMP Next(ULONG wanted, VARIANT* values, ULONG* fetched) override {
        const auto give = [&]() -> HRESULT {
            ULONG given = 0;
            for (; given < wanted && position_ < elements_->size(); ++given, ++position_) {
                toSystem((*elements_)[position_], values[given]);
            }
            if (fetched != nullptr) {
                *fetched = given;
            }
            return given == wanted ? S_OK : S_FALSE;
        };
        return guarded(give, &reportByErrorObject);
    }
    STDMETHODIMP Skip(ULONG number) override {
        const std::size_t left = elements_->size() - position_;
        position_ += left < number ? left : number;
        return left < number ? S_FALSE : S_OK;
    }
    STDMETHODIMP Reset() override {
        position_ = 0;
        return S_OK;
    }
    STDMETHODIMP Clone(IEnumVARIANT** out) override {
        if (out == nullptr) {
            return E_POINTER;
        }
        *out = new (std::nothrow) ElementEnumeration(elements_, position_);
        return *out == nullptr ? E_OUTOFMEMORY : S_OK;
    }

    static inline std::atomic<long> count{0};

private:
    ~ElementEnumeration() { --count; }

    std::atomic<ULONG> references_{1};
    Elements elements_;
    std::size_t position_;
};

}  // namespace

IUnknown* enumerationOf(std::vector<Variant> elements) {
    return new ElementEnumeration(std::make_shared<const std::vector<Variant>>(std::move(elements)),
                                  0);
}

long liveEnumerations() noexcept {
    return ElementEnumeration::count;
}

}  // namespace kap::platform::automation
