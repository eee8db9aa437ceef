#pragma once

#include <windows.h>

#include <dispex.h>
#include <oleauto.h>

#include <optional>
#include <string>
#include <unordered_map>

#include <kaputil/automation/object.hpp>
#include <kaputil/automation/ref.hpp>

#include "platform/win32/automation/interface_pointer.hpp"

namespace kap::platform::automation {

// Any object of the system's component model as one of the library's: a form, a text box, another
// maker's recordset, the mail client. Its members are what its dispatch interface answers to.
//
// Methods get their arguments by reference, so that what they assign reaches the library.
class ComObject final : public Object {
public:
    explicit ComObject(InterfacePointer<IDispatch> dispatch);

    [[nodiscard]] const InterfacePointer<IDispatch>& dispatch() const noexcept { return dispatch_; }

    [[nodiscard]] String className() const override;
    [[nodiscard]] std::optional<std::int32_t> memberId(std::u16string_view name) const override;
    using Object::invoke;
    Variant invoke(std::int32_t member, InvokeKind kind, const Arguments& arguments) override;
    [[nodiscard]] std::vector<Variant> elements() override;

private:
    [[nodiscard]] HRESULT findMember(const String& name, DISPID& id) const;
    HRESULT call(DISPID member, WORD flags, DISPPARAMS& parameters, VARIANT* result,
                 EXCEPINFO& information) const;
    [[nodiscard]] std::vector<DISPID> parameterIds(std::int32_t member,
                                                   const Arguments& arguments) const;

    InterfacePointer<IDispatch> dispatch_;
    InterfacePointer<IDispatchEx>
        extended_;  // of objects that scripts make; they want to be called by it
    mutable std::unordered_map<std::int32_t, String> names_;  // of the members asked for
};

// The object behind a dispatch interface: the library's own where it is one of those, the unset
// object for null.
[[nodiscard]] Ref<Object> objectBehind(IDispatch* dispatch);

}  // namespace kap::platform::automation
