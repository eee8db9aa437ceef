#include "bench/earlier_run.hpp"

#include <cmath>
#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "bench/figures.hpp"

namespace kap::bench {
namespace {

[[noreturn]] void refuseLine(const std::string& file, int number) {
    throw std::runtime_error(file + ", line " + std::to_string(number) +
                             ": not an object of a run with --json");
}

std::string change(double now, double before) {
    constexpr double kPercent = 100;
    const double difference = (now / before - 1) * kPercent;
    return formatted("%.0f", std::abs(difference)) + " % " + (difference < 0 ? "lower" : "higher");
}

}  // namespace

EarlierRun::EarlierRun(const std::string& file) {
    std::ifstream lines(file);
    if (!lines) throw std::runtime_error(file + " cannot be read");
    int number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        const auto object = nlohmann::json::parse(line, nullptr, false);
        if (!object.is_object()) refuseLine(file, number);
        if (!object.contains("ratio")) continue;
        try {
            Figure figure{.ratio = object.at("ratio"), .interval = std::nullopt};
            if (object.contains("interval")) {
                const auto& bounds = object.at("interval");
                figure.interval = {bounds.at(0), bounds.at(1)};
            }
            figures_[object.at("name")] = figure;
        } catch (const nlohmann::json::exception&) {
            refuseLine(file, number);
        }
    }
}

const EarlierRun::Figure* EarlierRun::find(const std::string& job) const {
    const auto found = figures_.find(job);
    return found == figures_.end() ? nullptr : &found->second;
}

std::string comparison(const Result& result, const EarlierRun::Figure& earlier) {
    std::string text = "was " + ratioText(earlier.ratio, earlier.interval) + ": ";
    if (!result.interval || !earlier.interval) {
        return text + change(result.ratio, earlier.ratio) + ", measured once";
    }
    if (result.interval->overlaps(*earlier.interval)) return text + "no difference shown";
    return text + change(result.ratio, earlier.ratio);
}

}  // namespace kap::bench
