#pragma once

#include <map>
#include <optional>
#include <string>

#include "bench/measure.hpp"

namespace kap::bench {

// What an earlier run with --json had found, to be compared with.
class EarlierRun {
public:
    struct Figure {
        double ratio = 0;
        std::optional<Interval> interval;
    };

    // Throws std::runtime_error, naming the file and the line, when it cannot be read.
    explicit EarlierRun(const std::string& file);

    // Null when that run had no such job, or its result was wrong.
    [[nodiscard]] const Figure* find(const std::string& job) const;

private:
    std::map<std::string, Figure> figures_;
};

// How a result stands to the earlier one, in words: "was 1.40 (1.38 to 1.43): 12 % lower". Where
// the intervals overlap no difference has been shown.
std::string comparison(const Result& result, const EarlierRun::Figure& earlier);

}  // namespace kap::bench
