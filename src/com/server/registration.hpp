#pragma once

#include <windows.h>

namespace kap::com {

// For whom the classes are registered.
enum class Registration : unsigned char { Machine, User };

// Enters every served class with its names, the type library and its interfaces into the registry,
// where this module's bitness looks for them. A failure leaves nothing half done behind.
HRESULT registerModule(Registration registration);

// Takes everything out again; what another bitness or another copy of the module has registered
// stays. Nothing happens to what is not there.
HRESULT unregisterModule(Registration registration);

// Machine-wide when the registry lets us, otherwise for the user.
[[nodiscard]] Registration allowedRegistration();

}  // namespace kap::com
