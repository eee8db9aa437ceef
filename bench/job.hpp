#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <string>
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
//     KAP_BENCH_PAIR("property string: read by name, 1,000 values", {"Leggi", readByName},
//                    {"std::map::find", readFromMap}, 3.0);
//
// Both arms do the same work with the same settings, check their own result, and call
// SetItemsProcessed when the work is counted in items: the figures are then per item instead of
// per iteration. A name is its group, a colon, and what is done.
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

using Loop = std::function<void(benchmark::State&)>;

// One way to do the work: in the words of the report, and as a loop.
struct Arm {
    std::string words;
    Loop loop;
};

// Two plain values, for what is not a time of a loop: bytes a row, numbers a second over several
// processes.
struct Values {
    double ours;
    double baseline;
};

// Takes the values of one measured job. Throws std::runtime_error, saying what is wrong, when its
// own check fails.
using Measure = std::function<Values()>;

// A job is timed (its arms have loops) or measured (one function takes both values).
struct Job {
    std::string name;
    Aim aim;
    Arm ours;
    Arm baseline;
    Measure measure;
    std::string unit = "ns";
};

// What one size of a growth job came to.
struct Growth {
    double nanoseconds = 0;  // of one item
    double bytes = 0;        // of one item; 0 where memory is not what the job is about
};

// How the cost of one item grows with the size of what it belongs to. `take` is called with one
// size after the other, smallest first, and throws as a Measure does.
struct GrowthJob {
    std::string name;
    std::string sizes;  // what is counted: "rows"
    std::string item;   // what the cost is of: "one row read"
    std::vector<double> at;
    std::function<Growth(double size)> take;
    // The largest size's cost over the smallest's.
    double most;
};

// Every registered job, ordered by name.
std::vector<Job> allJobs();
std::vector<GrowthJob> allGrowthJobs();

// Adds its job to the list when it is made; the macros below make one for the length of the
// program.
class Registration {
public:
    Registration(std::string name, Arm ours, Arm baseline, Aim aim);
    Registration(std::string name, std::string unit, std::string ours, std::string baseline,
                 Measure measure, Aim aim);
    Registration(GrowthJob job);
};

}  // namespace kap::bench

#define KAP_BENCH_JOIN_(left, right) left##right
#define KAP_BENCH_NAME_(count) KAP_BENCH_JOIN_(kBenchJob, count)

// Registers a timed job: KAP_BENCH_PAIR(name, {words, ours}, {words, baseline}, aim).
#define KAP_BENCH_PAIR(...)                                                \
    static const ::kap::bench::Registration KAP_BENCH_NAME_(__COUNTER__) { \
        __VA_ARGS__                                                        \
    }

// Registers a measured job: KAP_BENCH_VALUES(name, unit, words, words, measure, aim).
#define KAP_BENCH_VALUES(...)                                              \
    static const ::kap::bench::Registration KAP_BENCH_NAME_(__COUNTER__) { \
        __VA_ARGS__                                                        \
    }

// Registers a growth job: KAP_BENCH_GROWTH({.name = ..., ...}).
#define KAP_BENCH_GROWTH(...)                                              \
    static const ::kap::bench::Registration KAP_BENCH_NAME_(__COUNTER__) { \
        ::kap::bench::GrowthJob __VA_ARGS__                                \
    }
