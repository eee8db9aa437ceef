#include "bench/measure.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <random>
#include <stdexcept>
#include <utility>
#include <vector>

namespace kap::bench {
namespace {

constexpr double kNanosecondsPerSecond = 1e9;

// Collects the time per item of every repetition of one arm and prints nothing.
class Collector : public benchmark::BenchmarkReporter {
public:
    explicit Collector(std::string oursName) : oursName_(std::move(oursName)) {}

    bool ReportContext(const Context&) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type != Run::RT_Iteration) {
                continue;
            }
            const bool isOurs = run.run_name.function_name == oursName_;
            if (run.error_occurred) {
                failure = (isOurs ? "ours: " : "baseline: ") + run.error_message;
                continue;
            }
            (isOurs ? ours : baseline).push_back(nanosecondsPerItem(run));
        }
    }

    std::vector<double> ours;
    std::vector<double> baseline;
    std::string failure;

private:
    static double nanosecondsPerItem(const Run& run) {
        const auto items = run.counters.find("items_per_second");
        return items == run.counters.end() ? run.GetAdjustedRealTime()
                                           : kNanosecondsPerSecond / items->second.value;
    }

    std::string oursName_;
};

double medianOf(std::vector<double> values) {
    if (values.empty()) {
        throw std::logic_error("a benchmark arm reported no repetition");
    }
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::ranges::nth_element(values, middle);
    return *middle;
}

std::vector<double> resampled(const std::vector<double>& values, std::mt19937& random) {
    std::uniform_int_distribution<std::size_t> pick(0, values.size() - 1);
    std::vector<double> result(values.size());
    std::ranges::generate(result, [&] { return values[pick(random)]; });
    return result;
}

void registerArm(const std::string& name, const Arm& arm, const Method& method) {
    benchmark::RegisterBenchmark(name.c_str(), arm.loop)
        ->Repetitions(method.repetitions)
        ->MinTime(method.secondsEach)
        ->UseRealTime()
        ->Unit(benchmark::kNanosecond);
}

void time(const Job& job, const Method& method, Result& result) {
    // Only this job's arms are registered while it runs, so every repetition of one stands beside
    // one of the other.
    benchmark::ClearRegisteredBenchmarks();
    registerArm("ours", job.ours, method);
    registerArm("baseline", job.baseline, method);
    Collector collector("ours");
    benchmark::RunSpecifiedBenchmarks(&collector, ".*");
    benchmark::ClearRegisteredBenchmarks();

    result.failure = collector.failure;
    if (!result.failure.empty()) return;
    result.ours = medianOf(collector.ours);
    result.baseline = medianOf(collector.baseline);
    const bool slowness = job.aim.direction == Aim::Direction::AtMost;
    result.ratio = slowness ? result.ours / result.baseline : result.baseline / result.ours;
    result.interval = slowness ? ratioInterval(collector.ours, collector.baseline)
                               : ratioInterval(collector.baseline, collector.ours);
}

void measure(const Job& job, Result& result) {
    try {
        const Values values = job.measure();
        result.ours = values.ours;
        result.baseline = values.baseline;
        result.ratio = values.ours / values.baseline;
    } catch (const std::runtime_error& error) {
        result.failure = error.what();
    }
}

}  // namespace

void prepareMeasuring() {
    std::array<std::string, 2> words = {"kaputil-bench",
                                        "--benchmark_enable_random_interleaving=true"};
    std::array<char*, 2> arguments = {words[0].data(), words[1].data()};
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
}

Interval ratioInterval(const std::vector<double>& above, const std::vector<double>& below) {
    constexpr std::size_t kResamples = 2000;
    constexpr std::size_t kBeyond = kResamples / 40;  // 2.5 % on either side
    std::mt19937 random(1);  // NOLINT(*-msc51-cpp): the same samples give the same interval
    std::vector<double> ratios(kResamples);
    std::ranges::generate(ratios, [&] {
        const double over = medianOf(resampled(above, random));
        return over / medianOf(resampled(below, random));
    });
    std::ranges::sort(ratios);
    return {ratios[kBeyond], ratios[kResamples - 1 - kBeyond]};
}

Result run(const Job& job, const Method& method) {
    Result result{.name = job.name,
                  .unit = job.unit,
                  .oursWords = job.ours.words,
                  .baselineWords = job.baseline.words,
                  .interval = std::nullopt,
                  .aim = job.aim,
                  .failure = {}};
    if (job.measure) {
        measure(job, result);
    } else {
        time(job, method, result);
    }
    return result;
}

GrowthResult run(const GrowthJob& job) {
    GrowthResult result{.name = job.name,
                        .sizes = job.sizes,
                        .item = job.item,
                        .at = job.at,
                        .figures = {},
                        .most = job.most,
                        .failure = {}};
    try {
        for (const double size : job.at)
            result.figures.push_back(job.take(size));
    } catch (const std::runtime_error& error) {
        result.failure = error.what();
    }
    return result;
}

double GrowthResult::timeGrowth() const {
    return figures.back().nanoseconds / figures.front().nanoseconds;
}

double GrowthResult::memoryGrowth() const {
    return figures.front().bytes == 0 ? 0 : figures.back().bytes / figures.front().bytes;
}

}  // namespace kap::bench
