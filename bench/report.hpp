#pragma once

#include <ostream>

#include "bench/measure.hpp"

namespace kap::bench {

// Writes the table for people: one line a job as soon as it is done, and a closing line.
class Table {
public:
    Table(std::ostream& out, bool coloured) : out_(out), coloured_(coloured) {}

    // What a reader must know to judge the figures: compiler, build, machine, method.
    void writeHeading(const Method& method, std::size_t nameWidth);
    void writeResult(const Result& result);
    void writeSummary(std::size_t met, std::size_t total);

private:
    std::string paint(const std::string& text, const char* colour) const;

    std::ostream& out_;
    bool coloured_;
    std::size_t nameWidth_ = 0;
};

// One JSON object on one line. A job whose check failed has `error` in place of its figures.
std::string toJson(const Result& result);

}  // namespace kap::bench
