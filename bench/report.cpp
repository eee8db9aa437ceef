#include "bench/report.hpp"

#include <algorithm>
#include <array>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <thread>

namespace kap::bench {
namespace {

constexpr const char* kGreen = "\033[32m";
constexpr const char* kRed = "\033[31m";
constexpr const char* kPlain = "\033[0m";

constexpr std::size_t kFigureWidth = 26;
constexpr std::size_t kRatioWidth = 8;

#ifdef __clang__
constexpr const char* kCompiler = "Clang " __clang_version__;
#else
constexpr const char* kCompiler = "GCC " __VERSION__;
#endif

std::string formatted(const char* format, double value) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), format, value);
    return text.data();
}

std::string padLeft(const std::string& text, std::size_t width) {
    return std::string(width - std::min(width, text.size()), ' ') + text;
}

std::string padRight(const std::string& text, std::size_t width) {
    return text + std::string(width - std::min(width, text.size()), ' ');
}

std::string figure(double value, const std::string& unit) {
    if (unit != "ns") {
        return formatted(value < 100 ? "%.2f " : "%.0f ", value) + unit;
    }
    if (value < 1e3) {
        return formatted("%.1f ns", value);
    }
    if (value < 1e6) {
        return formatted("%.2f us", value / 1e3);
    }
    return formatted("%.2f ms", value / 1e6);
}

std::string bound(const Aim& aim) {
    const bool atMost = aim.direction == Aim::Direction::AtMost;
    return (atMost ? "<= " : ">= ") + formatted("%.2f", aim.ratio);
}

}  // namespace

void Table::writeHeading(const Method& method, std::size_t nameWidth) {
    nameWidth_ = std::max<std::size_t>(nameWidth, 3);
    out_ << "Compiler: " << kCompiler << ", build: " << KAPUTIL_BUILD_TYPE
         << ", cores: " << std::thread::hardware_concurrency() << "\n"
         << "Method: median of " << method.repetitions << " repetitions of at least "
         << formatted("%.2f", method.secondsEach)
         << " s, the two arms in turn in one process, real time per item\n\n"
         << padRight("job", nameWidth_) << padLeft("ours", kFigureWidth)
         << padLeft("baseline", kFigureWidth) << padLeft("ratio", kRatioWidth)
         << padLeft("aim", kRatioWidth + 1) << "  met\n";
    out_.flush();
}

void Table::writeResult(const Result& result) {
    out_ << padRight(result.name, nameWidth_);
    if (!result.failure.empty()) {
        out_ << "  " << paint("wrong result: " + result.failure, kRed) << "\n";
    } else {
        out_ << padLeft(figure(result.ours, result.unit), kFigureWidth)
             << padLeft(figure(result.baseline, result.unit), kFigureWidth)
             << padLeft(formatted("%.2f", result.ratio), kRatioWidth)
             << padLeft(bound(result.aim), kRatioWidth + 1) << "  "
             << (result.isMet() ? paint("yes", kGreen) : paint("NO", kRed)) << "\n";
    }
    out_.flush();
}

void Table::writeSummary(std::size_t met, std::size_t total) {
    out_ << "\n" << met << " of " << total << " aims met\n";
}

std::string Table::paint(const std::string& text, const char* colour) const {
    return coloured_ ? colour + text + kPlain : text;
}

std::string toJson(const Result& result) {
    nlohmann::ordered_json object = {{"name", result.name}};
    if (result.failure.empty()) {
        object["ours"] = result.ours;
        object["baseline"] = result.baseline;
        object["unit"] = result.unit;
        object["ratio"] = result.ratio;
    } else {
        object["error"] = result.failure;
    }
    object["aim"] = result.aim.ratio;
    object["direction"] = result.aim.direction == Aim::Direction::AtMost ? "at most" : "at least";
    object["met"] = result.isMet();
    return object.dump();
}

}  // namespace kap::bench
