#include "bench/machine.hpp"

#include <sys/utsname.h>
#include <unistd.h>

#include <array>
#include <ctime>
#include <fstream>
#include <thread>

namespace kap::bench {
namespace {

#ifdef __clang__
constexpr const char* kCompiler = "Clang " __clang_version__;
#else
constexpr const char* kCompiler = "GCC " __VERSION__;
#endif

std::string processorName() {
    std::ifstream lines("/proc/cpuinfo");
    for (std::string line; std::getline(lines, line);) {
        const auto colon = line.find(": ");
        if (line.starts_with("model name") && colon != std::string::npos) {
            return line.substr(colon + 2);
        }
    }
    return "unknown processor";
}

std::string systemName() {
    utsname names{};
    if (uname(&names) != 0) return "unknown system";
    return std::string(names.sysname) + " " + names.release;
}

std::string today() {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    gmtime_r(&now, &parts);
    std::array<char, 11> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%d", &parts);
    return text.data();
}

}  // namespace

Machine thisMachine() {
    return {.compiler = kCompiler,
            .build = KAPUTIL_BUILD_TYPE,
            .processor = processorName(),
            .cores = std::thread::hardware_concurrency(),
            .memory = static_cast<double>(sysconf(_SC_PHYS_PAGES)) *
                      static_cast<double>(sysconf(_SC_PAGESIZE)),
            .system = systemName(),
            .day = today()};
}

}  // namespace kap::bench
