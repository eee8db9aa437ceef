// kaputil-bench: runs the jobs whose names match and says how each stands against its baseline.

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <regex>

#include "bench/job.hpp"
#include "bench/measure.hpp"
#include "bench/report.hpp"

namespace {

using kap::bench::Job;
using kap::bench::Method;
using kap::bench::Result;

struct Options {
    std::string filter;
    bool json = false;
    bool list = false;
    Method method;
};

std::vector<Job> matchingJobs(const std::string& filter) {
    const std::regex pattern(filter, std::regex::ECMAScript | std::regex::icase);
    auto jobs = kap::bench::allJobs();
    std::erase_if(jobs, [&](const Job& job) { return !std::regex_search(job.name, pattern); });
    return jobs;
}

bool standardOutputTakesColours() {
    return ::isatty(STDOUT_FILENO) != 0 && std::getenv("NO_COLOR") == nullptr;
}

// Runs the jobs and reports each when it is done. Returns whether every job's result was right.
bool runAll(const std::vector<Job>& jobs, const Options& options) {
    kap::bench::prepareMeasuring();
    kap::bench::Table table(std::cout, standardOutputTakesColours());
    if (!options.json) {
        const auto longest =
            std::ranges::max(jobs, {}, [](const Job& job) { return job.name.size(); });
        table.writeHeading(options.method, longest.name.size());
    }

    std::size_t met = 0;
    bool allRight = true;
    for (const Job& job : jobs) {
        const Result result = kap::bench::run(job, options.method);
        met += result.isMet() ? 1U : 0U;
        allRight = allRight && result.failure.empty();
        if (options.json) {
            std::cout << kap::bench::toJson(result) << std::endl;
        } else {
            table.writeResult(result);
        }
    }
    if (!options.json) {
        table.writeSummary(met, jobs.size());
    }
    return allRight;
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    CLI::App app(
        "Measures the library beside its baselines. Exits with 1 when a job's result is wrong.");
    app.add_option("filter", options.filter, "run only the jobs whose names match this pattern");
    app.add_flag("--json", options.json, "print one JSON object a line; times are nanoseconds");
    app.add_flag("--list", options.list, "print the names of the jobs and stop");
    app.add_option("--repetitions", options.method.repetitions, "repetitions of each arm")
        ->check(CLI::PositiveNumber);
    app.add_option("--seconds", options.method.secondsEach, "least time of one repetition")
        ->check(CLI::PositiveNumber);
    CLI11_PARSE(app, argc, argv);

    std::vector<Job> jobs;
    try {
        jobs = matchingJobs(options.filter);
    } catch (const std::regex_error& error) {
        std::cerr << "kaputil-bench: \"" << options.filter
                  << "\" is not a pattern: " << error.what() << "\n";
        return 2;
    }
    if (jobs.empty()) {
        std::cerr << "kaputil-bench: no job is named like \"" << options.filter << "\"\n";
        return 2;
    }
    if (options.list) {
        for (const Job& job : jobs) {
            std::cout << job.name << "\n";
        }
        return 0;
    }
    return runAll(jobs, options) ? 0 : 1;
}
