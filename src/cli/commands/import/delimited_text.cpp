#include "cli/commands/import/delimited_text.hpp"

#include <algorithm>
#include <array>

namespace kap::cli {

DelimitedText::DelimitedText(std::string& text, char delimiter, char quote)
    : text_(text), delimiter_(delimiter), quote_(quote) {}

bool DelimitedText::atLineEnd() const noexcept {
    return text_[position_] == '\n' || text_[position_] == '\r';
}

void DelimitedText::passLineEnd() {
    const bool both = text_.compare(position_, 2, "\r\n") == 0;
    position_ += both ? 2 : 1;
    ++nextLine_;
}

bool DelimitedText::next(std::vector<DelimitedValue>& values) {
    values.clear();
    while (!atEnd() && atLineEnd()) {
        passLineEnd();
    }
    line_ = nextLine_;
    if (atEnd()) {
        return false;
    }
    while (true) {
        values.push_back(value());
        if (atEnd()) {
            return true;
        }
        if (atLineEnd()) {
            passLineEnd();
            return true;
        }
        ++position_;  // the delimiter
        if (atEnd()) {
            values.push_back({});
            return true;
        }
    }
}

DelimitedValue DelimitedText::value() {
    if (quote_ != '\0' && text_[position_] == quote_) {
        return quotedValue();
    }
    const std::size_t start = position_;
    while (!atEnd() && text_[position_] != delimiter_ && !atLineEnd()) {
        ++position_;
    }
    return {std::string_view(text_).substr(start, position_ - start)};
}

// The value is moved together in its own place: it never grows.
DelimitedValue DelimitedText::quotedValue() {
    const std::size_t start = ++position_;
    std::size_t end = start;
    DelimitedValue read{{}, true, true};
    for (; !atEnd(); ++position_) {
        if (text_[position_] == quote_) {
            const bool doubled = position_ + 1 < text_.size() && text_[position_ + 1] == quote_;
            if (!doubled) {
                read.broken = false;
                ++position_;
                break;
            }
            ++position_;
        } else if (text_[position_] == '\n') {
            ++nextLine_;
        }
        text_[end++] = text_[position_];
    }
    read.text = std::string_view(text_).substr(start, end - start);
    while (!atEnd() && text_[position_] != delimiter_ && !atLineEnd()) {
        read.broken = true;
        ++position_;
    }
    return read;
}

char delimiterOf(std::string_view text, char quote) {
    constexpr std::array kDelimiters = {'\t', ';', ',', '|'};
    std::array<std::size_t, kDelimiters.size()> counts{};
    bool quoted = false;
    for (const char unit : text) {
        if (quote != '\0' && unit == quote) {
            quoted = !quoted;
        } else if (!quoted && (unit == '\n' || unit == '\r')) {
            break;
        } else if (!quoted) {
            const auto* const found = std::ranges::find(kDelimiters, unit);
            if (found != kDelimiters.end()) {
                ++counts[static_cast<std::size_t>(found - kDelimiters.begin())];
            }
        }
    }
    const auto* const most = std::ranges::max_element(counts);
    return *most == 0 ? ',' : kDelimiters[static_cast<std::size_t>(most - counts.begin())];
}

}  // namespace kap::cli
