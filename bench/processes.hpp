#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

// Work that several processes do at once.
namespace kap::bench {

// What the processes have got done together.
struct SharedWork {
    std::int64_t done = 0;     // pieces of work
    double perSecond = 0;      // pieces
    double longestMillis = 0;  // the longest time that one piece took any of them
    double meanMillis = 0;     // of one piece in one process
};

// One process's part: makes what does a piece of work, which is then called until time is up.
using MakeWorker = std::function<std::function<void()>(int process)>;

// Starts so many processes, each of which makes its worker, and lets them work together for the
// time. Must be called before this process has opened what the workers open. Throws
// std::runtime_error when one of them fails, with its reason.
SharedWork inProcesses(int count, std::chrono::milliseconds time, const MakeWorker& make);

// The largest that a running process has been until now, in bytes; 0 when it has ended. `process`
// is its number.
double peakMemory(const std::string& process = "self");

}  // namespace kap::bench
