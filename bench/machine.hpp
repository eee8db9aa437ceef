#pragma once

#include <string>

namespace kap::bench {

// What a reader must know of where figures were taken.
struct Machine {
    std::string compiler;
    std::string build;
    std::string processor;
    unsigned cores = 0;
    double memory = 0;  // bytes
    std::string system;
    std::string day;  // "2026-11-22"
};

Machine thisMachine();

}  // namespace kap::bench
