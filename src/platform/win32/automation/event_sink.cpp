#include "platform/win32/automation/event_sink.hpp"

#include <deque>
#include <optional>
#include <utility>
#include <vector>

#include <kaputil/automation/error.hpp>

#include "platform/win32/automation/call_errors.hpp"
#include "platform/win32/automation/values.hpp"

namespace kap::platform::automation {
namespace {

// The arguments of one event as the system passes them, the last one first.
class EventArguments {
public:
    EventArguments(const MemberDescription& event, std::span<Variant> arguments)
        : event_(event), arguments_(arguments), passed_(arguments.size()) {
        for (std::size_t i = 0; i < arguments.size(); ++i) {
            VARIANT& held = held_.emplace_back(arguments[i]).get();
            VARIANT& one = passed_[arguments.size() - 1 - i];
            if (event.parameters[i].byReference) {
                V_VT(&one) = static_cast<VARTYPE>(VT_BYREF | V_VT(&held));
                V_BYREF(&one) = &V_I8(&held);
            } else {
                one = held;  // which keeps owning it
            }
        }
    }

    [[nodiscard]] DISPPARAMS parameters() noexcept {
        return {passed_.data(), nullptr, static_cast<UINT>(passed_.size()), 0};
    }

    void takeBack() {
        for (std::size_t i = 0; i < arguments_.size(); ++i) {
            if (event_.parameters[i].byReference) {
                arguments_[i] = fromSystem(held_[i].get());
            }
        }
    }

private:
    const MemberDescription& event_;
    std::span<Variant> arguments_;
    std::deque<SystemValue> held_;  // which stay where they are
    std::vector<VARIANT> passed_;
};

bool isNobody(HRESULT code) {
    switch (code) {
        case DISP_E_MEMBERNOTFOUND:
        case DISP_E_UNKNOWNNAME:
        case E_NOTIMPL:
        case RPC_E_DISCONNECTED:
        case RPC_E_SERVER_DIED:
        case RPC_E_SERVER_DIED_DNE:
        case CO_E_OBJNOTCONNECTED:
            return true;
        default:
            return code == HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE);
    }
}

}  // namespace

std::optional<std::int32_t> EventSink::memberId(std::u16string_view name) const {
    const MemberDescription* event = events_.find(name);
    return event == nullptr ? std::nullopt : std::optional(event->dispatchId);
}

Variant EventSink::invoke(std::int32_t member, InvokeKind /*kind*/, const Arguments& arguments) {
    const MemberDescription* event = events_.find(member);
    if (event == nullptr || event->parameters.size() != arguments.positional.size()) {
        throw AutomationError(errors::kWrongNumberOfArguments);
    }
    EventArguments given(*event, arguments.positional);
    DISPPARAMS parameters = given.parameters();
    EXCEPINFO information{};
    UINT wrong = 0;
    const HRESULT code = dispatch_->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD,
                                           &parameters, nullptr, &information, &wrong);
    if (isNobody(code)) {
        return {};
    }
    if (FAILED(code)) {
        raise(code, information);
    }
    given.takeBack();
    return {};
}

}  // namespace kap::platform::automation
