#pragma once

#include <chrono>
#include <cstdio>

namespace kap::test {

// Tells the figures of a long run once a minute, so that one that is interrupted still has some.
// Runs that are shorter tell nothing.
class Progress {
public:
    explicit Progress(std::chrono::seconds every = std::chrono::minutes(1)) : every_(every) {}

    // To be called whenever there is something new; asks `figures` for its line when it is time.
    template <class Figures>
    void tell(Figures figures) {
        const auto now = std::chrono::steady_clock::now();
        if (now - told_ < every_) {
            return;
        }
        told_ = now;
        const auto passed = std::chrono::duration_cast<std::chrono::seconds>(now - begun_);
        std::printf("after %lld s: %s\n", static_cast<long long>(passed.count()),
                    figures().c_str());
        std::fflush(stdout);
    }

private:
    std::chrono::seconds every_;
    std::chrono::steady_clock::time_point begun_ = std::chrono::steady_clock::now();
    std::chrono::steady_clock::time_point told_ = begun_;
};

}  // namespace kap::test
