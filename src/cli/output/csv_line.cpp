#include "cli/output/csv_line.hpp"

namespace kap::cli {

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
    if (line.find_first_of(",\"\r\n", start) == std::string::npos) {
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
