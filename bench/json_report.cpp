#include <nlohmann/json.hpp>

#include "bench/report.hpp"

namespace kap::bench {

std::string toJson(const Machine& machine, const Method& method) {
    return nlohmann::ordered_json{
        {"day", machine.day},           {"compiler", machine.compiler},
        {"build", machine.build},       {"processor", machine.processor},
        {"cores", machine.cores},       {"memory", machine.memory},
        {"system", machine.system},     {"repetitions", method.repetitions},
        {"seconds", method.secondsEach}}
        .dump();
}

std::string toJson(const Result& result) {
    nlohmann::ordered_json object = {
        {"name", result.name}, {"oursIs", result.oursWords}, {"baselineIs", result.baselineWords}};
    if (result.failure.empty()) {
        object["ours"] = result.ours;
        object["baseline"] = result.baseline;
        object["unit"] = result.unit;
        object["ratio"] = result.ratio;
        if (result.interval) object["interval"] = {result.interval->low, result.interval->high};
    } else {
        object["error"] = result.failure;
    }
    object["aim"] = result.aim.ratio;
    object["direction"] = result.aim.direction == Aim::Direction::AtMost ? "at most" : "at least";
    object["met"] = result.isMet();
    return object.dump();
}

std::string toJson(const GrowthResult& result) {
    nlohmann::ordered_json object = {
        {"name", result.name}, {"sizes", result.sizes}, {"item", result.item}};
    if (!result.failure.empty()) {
        object["error"] = result.failure;
        return object.dump();
    }
    object["at"] = result.at;
    for (const Growth& cost : result.figures) {
        object["ns"].push_back(cost.nanoseconds);
        object["bytes"].push_back(cost.bytes);
    }
    object["aim"] = result.most;
    object["met"] = result.isMet();
    return object.dump();
}

}  // namespace kap::bench
