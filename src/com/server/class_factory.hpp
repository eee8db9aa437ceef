#pragma once

#include <windows.h>

#include <unknwn.h>

#include "com/served_classes.hpp"

namespace kap::com {

// What makes objects of a class for clients. It lives as long as the module and counts no
// references of its own, but those of clients who hold it or lock the module.
HRESULT factoryOf(const ServedClass& served, REFIID wanted, void** out);

// How many references clients hold to factories, and locks.
[[nodiscard]] long factoryReferences() noexcept;

}  // namespace kap::com
