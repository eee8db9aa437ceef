// One target under the coverage-guided fuzzer; the build names the target.
#include <cstddef>
#include <cstdint>

#include "fuzz/targets.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    for (const kap::fuzz::Target& target : kap::fuzz::targets()) {
        if (target.name == KAPUTIL_FUZZ_TARGET) {
            target.run(kap::fuzz::textOf({data, size}));
        }
    }
    return 0;
}
