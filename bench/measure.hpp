#pragma once

#include <string>

#include "bench/job.hpp"

namespace kap::bench {

// How timed jobs are measured.
struct Method {
    int repetitions = 9;
    double secondsEach = 0.1;
};

// What came of one job.
struct Result {
    std::string name;
    std::string unit;
    double ours = 0;
    double baseline = 0;
    double ratio = 0;
    Aim aim;
    // Why the job's own check failed; empty when it did not. The figures then mean nothing.
    std::string failure;

    [[nodiscard]] bool isMet() const { return failure.empty() && aim.isMetBy(ratio); }
};

// Prepares the measuring; called once, before the first job.
void prepareMeasuring();

// Runs one job. A timed job's two arms are repeated in turn in this process, and each figure is
// the median of its repetitions, in nanoseconds of real time per item. The ratio is ours over the
// baseline; in a timed job that aims at a least ratio it is the baseline's time over ours, that
// is, how many times faster we are.
Result run(const Job& job, const Method& method);

}  // namespace kap::bench
