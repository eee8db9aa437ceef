#include "platform/process.hpp"

#include <cstdlib>

#include <windows.h>

namespace kap::platform {

std::string machineName() {
    const char* name = std::getenv("COMPUTERNAME");
    return name == nullptr ? std::string() : name;
}

std::int64_t processNumber() {
    return GetCurrentProcessId();
}

}  // namespace kap::platform
