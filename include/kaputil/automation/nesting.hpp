#pragma once

#include <kaputil/automation/error.hpp>
#include <kaputil/base/export.hpp>

namespace kap {

// How deep values of clients may be nested in one another: deeper than anybody's lists, and far
// from what a thread's stack holds.
inline constexpr int kDeepestNesting = 500;

// One level of a walk through nested values, for as long as it lives. Raises 28 (out of stack) at a
// level below the deepest.
class KAPUTIL_EXPORT NestingGuard {
public:
    NestingGuard() {
        if (level() == kDeepestNesting) {
            throw AutomationError(errors::kOutOfStack);
        }
        ++level();
    }
    NestingGuard(const NestingGuard&) = delete;
    NestingGuard& operator=(const NestingGuard&) = delete;
    ~NestingGuard() { --level(); }

private:
    static int& level() noexcept {
        thread_local int current = 0;
        return current;
    }
};

}  // namespace kap
