#include "bench/processes.hpp"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace kap::bench {
namespace {

using Clock = std::chrono::steady_clock;

struct ProcessReport {
    std::int64_t done = 0;
    double longestMillis = 0;
    std::array<char, 200> failure{};  // empty: none
};

double millis(Clock::duration time) {
    return std::chrono::duration<double, std::milli>(time).count();
}

ProcessReport work(const std::function<void()>& piece, Clock::time_point end) {
    ProcessReport report;
    for (Clock::time_point now = Clock::now(); now < end;) {
        piece();
        const Clock::time_point after = Clock::now();
        report.longestMillis = std::max(report.longestMillis, millis(after - now));
        ++report.done;
        now = after;
    }
    return report;
}

// A pipe whose ends close with it.
class Pipe {
public:
    Pipe() {
        if (pipe(ends_.data()) != 0) throw std::runtime_error("no pipe to the processes");
    }
    ~Pipe() {
        closeEnd(0);
        closeEnd(1);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    [[nodiscard]] int end(int which) const { return ends_[static_cast<std::size_t>(which)]; }
    void closeEnd(int which) {
        int& end = ends_[static_cast<std::size_t>(which)];
        if (end >= 0) close(end);
        end = -1;
    }

private:
    std::array<int, 2> ends_{-1, -1};
};

// Waits for the start, works, and reports. Never returns: what this process inherited is not its
// own to close.
[[noreturn]] void child(int process, const MakeWorker& make, std::chrono::milliseconds time,
                        Pipe& start, Pipe& reports) {
    ProcessReport report;
    try {
        const std::function<void()> piece = make(process);
        start.closeEnd(1);
        char nothing = 0;
        (void)!read(start.end(0), &nothing, 1);  // ends when everybody is there
        report = work(piece, Clock::now() + time);
    } catch (const std::exception& error) {
        std::strncpy(report.failure.data(), error.what(), report.failure.size() - 1);
    }
    (void)!write(reports.end(1), &report, sizeof(report));
    _exit(0);
}

}  // namespace

SharedWork inProcesses(int count, std::chrono::milliseconds time, const MakeWorker& make) {
    Pipe start;
    Pipe reports;
    std::vector<pid_t> children;
    for (int i = 0; i < count; ++i) {
        const pid_t id = fork();
        if (id < 0) throw std::runtime_error("a process could not be started");
        if (id == 0) child(i, make, time, start, reports);
        children.push_back(id);
    }
    start.closeEnd(1);
    reports.closeEnd(1);
    SharedWork all;
    std::string failure;
    for (int i = 0; i < count; ++i) {
        ProcessReport report;
        if (read(reports.end(0), &report, sizeof(report)) != sizeof(report)) {
            failure = "a process has ended early";
            break;
        }
        if (report.failure[0] != '\0') failure = report.failure.data();
        all.done += report.done;
        all.longestMillis = std::max(all.longestMillis, report.longestMillis);
    }
    for (const pid_t id : children)
        waitpid(id, nullptr, 0);
    if (!failure.empty()) throw std::runtime_error(failure);
    const double milliseconds = static_cast<double>(time.count());
    all.perSecond = static_cast<double>(all.done) / milliseconds * 1000;
    all.meanMillis =
        milliseconds * count / static_cast<double>(std::max<std::int64_t>(all.done, 1));
    return all;
}

double peakMemory(const std::string& process) {
    std::ifstream status("/proc/" + process + "/status");
    std::string word;
    double kilobytes = 0;
    while (status >> word) {
        if (word == "VmHWM:") status >> kilobytes;
    }
    constexpr double kKilo = 1024;
    return kilobytes * kKilo;
}

}  // namespace kap::bench
