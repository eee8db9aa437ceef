#include "bench/job.hpp"

#include <algorithm>
#include <utility>

namespace kap::bench {
namespace {

// Inside a function, so that it exists before the first registration whichever file that is in.
std::vector<Job>& registeredJobs() {
    static std::vector<Job> jobs;
    return jobs;
}

}  // namespace

Registration::Registration(std::string_view name, Arm ours, Arm baseline, Aim aim) {
    registeredJobs().push_back({.name = std::string(name),
                                .aim = aim,
                                .ours = std::move(ours),
                                .baseline = std::move(baseline),
                                .measure = {}});
}

Registration::Registration(std::string_view name, std::string_view unit, Measure measure, Aim aim) {
    registeredJobs().push_back({.name = std::string(name),
                                .aim = aim,
                                .ours = {},
                                .baseline = {},
                                .measure = std::move(measure),
                                .unit = std::string(unit)});
}

std::vector<Job> allJobs() {
    auto jobs = registeredJobs();
    std::ranges::sort(jobs, {}, &Job::name);
    return jobs;
}

}  // namespace kap::bench
