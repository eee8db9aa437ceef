#pragma once

#include <atomic>

namespace kap::ado {

// One more for a scope.
class Counted {
public:
    explicit Counted(std::atomic<int>& count) noexcept : count_(count) { ++count_; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;
    ~Counted() { --count_; }

private:
    std::atomic<int>& count_;
};

}  // namespace kap::ado
