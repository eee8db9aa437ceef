// The faults of memory as functions that any language can call.
#include "failing_memory.hpp"

// From now on in this thread the nth request fails, and all after it where that is wanted.
extern "C" void kaputil_start_memory(std::int64_t nth, int andAllAfter) {
    kap::faults::startMemory({nth, andAllAfter != 0});
}

// Whether a request has failed since.
extern "C" int kaputil_stop_memory() {
    return kap::faults::stopMemory().failed ? 1 : 0;
}
