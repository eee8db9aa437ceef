#include "cli/output/csv_line.hpp"

namespace kap::cli {

std::string csvLine(const std::vector<std::string>& values) {
    std::string line;
    for (std::size_t i = 0; i < values.size(); ++i) {
        line += i == 0 ? "" : ",";
        if (values[i].find_first_of(",\"\r\n") == std::string::npos) {
            line += values[i];
            continue;
        }
        line += '"';
        for (const char unit : values[i]) {
            line.append(unit == '"' ? 2 : 1, unit);
        }
        line += '"';
    }
    return line + "\r\n";
}

}  // namespace kap::cli
