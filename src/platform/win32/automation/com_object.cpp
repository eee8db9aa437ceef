#include "platform/win32/automation/com_object.hpp"

#include <deque>
#include <vector>

#include <kaputil/automation/class_description.hpp>
#include <kaputil/automation/error.hpp>

#include "automation/same_value.hpp"
#include "platform/win32/automation/call_errors.hpp"
#include "platform/win32/automation/object_dispatch.hpp"
#include "platform/win32/automation/values.hpp"
#include "platform/win32/wide.hpp"

namespace kap::platform::automation {
namespace {

// The library's arguments as the system's, for the length of a call: the last one first, and the
// named ones in front of all.
class GivenArguments {
public:
    GivenArguments(const Arguments& arguments, bool byReference) : arguments_(arguments) {
        for (const Arguments::Named& one : arguments.named) {
            add(*one.value, byReference);
        }
        for (std::size_t i = arguments.positional.size(); i > 0; --i) {
            add(arguments.positional[i - 1], byReference);
        }
    }

    [[nodiscard]] VARIANT* passed() noexcept { return passed_.data(); }
    [[nodiscard]] UINT count() const noexcept { return static_cast<UINT>(passed_.size()); }

    // What the callee has assigned.
    void writeBack() {
        for (std::size_t i = 0; i < passed_.size(); ++i) {
            writeBack(i);
        }
    }

    // The same when it failed, which is what the caller has to see: a value that has no counterpart
    // here is left out.
    void writeBackWhatFits() {
        for (std::size_t i = 0; i < passed_.size(); ++i) {
            try {
                writeBack(i);
            } catch (const AutomationError&) {
                continue;
            }
        }
    }

private:
    void add(const Variant& value, bool byReference) {
        SystemValue& held = held_.emplace_back(value);
        VARIANT& one = passed_.emplace_back();
        if (byReference && !value.isMissing()) {
            V_VT(&one) = VT_BYREF | VT_VARIANT;
            V_VARIANTREF(&one) = &held.get();
        } else {
            one = held.get();  // which keeps owning it
        }
    }

    void writeBack(std::size_t passed) {
        if ((V_VT(&passed_[passed]) & VT_BYREF) == 0) {
            return;
        }
        const Variant now = fromSystem(held_[passed].get());
        if (!isSameValue(target(passed), now)) {
            target(passed) = now;
        }
    }

    [[nodiscard]] Variant& target(std::size_t passed) const {
        const std::size_t named = arguments_.named.size();
        if (passed < named) {
            return *arguments_.named[passed].value;
        }
        return arguments_.positional[arguments_.positional.size() - 1 - (passed - named)];
    }

    const Arguments& arguments_;
    std::deque<SystemValue> held_;  // which stay where they are
    std::vector<VARIANT> passed_;
};

WORD flagsOf(InvokeKind kind) {
    return static_cast<WORD>(kind);
}

}  // namespace

Ref<Object> objectBehind(IDispatch* dispatch) {
    if (dispatch == nullptr) {
        return {};
    }
    if (Ref<Object> own = ownObjectBehind(dispatch)) {
        return own;
    }
    return make<ComObject>(InterfacePointer<IDispatch>(dispatch));
}

ComObject::ComObject(InterfacePointer<IDispatch> dispatch) : dispatch_(std::move(dispatch)) {
    dispatch_->QueryInterface(__uuidof(IDispatchEx), extended_.outVoid());
}

String ComObject::className() const {
    InterfacePointer<ITypeInfo> information;
    BSTR name = nullptr;
    if (FAILED(dispatch_->GetTypeInfo(0, LOCALE_USER_DEFAULT, information.out())) || !information ||
        FAILED(information->GetDocumentation(MEMBERID_NIL, &name, nullptr, nullptr, nullptr))) {
        return u"Object";
    }
    String found = fromBstr(name);
    SysFreeString(name);
    return found;
}

HRESULT ComObject::findMember(const String& name, DISPID& id) const {
    if (extended_) {
        BSTR text = toBstr(name);
        const HRESULT result = extended_->GetDispID(text, fdexNameCaseInsensitive, &id);
        SysFreeString(text);
        return result;
    }
    auto* units = const_cast<LPOLESTR>(wide(name));  // the interface only reads it
    return dispatch_->GetIDsOfNames(IID_NULL, &units, 1, LOCALE_USER_DEFAULT, &id);
}

std::optional<std::int32_t> ComObject::memberId(std::u16string_view name) const {
    const String text(name);
    DISPID id = DISPID_UNKNOWN;
    if (FAILED(findMember(text, id))) {
        return std::nullopt;
    }
    names_.insert_or_assign(id, text);
    return id;
}

// Named arguments are known by the numbers that the object gives their names.
std::vector<DISPID> ComObject::parameterIds(std::int32_t member, const Arguments& arguments) const {
    if (arguments.named.empty()) {
        return {};
    }
    const auto name = names_.find(member);
    if (name == names_.end()) {
        throw AutomationError(errors::kNamedArgumentNotFound);
    }
    std::vector<LPOLESTR> names = {const_cast<LPOLESTR>(wide(name->second))};
    for (const Arguments::Named& one : arguments.named) {
        names.push_back(const_cast<LPOLESTR>(wide(one.name)));
    }
    std::vector<DISPID> ids(names.size());
    if (FAILED(dispatch_->GetIDsOfNames(IID_NULL, names.data(), static_cast<UINT>(names.size()),
                                        LOCALE_USER_DEFAULT, ids.data()))) {
        throw AutomationError(errors::kNamedArgumentNotFound);
    }
    ids.erase(ids.begin());
    return ids;
}

HRESULT ComObject::call(DISPID member, WORD flags, DISPPARAMS& parameters, VARIANT* result,
                        EXCEPINFO& information) const {
    if (extended_) {
        return extended_->InvokeEx(member, LOCALE_USER_DEFAULT, flags, &parameters, result,
                                   &information, nullptr);
    }
    UINT wrong = 0;
    return dispatch_->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, flags, &parameters, result,
                             &information, &wrong);
}

Variant ComObject::invoke(std::int32_t member, InvokeKind kind, const Arguments& arguments) {
    const bool assigns = mayBe(kind, InvokeKind::LetOrSet);
    std::vector<DISPID> ids = parameterIds(member, arguments);
    GivenArguments given(arguments, mayBe(kind, InvokeKind::Method) && !assigns);
    if (assigns) {
        ids.insert(ids.begin(), DISPID_PROPERTYPUT);
    }
    DISPPARAMS parameters{given.passed(), ids.data(), given.count(), static_cast<UINT>(ids.size())};
    SystemValue result;
    EXCEPINFO information{};
    const HRESULT code =
        call(member, flagsOf(kind), parameters, assigns ? nullptr : &result.get(), information);
    if (FAILED(code)) {
        given.writeBackWhatFits();
        raise(code, information);
    }
    given.writeBack();
    return fromSystem(result.get());
}

std::vector<Variant> ComObject::elements() {
    DISPPARAMS none{};
    SystemValue result;
    EXCEPINFO information{};
    const HRESULT code = call(DISPID_NEWENUM, DISPATCH_METHOD | DISPATCH_PROPERTYGET, none,
                              &result.get(), information);
    if (FAILED(code)) {
        raise(code, information);
    }
    const VARTYPE type = V_VT(&result.get());
    InterfacePointer<IEnumVARIANT> enumeration;
    if ((type != VT_UNKNOWN && type != VT_DISPATCH) || V_UNKNOWN(&result.get()) == nullptr ||
        FAILED(V_UNKNOWN(&result.get())->QueryInterface(IID_IEnumVARIANT, enumeration.outVoid()))) {
        throw AutomationError(errors::kMemberNotFound);
    }
    std::vector<Variant> values;
    for (;;) {
        SystemValue value;
        ULONG fetched = 0;
        if (enumeration->Next(1, &value.get(), &fetched) != S_OK || fetched == 0) {
            return values;
        }
        values.push_back(fromSystem(value.get()));
    }
}

}  // namespace kap::platform::automation
