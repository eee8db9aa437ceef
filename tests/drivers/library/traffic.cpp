#include "traffic.hpp"

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <utility>

namespace kap::test::replay {
namespace {

std::string trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \r");
    if (first == std::string_view::npos) {
        return {};
    }
    return std::string(text.substr(first, text.find_last_not_of(" \r") - first + 1));
}

std::vector<std::string> split(const std::string& text, char between) {
    std::vector<std::string> parts;
    int depth = 0;
    std::string part;
    for (const char letter : text) {
        depth += letter == '(' ? 1 : letter == ')' ? -1 : 0;
        if (letter == between && depth == 0) {
            parts.push_back(trimmed(part));
            part.clear();
        } else {
            part += letter;
        }
    }
    parts.push_back(trimmed(part));
    return parts;
}

Column columnOf(const std::string& text) {
    Column column;
    const std::size_t blank = text.rfind(' ');
    column.name = trimmed(text.substr(0, blank));
    const std::string type = text.substr(blank + 1);
    const std::size_t open = type.find('(');
    column.type = type.substr(0, open);
    if (open != std::string::npos) {
        column.size = std::atoi(type.c_str() + open + 1);
        const std::size_t comma = type.find(',', open);
        column.scale =
            comma == std::string::npos ? column.size : std::atoi(type.c_str() + comma + 1);
    }
    return column;
}

Report reportOf(const std::string& text) {
    std::istringstream words(text);
    Report report;
    words >> report.state >> report.native;
    std::getline(words, report.text);
    report.text = trimmed(report.text);
    return report;
}

class Reader {
public:
    // A line with blanks in front belongs to the one before it.
    void take(const std::string& line) {
        if (line.starts_with("  ")) {
            whole_ += " " + trimmed(line);
            return;
        }
        takeWhole(std::exchange(whole_, line));
    }

    [[nodiscard]] Traffic finished() {
        takeWhole(whole_);
        return std::move(traffic_);
    }

private:
    void takeWhole(const std::string& line) {
        const std::string plain = trimmed(line);
        if (plain.empty() || plain.starts_with('#')) {
            return;
        }
        const std::size_t blank = plain.find(' ');
        const std::string word = plain.substr(0, blank);
        const std::string rest =
            blank == std::string::npos ? std::string() : trimmed(plain.substr(blank));
        if (word == "server") {
            traffic_.server = rest;
        } else if (word == "driver") {
            traffic_.driver = rest;
        } else if (word == "results") {
            traffic_.results = std::atoi(rest.c_str());
        } else if (word == ">") {
            traffic_.exchanges.push_back({rest, {}, {}});
            separate_ = true;
        } else if (word == "?") {
            traffic_.exchanges.back().parameters.push_back(rest);
        } else {
            takeAnswer(word, rest);
        }
    }

    void takeAnswer(const std::string& word, const std::string& rest) {
        auto& answers = traffic_.exchanges.back().answers;
        if (word == "columns") {
            add(Answer::Kind::Rows);
            for (const std::string& column : split(rest, ',')) {
                answers.back().columns.push_back(columnOf(column));
            }
        } else if (word == "row") {
            answers.back().rows.push_back(split(rest, '|'));
        } else if (word == "count" || word == "none") {
            add(word == "none" ? Answer::Kind::NoData : Answer::Kind::Count);
            answers.back().count = std::atol(rest.c_str());
        } else if (word == "error") {
            if (separate_ || answers.empty() || answers.back().kind != Answer::Kind::Failure) {
                add(Answer::Kind::Failure);
            }
            answers.back().reports.push_back(reportOf(rest));
        } else if (word == "then") {
            separate_ = true;
        } else if (word == "info") {
            waiting_.push_back(reportOf(rest));
        } else if (word == "waits") {
            waits_ = true;
        } else if (word == "lost") {
            answers.back().lost = true;
        } else if (word == "breaks") {
            answers.back().breaks = reportOf(rest);
        } else {
            std::abort();  // no word of these files
        }
    }

    void add(Answer::Kind kind) {
        Answer& answer = traffic_.exchanges.back().answers.emplace_back();
        answer.kind = kind;
        answer.reports = std::move(waiting_);
        waiting_.clear();
        answer.waits = std::exchange(waits_, false);
        separate_ = false;
    }

    Traffic traffic_;
    std::string whole_;
    std::vector<Report> waiting_;
    bool separate_ = true;
    bool waits_ = false;
};

}  // namespace

Traffic Traffic::read(const std::string& file) {
    std::ifstream stream(file);
    Reader reader;
    for (std::string line; std::getline(stream, line);) {
        reader.take(line);
    }
    return reader.finished();
}

}  // namespace kap::test::replay
