#pragma once

#include <windows.h>

#include <oleauto.h>

#include <exception>
#include <new>

#include <kaputil/automation/error.hpp>

#include "platform/win32/wide.hpp"

// Errors of calls across the border.
namespace kap::platform::automation {

// The system's code for a number that clients compare: what a client's language shows as the number
// again.
[[nodiscard]] HRESULT codeOf(std::int32_t number);

// The number behind a code of the system.
[[nodiscard]] std::int32_t numberOf(HRESULT code);

// Tells a caller of an error: fills `information` when it is given. The result is what the call
// returns.
HRESULT report(const AutomationError& error, EXCEPINFO* information);

// The same where a call has no room for it: what is told is the calling thread's error object,
// which languages show, and the result is the code itself.
HRESULT reportByErrorObject(const AutomationError& error);

// Runs what a client called: nothing may be thrown across the border. What is goes to `tell`, one
// of the functions above, and its answer is the call's.
template <class Action, class Tell>
HRESULT guarded(Action action, Tell tell) {
    try {
        return action();
    } catch (const AutomationError& error) {
        return tell(error);
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (const std::exception& error) {
        return tell(AutomationError(static_cast<std::int32_t>(E_FAIL), fromAnsi(error.what())));
    }
}

// Raises what a failed call told in its result and `information`, whose texts are freed.
[[noreturn]] void raise(HRESULT result, EXCEPINFO& information);

}  // namespace kap::platform::automation
