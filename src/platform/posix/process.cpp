#include "platform/process.hpp"

#include <unistd.h>

#include <array>

namespace kap::platform {

std::string machineName() {
    std::array<char, 256> name{};
    if (gethostname(name.data(), name.size() - 1) != 0) {
        return {};
    }
    return name.data();
}

std::int64_t processNumber() {
    return getpid();
}

}  // namespace kap::platform
