#pragma once

#include <windows.h>

#include <oleauto.h>

#include <kaputil/frame/error.hpp>

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

// Raises what a failed call told in its result and `information`, whose texts are freed.
[[noreturn]] void raise(HRESULT result, EXCEPINFO& information);

}  // namespace kap::platform::automation
