#include <kaputil/platform/pause.hpp>

#include <thread>

namespace kap::platform {

void pause(std::chrono::milliseconds duration) {
    std::this_thread::sleep_for(duration);
}

}  // namespace kap::platform
