#include "python/owner_thread.hpp"

#include <atomic>
#include <stdexcept>

namespace kap::python {
namespace {

// Never given twice, unlike the host's own identifiers: those of ended threads come back.
std::uint64_t currentThread() {
    static std::atomic<std::uint64_t> last{0};
    thread_local const std::uint64_t number = ++last;
    return number;
}

}  // namespace

OwnerThread::OwnerThread() : number_(currentThread()) {}

void OwnerThread::require(const Object& object) const {
    if (number_ != currentThread()) {
        throw std::runtime_error("a " + object.className().utf8() +
                                 " belongs to the thread that made it; make one for this thread");
    }
}

}  // namespace kap::python
