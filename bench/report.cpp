#include "bench/report.hpp"

#include <algorithm>

#include "bench/figures.hpp"

namespace kap::bench {
namespace {

constexpr const char* kGreen = "\033[32m";
constexpr const char* kRed = "\033[31m";
constexpr const char* kBold = "\033[1m";
constexpr const char* kPlain = "\033[0m";

constexpr std::size_t kFigureWidth = 22;
constexpr std::size_t kSizeWidth = 16;
constexpr double kGigabyte = 1024.0 * 1024 * 1024;

std::string padLeft(const std::string& text, std::size_t width) {
    return std::string(width - std::min(width, text.size()), ' ') + text;
}

std::string padRight(const std::string& text, std::size_t width) {
    return text + std::string(width - std::min(width, text.size()), ' ');
}

}  // namespace

void Report::writeHeading(const Machine& machine, const Method& method) {
    out_ << machine.day << ", " << machine.compiler << ", build " << machine.build << "\n"
         << machine.processor << ", " << machine.cores << " cores, "
         << formatted("%.0f GiB, ", machine.memory / kGigabyte) << machine.system << "\n"
         << "Real time per item: the median of " << method.repetitions
         << " repetitions of at least " << formatted("%.2f", method.secondsEach)
         << " s, both arms in turn in one process.\n"
         << "Below each job's name the library, then what it is compared with; the ratio, where it "
            "lies\nwith a confidence of 95 %, and the aim.\n";
    out_.flush();
}

void Report::writeName(const std::string& name) {
    const auto colon = name.find(": ");
    const std::string group = name.substr(0, colon);
    if (group != group_) out_ << "\n" << paint(group, kBold) << "\n";
    group_ = group;
    out_ << "  " << (colon == std::string::npos ? name : name.substr(colon + 2)) << "\n";
}

void Report::writeArm(const std::string& words, const std::string& figure) {
    out_ << "    " << padRight(words, wordsWidth_) << padLeft(figure, kFigureWidth);
}

void Report::write(const Result& result, const EarlierRun::Figure* earlier) {
    writeName(result.name);
    if (!result.failure.empty()) {
        out_ << "    " << paint("wrong result: " + result.failure, kRed) << "\n";
        out_.flush();
        return;
    }
    writeArm(result.oursWords, figure(result.ours, result.unit));
    out_ << "\n";
    writeArm(result.baselineWords, figure(result.baseline, result.unit));
    out_ << "   " << ratioText(result.ratio, result.interval) << ", aim " << aimText(result.aim)
         << ": " << verdict(result.isMet()) << "\n";
    if (earlier != nullptr) out_ << "    " << comparison(result, *earlier) << "\n";
    out_.flush();
}

void Report::write(const GrowthResult& result) {
    writeName(result.name);
    if (!result.failure.empty()) {
        out_ << "    " << paint("wrong result: " + result.failure, kRed) << "\n";
        out_.flush();
        return;
    }
    out_ << "    " << padLeft(result.sizes, kSizeWidth) << "   " << result.item << "\n";
    for (std::size_t i = 0; i < result.at.size(); ++i) {
        const Growth& cost = result.figures[i];
        out_ << "    " << padLeft(counted(result.at[i]), kSizeWidth)
             << padLeft(figure(cost.nanoseconds, "ns"), kFigureWidth);
        if (cost.bytes != 0) out_ << padLeft(figure(cost.bytes, "bytes"), kFigureWidth);
        out_ << "\n";
    }
    out_ << "    the last over the first: time " << formatted("%.2f", result.timeGrowth());
    if (result.memoryGrowth() != 0) {
        out_ << ", memory " << formatted("%.2f", result.memoryGrowth());
    }
    out_ << ", aim " << aimText(atMost(result.most)) << ": " << verdict(result.isMet()) << "\n";
    out_.flush();
}

void Report::writeSummary(std::size_t met, std::size_t total) {
    out_ << "\n" << met << " of " << total << " aims met\n";
}

std::string Report::verdict(bool met) const {
    return met ? paint("met", kGreen) : paint("NOT MET", kRed);
}

std::string Report::paint(const std::string& text, const char* colour) const {
    return coloured_ ? colour + text + kPlain : text;
}

}  // namespace kap::bench
