#pragma once

#include <cstddef>
#include <ostream>
#include <string>

#include "bench/earlier_run.hpp"
#include "bench/machine.hpp"
#include "bench/measure.hpp"

namespace kap::bench {

// Writes what was found for people: a heading for each group of jobs, and for each job both arms
// in words with their figures, as soon as it is done.
class Report {
public:
    // `wordsWidth`: characters of the longest words of an arm.
    Report(std::ostream& out, bool coloured, std::size_t wordsWidth)
        : out_(out), coloured_(coloured), wordsWidth_(wordsWidth) {}

    void writeHeading(const Machine& machine, const Method& method);
    // With what an earlier run had found of the same job; null when there is none.
    void write(const Result& result, const EarlierRun::Figure* earlier);
    void write(const GrowthResult& result);
    void writeSummary(std::size_t met, std::size_t total);

private:
    void writeName(const std::string& name);
    void writeArm(const std::string& words, const std::string& figure);
    std::string paint(const std::string& text, const char* colour) const;
    std::string verdict(bool met) const;

    std::ostream& out_;
    bool coloured_;
    std::size_t wordsWidth_;
    std::string group_;
};

// One JSON object on one line. A job whose check failed has `error` in place of its figures.
std::string toJson(const Machine& machine, const Method& method);
std::string toJson(const Result& result);
std::string toJson(const GrowthResult& result);

}  // namespace kap::bench
