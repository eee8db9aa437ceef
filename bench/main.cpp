// kaputil-bench: runs the jobs whose names match and says how each stands against its baseline.

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <regex>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/earlier_run.hpp"
#include "bench/job.hpp"
#include "bench/machine.hpp"
#include "bench/measure.hpp"
#include "bench/report.hpp"

namespace {

using kap::bench::EarlierRun;
using kap::bench::Job;

struct Options {
    std::string filter;
    std::string compare;
    bool json = false;
    bool list = false;
    bool growth = false;
    kap::bench::Method method;
};

template <class AnyJob>
std::vector<AnyJob> matching(std::vector<AnyJob> jobs, const std::string& filter) {
    const std::regex pattern(filter, std::regex::ECMAScript | std::regex::icase);
    std::erase_if(jobs, [&](const AnyJob& job) { return !std::regex_search(job.name, pattern); });
    return jobs;
}

bool standardOutputTakesColours() {
    return ::isatty(STDOUT_FILENO) != 0 && std::getenv("NO_COLOR") == nullptr;
}

std::size_t longestWords(const std::vector<Job>& jobs) {
    std::size_t longest = 0;
    for (const Job& job : jobs)
        longest = std::max({longest, job.ours.words.size(), job.baseline.words.size()});
    return longest;
}

std::size_t longestWords(const std::vector<kap::bench::GrowthJob>& /*jobs*/) {
    return 0;
}

// Runs jobs and reports each when it is done.
class Runner {
public:
    explicit Runner(const Options& options) : options_(options) {
        if (!options.compare.empty()) earlier_.emplace(options.compare);
    }

    // Whether every job's result was right.
    template <class AnyJob>
    bool runAll(const std::vector<AnyJob>& jobs) {
        kap::bench::prepareMeasuring();
        kap::bench::Report report(std::cout, standardOutputTakesColours(), longestWords(jobs));
        const kap::bench::Machine machine = kap::bench::thisMachine();
        if (options_.json) {
            std::cout << kap::bench::toJson(machine, options_.method) << std::endl;
        } else {
            report.writeHeading(machine, options_.method);
        }
        for (const AnyJob& job : jobs)
            run(job, report);
        if (!options_.json) report.writeSummary(met_, jobs.size());
        return allRight_;
    }

private:
    void run(const Job& job, kap::bench::Report& report) {
        const auto result = kap::bench::run(job, options_.method);
        const EarlierRun::Figure* earlier = earlier_ ? earlier_->find(result.name) : nullptr;
        if (!options_.json) report.write(result, earlier);
        note(result);
    }
    void run(const kap::bench::GrowthJob& job, kap::bench::Report& report) {
        const auto result = kap::bench::run(job);
        if (!options_.json) report.write(result);
        note(result);
    }

    template <class AnyResult>
    void note(const AnyResult& result) {
        if (options_.json) std::cout << kap::bench::toJson(result) << std::endl;
        met_ += result.isMet() ? 1U : 0U;
        allRight_ = allRight_ && result.failure.empty();
    }

    const Options& options_;
    std::optional<EarlierRun> earlier_;
    std::size_t met_ = 0;
    bool allRight_ = true;
};

template <class AnyJob>
int runOrList(const std::vector<AnyJob>& jobs, const Options& options) {
    if (jobs.empty()) {
        std::cerr << "kaputil-bench: no job is named like \"" << options.filter << "\"\n";
        return 2;
    }
    if (options.list) {
        for (const AnyJob& job : jobs)
            std::cout << job.name << "\n";
        return 0;
    }
    return Runner(options).runAll(jobs) ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    CLI::App app(
        "Measures the library beside its baselines. Exits with 1 when a job's result is wrong.");
    app.add_option("filter", options.filter, "run only the jobs whose names match this pattern");
    auto* growth =
        app.add_flag("--growth", options.growth,
                     "run the jobs that tell how time and memory grow with size (minutes)");
    app.add_flag("--json", options.json, "print one JSON object a line; times are nanoseconds");
    app.add_option("--compare", options.compare, "compare with what --json had printed into a file")
        ->type_name("FILE")
        ->excludes(growth);
    app.add_flag("--list", options.list, "print the names of the jobs and stop");
    app.add_option("--repetitions", options.method.repetitions, "repetitions of each arm")
        ->check(CLI::PositiveNumber);
    app.add_option("--seconds", options.method.secondsEach, "least time of one repetition")
        ->check(CLI::PositiveNumber);
    CLI11_PARSE(app, argc, argv);

    try {
        return options.growth
                   ? runOrList(matching(kap::bench::allGrowthJobs(), options.filter), options)
                   : runOrList(matching(kap::bench::allJobs(), options.filter), options);
    } catch (const std::regex_error& error) {
        std::cerr << "kaputil-bench: \"" << options.filter
                  << "\" is not a pattern: " << error.what() << "\n";
    } catch (const std::runtime_error& error) {
        std::cerr << "kaputil-bench: " << error.what() << "\n";
    }
    return 2;
}
