#include "tsql/script_split.hpp"

#include <algorithm>
#include <optional>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "tsql/server_error.hpp"

namespace kap::tsql {

namespace {

constexpr std::string_view kBlanks = " \t\r\n\f\v";

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// The count of a GO line; nothing when the line is not one.
std::optional<int> goCount(std::string_view line, int lineNumber) {
    line = trimmed(line.substr(0, line.find("--")));
    if (line.size() < 2 || !equalsIgnoringCase(line.substr(0, 2), "GO")) return std::nullopt;
    if (line.size() == 2) return 1;
    if (kBlanks.find(line[2]) == std::string_view::npos) return std::nullopt;
    const std::string_view number = trimmed(line.substr(2));
    const auto count = plain::readInt(number);
    if (!count || *count < 0) {
        throw syntaxError(std::string(number), lineNumber);
    }
    return count;
}

// Follows quotes and comments from line to line, to know whether a line starts in the open.
class QuoteTracker {
public:
    [[nodiscard]] bool inTheOpen() const { return close_ == '\0' && commentDepth_ == 0; }

    void read(std::string_view line) {
        for (std::size_t i = 0; i < line.size(); ++i) {
            const std::string_view pair = line.substr(i, 2);
            if (close_ != '\0') {
                // A doubled mark closes and opens again, which comes to the same.
                if (line[i] == close_) close_ = '\0';
            } else if (pair == "/*") {
                ++commentDepth_;
                ++i;
            } else if (commentDepth_ > 0) {
                if (pair == "*/") {
                    --commentDepth_;
                    ++i;
                }
            } else if (pair == "--") {
                return;
            } else if (line[i] == '\'' || line[i] == '"') {
                close_ = line[i];
            } else if (line[i] == '[') {
                close_ = ']';
            }
        }
    }

private:
    char close_ = '\0';
    int commentDepth_ = 0;
};

}  // namespace

std::vector<Batch> splitScript(std::string_view text) {
    std::vector<Batch> batches;
    QuoteTracker quotes;
    std::size_t batchStart = 0;
    int batchLine = 1;
    int line = 1;
    const auto finish = [&](std::size_t end, int count) {
        const std::string_view body = text.substr(batchStart, end - batchStart);
        if (!trimmed(body).empty() && count > 0) {
            batches.push_back({std::string(body), batchLine, count});
        }
    };
    for (std::size_t start = 0; start < text.size(); ++line) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        const std::size_t following = std::min(end + 1, text.size());
        const std::string_view content = text.substr(start, end - start);
        const auto count = quotes.inTheOpen() ? goCount(content, line) : std::nullopt;
        if (count) {
            finish(start, *count);
            batchStart = following;
            batchLine = line + 1;
        } else {
            quotes.read(content);
        }
        start = following;
    }
    finish(text.size(), 1);
    return batches;
}

}  // namespace kap::tsql
