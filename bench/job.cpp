#include "bench/job.hpp"

#include <algorithm>
#include <utility>

namespace kap::bench {
namespace {

// Inside functions, so that they exist before the first registration whichever file that is in.
std::vector<Job>& registeredJobs() {
    static std::vector<Job> jobs;
    return jobs;
}

std::vector<GrowthJob>& registeredGrowthJobs() {
    static std::vector<GrowthJob> jobs;
    return jobs;
}

}  // namespace

Registration::Registration(std::string name, Arm ours, Arm baseline, Aim aim) {
    registeredJobs().push_back({.name = std::move(name),
                                .aim = aim,
                                .ours = std::move(ours),
                                .baseline = std::move(baseline),
                                .measure = {}});
}

Registration::Registration(std::string name, std::string unit, std::string ours,
                           std::string baseline, Measure measure, Aim aim) {
    registeredJobs().push_back({.name = std::move(name),
                                .aim = aim,
                                .ours = {std::move(ours), {}},
                                .baseline = {std::move(baseline), {}},
                                .measure = std::move(measure),
                                .unit = std::move(unit)});
}

Registration::Registration(GrowthJob job) {
    registeredGrowthJobs().push_back(std::move(job));
}

std::vector<Job> allJobs() {
    auto jobs = registeredJobs();
    std::ranges::sort(jobs, {}, &Job::name);
    return jobs;
}

std::vector<GrowthJob> allGrowthJobs() {
    auto jobs = registeredGrowthJobs();
    std::ranges::sort(jobs, {}, &GrowthJob::name);
    return jobs;
}

}  // namespace kap::bench
