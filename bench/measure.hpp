#pragma once

#include <optional>
#include <string>
#include <vector>

#include "bench/job.hpp"

namespace kap::bench {

// How timed jobs are measured.
struct Method {
    int repetitions = 9;
    double secondsEach = 0.1;
};

// Where a figure lies with a confidence of 95 %.
struct Interval {
    double low = 0;
    double high = 0;

    [[nodiscard]] bool overlaps(const Interval& other) const {
        return low <= other.high && other.low <= high;
    }
};

// What came of one job.
struct Result {
    std::string name;
    std::string unit;
    std::string oursWords;
    std::string baselineWords;
    double ours = 0;
    double baseline = 0;
    double ratio = 0;
    std::optional<Interval> interval;  // of the ratio; none of a job that is measured once
    Aim aim;
    // Why the job's own check failed; empty when it did not. The figures then mean nothing.
    std::string failure;

    [[nodiscard]] bool isMet() const { return failure.empty() && aim.isMetBy(ratio); }
};

// What came of one growth job: a figure for each of its sizes.
struct GrowthResult {
    std::string name;
    std::string sizes;
    std::string item;
    std::vector<double> at;
    std::vector<Growth> figures;
    double most = 0;
    std::string failure;

    // The largest size's cost over the smallest's: of time, and of memory where there is any.
    [[nodiscard]] double timeGrowth() const;
    [[nodiscard]] double memoryGrowth() const;
    [[nodiscard]] bool isMet() const {
        return failure.empty() && timeGrowth() <= most && memoryGrowth() <= most;
    }
};

// Prepares the measuring; called once, before the first job.
void prepareMeasuring();

// Runs one job. A timed job's two arms are repeated in turn in this process, and each figure is
// the median of its repetitions, in nanoseconds of real time per item. The ratio is ours over the
// baseline; in a timed job that aims at a least ratio it is the baseline's time over ours, that
// is, how many times faster we are.
Result run(const Job& job, const Method& method);

GrowthResult run(const GrowthJob& job);

// Where the ratio of the medians of two samples lies, told from resamples of both. The same samples
// give the same interval.
Interval ratioInterval(const std::vector<double>& above, const std::vector<double>& below);

}  // namespace kap::bench
