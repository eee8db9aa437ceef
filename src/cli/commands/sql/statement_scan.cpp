#include "cli/commands/sql/statement_scan.hpp"

#include <algorithm>
#include <cstddef>
#include <string>

#include "base/ascii.hpp"

namespace kap::cli {
namespace {

bool isInWord(char unit) {
    return isAsciiLetter(unit) || isAsciiDigit(unit) || unit == '_' || unit == '@' || unit == '#' ||
           static_cast<unsigned char>(unit) >= 0x80;
}

// Goes through a script part by part and notes what its end depends on.
class Scan {
public:
    explicit Scan(std::string_view script) : rest_(script) {}

    ScannedScript run() {
        while (!rest_.empty()) {
            step();
        }
        result_.finished = result_.finished && depth_ == 0 && !program_;
        return result_;
    }

private:
    void step() {
        const char unit = rest_.front();
        if (unit == ' ' || unit == '\t' || unit == '\r' || unit == '\n') {
            rest_.remove_prefix(1);
        } else if (rest_.starts_with("--")) {
            const std::size_t end = rest_.find('\n');
            rest_.remove_prefix(end == rest_.npos ? rest_.size() : end);
        } else if (rest_.starts_with("/*")) {
            pass("*/", 2);
        } else if (unit == '\'' || unit == '"' || unit == '[') {
            note(false);
            pass(unit == '[' ? "]" : std::string_view(&rest_.front(), 1), 1);
        } else if (isInWord(unit)) {
            note(false);
            word();
        } else {
            note(unit == ';');
            rest_.remove_prefix(1);
        }
    }

    void note(bool finished) {
        result_.empty = false;
        result_.finished = finished;
    }

    // A mark that stands twice is passed as two parts: the second one opens again.
    void pass(std::string_view end, std::size_t from) {
        const std::size_t found = rest_.find(end, from);
        result_.open = found == rest_.npos;
        rest_.remove_prefix(result_.open ? rest_.size() : found + end.size());
    }

    void word() {
        std::size_t length = 0;
        while (length < rest_.size() && isInWord(rest_[length])) {
            ++length;
        }
        const std::string current = asciiUpper(rest_.substr(0, length));
        rest_.remove_prefix(length);
        if (current == "TRAN" || current == "TRANSACTION" || current == "DISTRIBUTED") {
            depth_ -= before_ == "BEGIN" ? 1 : 0;  // BEGIN TRAN opens no block
        } else if (current == "BEGIN" || current == "CASE") {
            ++depth_;
        } else if (current == "END" && depth_ > 0) {
            --depth_;
        } else if (before_ == "CREATE" || before_ == "ALTER") {
            program_ = program_ || current == "PROC" || current == "PROCEDURE" ||
                       current == "FUNCTION" || current == "TRIGGER";
        }
        before_ = current;
    }

    std::string_view rest_;
    ScannedScript result_;
    std::string before_;    // the last word
    int depth_ = 0;         // of BEGIN and CASE
    bool program_ = false;  // whose text goes to the batch's end
};

}  // namespace

ScannedScript scanned(std::string_view script) {
    return Scan(script).run();
}

std::string_view openBehind(std::string_view line, std::string_view before) {
    static constexpr std::string_view kBegins = "'\"[";
    static constexpr std::string_view kEnds = "'\"]";
    while (true) {
        const std::size_t end = line.find(before);  // at once when nothing is open
        if (end == line.npos) {
            return before;
        }
        line.remove_prefix(end + before.size());
        const std::size_t begin = line.find_first_of("'\"[-/");
        if (begin == line.npos) {
            return {};
        }
        line.remove_prefix(begin);
        if (line.starts_with("--")) {
            return {};
        }
        if (line.starts_with("/*")) {
            before = "*/";
            line.remove_prefix(2);
        } else {
            before = kEnds.substr(std::min(kBegins.find(line.front()), kEnds.size()), 1);
            line.remove_prefix(1);
        }
    }
}

bool isGo(std::string_view line) {
    const std::string_view text = trimmed(line, " \t\r\n;");
    if (text.size() < 2 || !equalsIgnoringCase(text.substr(0, 2), "GO")) {
        return false;
    }
    const std::string_view count = text.substr(2);
    return count.empty() ||
           (count.find_first_not_of(" \t") != 0 &&
            trimmed(count, " \t").find_first_not_of("0123456789") == std::string_view::npos);
}

}  // namespace kap::cli
