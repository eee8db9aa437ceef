#pragma once

#include <cstdint>

#include <kaputil/automation/object.hpp>

namespace kap::python {

// The thread that an object belongs to: the one that brought it to Python.
class OwnerThread {
public:
    OwnerThread();
    // Raises RuntimeError on any other thread.
    void require(const Object& object) const;

private:
    std::uint64_t number_;
};

}  // namespace kap::python
