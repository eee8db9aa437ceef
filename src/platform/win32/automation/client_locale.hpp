#pragma once

#include <windows.h>

namespace kap::platform::automation {

// From now on the thread converts under the language that a client calls in, as far as the library
// knows it; otherwise under its own. The variable KAPUTIL_LOCALE overrules all clients.
void useClientLocale(LCID locale);

}  // namespace kap::platform::automation
