#include "cli/output/csv_line.hpp"

#include <algorithm>
#include <string_view>

namespace kap::cli {
namespace {

// Most characters are behind the comma in their order, which one comparison tells.
bool needsQuotes(std::string_view value) {
    return std::ranges::any_of(value, [](char unit) {
        return unit <= ',' && (unit == ',' || unit == '"' || unit == '\r' || unit == '\n');
    });
}

}  // namespace

std::string csvLine(const std::vector<std::string>& values) {
    std::string line;
    for (std::size_t i = 0; i < values.size(); ++i) {
        line += i == 0 ? "" : ",";
        const std::size_t start = line.size();
        line += values[i];
        quoteForCsv(line, start);
    }
    return line + "\r\n";
}

void quoteForCsv(std::string& line, std::size_t start) {
    if (!needsQuotes(std::string_view(line).substr(start))) {
        return;
    }
    const std::string text = line.substr(start);
    line.resize(start);
    line += '"';
    for (const char unit : text) {
        line.append(unit == '"' ? 2 : 1, unit);
    }
    line += '"';
}

}  // namespace kap::cli
