#pragma once

#include <windows.h>

#include <oleauto.h>

#include <kaputil/automation/class_description.hpp>

#include "platform/win32/automation/interface_pointer.hpp"

namespace kap::platform::automation {

// A client's sink of events: an implementation of their interface, which it knows from the type
// library. It is called by the identifiers there, and gets exactly the types that it finds there. A
// member that it does not answer to, and a sink whose program has ended, is passed over.
class EventSink final : public Object {
public:
    EventSink(InterfacePointer<IDispatch> dispatch, const ClassDescription& events)
        : dispatch_(std::move(dispatch)), events_(events) {}

    [[nodiscard]] const InterfacePointer<IDispatch>& dispatch() const noexcept { return dispatch_; }

    [[nodiscard]] String className() const override { return events_.name; }
    [[nodiscard]] std::optional<std::int32_t> memberId(std::u16string_view name) const override;
    using Object::invoke;
    Variant invoke(std::int32_t member, InvokeKind kind, const Arguments& arguments) override;

private:
    InterfacePointer<IDispatch> dispatch_;
    const ClassDescription& events_;
};

}  // namespace kap::platform::automation
