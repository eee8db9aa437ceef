#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

// What a benchmark file is made of: jobs, each with the library's way of doing something, the
// baseline it is held against, and the ratio aimed at.
//
// A file under bench/ registers its jobs and is otherwise left alone:
//
//     void readByName(benchmark::State& state) {
//         for (auto _ : state) benchmark::DoNotOptimize(sum = readAll(bag));
//         if (sum != kExpectedSum) state.SkipWithError("the values read do not add up");
//         state.SetItemsProcessed(state.iterations() * kValues);
//     }
//     KAP_BENCH_PAIR("property string: read by name, 1,000 values", readByName, readFromMap, 3.0);
//
// Both arms do the same work with the same settings, check their own result, and call
// SetItemsProcessed when the work is counted in items: the figures are then per item instead of
// per iteration.
namespace kap::bench {

// The ratio that a job should reach.
struct Aim {
    enum class Direction { AtMost, AtLeast };

    // A plain number is an upper bound: "at most 1.3 times the baseline's time".
    Aim(double bound) : ratio(bound) {}
    Aim(double bound, Direction sense) : ratio(bound), direction(sense) {}

    [[nodiscard]] bool isMetBy(double measured) const {
        return direction == Direction::AtMost ? measured <= ratio : measured >= ratio;
    }

    double ratio;
    Direction direction = Direction::AtMost;
};

inline Aim atMost(double ratio) {
    return {ratio, Aim::Direction::AtMost};
}

// "At least `ratio` times the baseline": its speed in a timed job, its value in a measured one.
inline Aim atLeast(double ratio) {
    return {ratio, Aim::Direction::AtLeast};
}

using Arm = std::function<void(benchmark::State&)>;

// Two plain values, for what is not a time of a loop: bytes a row, numbers a second over several
// processes.
struct Values {
    double ours;
    double baseline;
};

// Takes the values of one measured job. Throws std::runtime_error, saying what is wrong, when its
// own check fails.
using Measure = std::function<Values()>;

// A job is timed (two arms) or measured (one function); the other members are then empty.
struct Job {
    std::string name;
    Aim aim;
    Arm ours;
    Arm baseline;
    Measure measure;
    std::string unit = "ns";
};

// Every registered job, ordered by name.
std::vector<Job> allJobs();

// Adds its job to the list when it is made; the macros below make one for the length of the
// program.
class Registration {
public:
    Registration(std::string_view name, Arm ours, Arm baseline, Aim aim);
    Registration(std::string_view name, std::string_view unit, Measure measure, Aim aim);
};

}  // namespace kap::bench

#define KAP_BENCH_JOIN_(left, right) left##right
#define KAP_BENCH_NAME_(count) KAP_BENCH_JOIN_(kBenchJob, count)

// Registers a timed job: KAP_BENCH_PAIR(name, ours, baseline, aim).
#define KAP_BENCH_PAIR(...)                                                \
    static const ::kap::bench::Registration KAP_BENCH_NAME_(__COUNTER__) { \
        __VA_ARGS__                                                        \
    }

// Registers a measured job: KAP_BENCH_VALUES(name, unit, measure, aim).
#define KAP_BENCH_VALUES(...)                                              \
    static const ::kap::bench::Registration KAP_BENCH_NAME_(__COUNTER__) { \
        __VA_ARGS__                                                        \
    }
