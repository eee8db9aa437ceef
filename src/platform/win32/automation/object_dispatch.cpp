#include "platform/win32/automation/object_dispatch.hpp"

#include <atomic>
#include <mutex>
#include <new>
#include <unordered_map>

#include <ocidl.h>

#include <kaputil/automation/error.hpp>

#include "base/unicode.hpp"
#include "platform/win32/automation/call_arguments.hpp"
#include "platform/win32/automation/call_errors.hpp"
#include "platform/win32/automation/client_locale.hpp"
#include "platform/win32/automation/com_object.hpp"
#include "platform/win32/automation/connection_points.hpp"
#include "platform/win32/automation/element_enumeration.hpp"
#include "platform/win32/automation/values.hpp"
#include "platform/win32/wide.hpp"

namespace kap::platform::automation {
namespace {

// Answered by the views of this module alone: another copy of the library has its own memory and is
// as foreign as anybody.
const GUID& ownView() {
    static const GUID identity = [] {
        GUID made{};
        CoCreateGuid(&made);
        return made;
    }();
    return identity;
}

constexpr const char16_t* kEnumerationMember = u"_NewEnum";

TypeInformationSource typeInformation{};

class View;

// The views there are, by object: an object has one, so that clients can compare.
struct Views {
    std::mutex guard;
    std::unordered_map<const Object*, View*> byObject;
};

Views& views() {
    static auto* const all = new Views();  // the last view may go after everything else
    return *all;
}

class View final : public IDispatch, public IProvideClassInfo2, public IConnectionPointContainer {
public:
    explicit View(Ref<Object> object)
        : object_(std::move(object)), description_(descriptionOf(*object_)) {
        ++count;
    }
    View(const View&) = delete;
    View& operator=(const View&) = delete;

    [[nodiscard]] const Ref<Object>& object() const noexcept { return object_; }

    // Takes a reference unless the last one is just going. Called while the views are locked.
    bool retainIfAlive() noexcept {
        ULONG held = references_.load();
        while (held != 0 && !references_.compare_exchange_weak(held, held + 1)) {
        }
        return held != 0;
    }

    STDMETHODIMP QueryInterface(REFIID wanted, void** out) override;
    STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
    STDMETHODIMP_(ULONG) Release() override;

    STDMETHODIMP GetTypeInfoCount(UINT* number) override;
    STDMETHODIMP GetTypeInfo(UINT index, LCID locale, ITypeInfo** out) override;
    STDMETHODIMP GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT number, LCID locale,
                               DISPID* ids) override;
    STDMETHODIMP Invoke(DISPID member, REFIID reserved, LCID locale, WORD flags,
                        DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* information,
                        UINT* wrongArgument) override;

    STDMETHODIMP GetClassInfo(ITypeInfo** out) override;
    STDMETHODIMP GetGUID(DWORD kind, GUID* out) override;

    STDMETHODIMP EnumConnectionPoints(IEnumConnectionPoints** out) override {
        return enumerateConnectionPoints(object_, *this, out);
    }
    STDMETHODIMP FindConnectionPoint(REFIID wanted, IConnectionPoint** out) override {
        return findConnectionPoint(object_, *this, wanted, out);
    }

    static inline std::atomic<long> count{0};

private:
    ~View() { --count; }

    HRESULT enumerate(VARIANT* result);
    HRESULT call(DISPID member, WORD flags, const DISPPARAMS& parameters, VARIANT* result);
    [[nodiscard]] const MemberDescription* describe(DISPID member) const {
        return description_ == nullptr ? nullptr : description_->find(member);
    }

    std::atomic<ULONG> references_{1};
    Ref<Object> object_;
    const ClassDescription* description_;
    DWORD owner_ = GetCurrentThreadId();
};

STDMETHODIMP View::QueryInterface(REFIID wanted, void** out) {
    if (out == nullptr) {
        return E_POINTER;
    }
    if (wanted == IID_IUnknown || wanted == IID_IDispatch ||
        (description_ != nullptr && !description_->interfaceId.empty() &&
         wanted == identityOf(description_->interfaceId))) {
        *out = static_cast<IDispatch*>(this);
    } else if (wanted == ownView()) {
        *out = this;
    } else if (wanted == IID_IProvideClassInfo || wanted == IID_IProvideClassInfo2) {
        *out = static_cast<IProvideClassInfo2*>(this);
    } else if (wanted == IID_IConnectionPointContainer && eventsOf(object_) != nullptr) {
        *out = static_cast<IConnectionPointContainer*>(this);
    } else {
        *out = nullptr;
        return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
}

STDMETHODIMP_(ULONG) View::Release() {
    const ULONG left = --references_;
    if (left == 0) {
        {
            Views& all = views();
            const std::lock_guard lock(all.guard);
            const auto found = all.byObject.find(object_.get());
            if (found != all.byObject.end() && found->second == this) {
                all.byObject.erase(found);
            }
        }
        delete this;
    }
    return left;
}

STDMETHODIMP View::GetTypeInfoCount(UINT* number) {
    if (number == nullptr) {
        return E_POINTER;
    }
    InterfacePointer<ITypeInfo> information;
    *number = SUCCEEDED(GetTypeInfo(0, LOCALE_USER_DEFAULT, information.out())) ? 1 : 0;
    return S_OK;
}

STDMETHODIMP View::GetTypeInfo(UINT index, LCID /*locale*/, ITypeInfo** out) {
    if (out == nullptr) {
        return E_POINTER;
    }
    *out = nullptr;
    if (index != 0) {
        return DISP_E_BADINDEX;
    }
    if (typeInformation.interfaceOf == nullptr || description_ == nullptr) {
        return E_NOTIMPL;
    }
    return typeInformation.interfaceOf(*description_, out);
}

STDMETHODIMP View::GetClassInfo(ITypeInfo** out) {
    if (out == nullptr) {
        return E_POINTER;
    }
    *out = nullptr;
    if (typeInformation.classOf == nullptr || description_ == nullptr) {
        return E_NOTIMPL;
    }
    return typeInformation.classOf(*description_, out);
}

// The only identity that is asked for: of the interface of the events.
STDMETHODIMP View::GetGUID(DWORD kind, GUID* out) {
    if (out == nullptr) {
        return E_POINTER;
    }
    *out = {};
    const EventSource* source = eventsOf(object_);
    if (source == nullptr || kind != GUIDKIND_DEFAULT_SOURCE_DISP_IID) {
        return E_INVALIDARG;
    }
    *out = eventInterfaceOf(*source);
    return S_OK;
}

std::optional<DISPID> parameterId(const MemberDescription* member, std::u16string_view name) {
    if (member != nullptr) {
        for (std::size_t i = 0; i < member->parameters.size(); ++i) {
            if (unicode::sameName(member->parameters[i].name, name)) {
                return static_cast<DISPID>(i);
            }
        }
    }
    return std::nullopt;
}

STDMETHODIMP View::GetIDsOfNames(REFIID /*reserved*/, LPOLESTR* names, UINT number, LCID /*locale*/,
                                 DISPID* ids) {
    if (names == nullptr || ids == nullptr || number == 0) {
        return E_INVALIDARG;
    }
    const auto find = [&]() -> HRESULT {
        const std::u16string_view name = narrowView(names[0]);
        const MemberDescription* member =
            description_ == nullptr ? nullptr : description_->find(name);
        std::optional<DISPID> id =
            member == nullptr ? std::nullopt : std::optional<DISPID>(member->dispatchId);
        if (description_ == nullptr) {
            id = object_->memberId(name);
        }
        if (!id && unicode::sameName(name, kEnumerationMember)) {
            id = DISPID_NEWENUM;
        }
        ids[0] = id.value_or(DISPID_UNKNOWN);
        bool allKnown = id.has_value();
        for (UINT i = 1; i < number; ++i) {
            const auto parameter = parameterId(member, narrowView(names[i]));
            ids[i] = parameter.value_or(DISPID_UNKNOWN);
            allKnown = allKnown && parameter.has_value();
        }
        return allKnown ? S_OK : DISP_E_UNKNOWNNAME;
    };
    return guarded(find, &reportByErrorObject);
}

HRESULT View::enumerate(VARIANT* result) {
    if (result == nullptr) {
        return E_POINTER;
    }
    V_UNKNOWN(result) = enumerationOf(object_->elements());
    V_VT(result) = VT_UNKNOWN;
    return S_OK;
}

HRESULT View::call(DISPID member, WORD flags, const DISPPARAMS& parameters, VARIANT* result) {
    constexpr WORD kAssigning = DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF;
    const MemberDescription* described = describe(member);
    if (description_ != nullptr && described == nullptr) {
        return DISP_E_MEMBERNOTFOUND;
    }
    const bool assigns = (flags & kAssigning) != 0;
    CallArguments arguments(parameters, described, assigns);
    // Some languages call properties with arguments as if they were methods.
    const int called = (flags & DISPATCH_METHOD) != 0 ? flags | DISPATCH_PROPERTYGET : flags;
    auto kind =
        static_cast<InvokeKind>(called & (DISPATCH_METHOD | DISPATCH_PROPERTYGET | kAssigning));
    const Arguments given = arguments.arguments();
    // Languages without a statement for references assign objects as they assign values.
    if (assigns && !given.positional.empty() && given.positional.back().isObject() &&
        (flags & DISPATCH_PROPERTYPUT) != 0) {
        kind = InvokeKind::LetOrSet;
    }
    const Variant value = [&] {
        try {
            // Looked up once: who has a description is described by it.
            return described == nullptr
                       ? object_->invoke(member, kind, given)
                       : static_cast<DescribedObject&>(*object_).invoke(*described, kind, given);
        } catch (...) {
            // A reference keeps what it was given before the failure.
            arguments.writeBackWhatFits();
            throw;
        }
    }();
    arguments.writeBack();
    if (result != nullptr) {
        toSystem(value, *result);
    }
    return S_OK;
}

STDMETHODIMP View::Invoke(DISPID member, REFIID /*reserved*/, LCID locale, WORD flags,
                          DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* information,
                          UINT* /*wrongArgument*/) {
    if (GetCurrentThreadId() != owner_) {
        return RPC_E_WRONG_THREAD;
    }
    if (parameters == nullptr || parameters->cNamedArgs > parameters->cArgs) {
        return E_INVALIDARG;
    }
    if (result != nullptr) {
        *result = VARIANT{};
    }
    // The caller may drop its last reference while the member runs.
    const InterfacePointer<IDispatch> keep(static_cast<IDispatch*>(this));
    const auto answer = [&]() -> HRESULT {
        useClientLocale(locale);
        if (member == DISPID_NEWENUM) {
            return enumerate(result);
        }
        return call(member, flags, *parameters, result);
    };
    return guarded(answer,
                   [&](const AutomationError& error) { return report(error, information); });
}

}  // namespace

IDispatch* dispatchOf(const Ref<Object>& object) {
    if (!object) {
        return nullptr;
    }
    if (const auto* foreign = dynamic_cast<const ComObject*>(object.get())) {
        return InterfacePointer<IDispatch>(foreign->dispatch()).detach();
    }
    Views& all = views();
    const std::lock_guard lock(all.guard);
    const auto found = all.byObject.find(object.get());
    if (found != all.byObject.end() && found->second->retainIfAlive()) {
        return found->second;
    }
    auto* made = new View(object);
    all.byObject.insert_or_assign(object.get(), made);
    return made;
}

Ref<Object> ownObjectBehind(IDispatch* dispatch) {
    InterfacePointer<View> view;
    if (dispatch == nullptr || FAILED(dispatch->QueryInterface(ownView(), view.outVoid()))) {
        return {};
    }
    return view->object();
}

long liveViews() noexcept {
    return View::count + liveEnumerations() + liveConnectionPoints();
}

void setTypeInformation(const TypeInformationSource& source) {
    typeInformation = source;
}

GUID identityOf(const String& text) {
    GUID identity{};
    const String braced = u"{" + text + u"}";
    CLSIDFromString(wide(braced), &identity);
    return identity;
}

}  // namespace kap::platform::automation
