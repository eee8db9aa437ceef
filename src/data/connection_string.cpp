#include "data/connection_string.hpp"

#include <algorithm>
#include <cstddef>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "base/quoting.hpp"
#include "data/failures.hpp"

namespace kap::ado {
namespace {

bool isConnectionBlank(char letter) {
    return letter == ' ' || letter == '\t' || letter == '\r' || letter == '\n';
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && isConnectionBlank(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && isConnectionBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

class ConnectionStringReader {
public:
    explicit ConnectionStringReader(std::string_view text) : text_(text) {}

    // Moves to the next pair; false at the end. Empty places between two ';' are passed over.
    bool nextPair() {
        while (position_ < text_.size() &&
               (text_[position_] == ';' || isConnectionBlank(text_[position_]))) {
            ++position_;
        }
        return position_ < text_.size();
    }

    std::string key() {
        const std::size_t start = position_;
        while (position_ < text_.size() && text_[position_] != '=' && text_[position_] != ';') {
            ++position_;
        }
        const std::string_view name = trimmed(text_.substr(start, position_ - start));
        if (position_ == text_.size() || text_[position_] == ';') {
            refuse(start, "'" + std::string(name) + "' has no '=' after it");
        }
        if (name.empty()) {
            refuse(start, "there is no name before '='");
        }
        ++position_;
        return std::string(name);
    }

    std::string value() {
        while (position_ < text_.size() && isConnectionBlank(text_[position_])) {
            ++position_;
        }
        if (position_ < text_.size() && (text_[position_] == '"' || text_[position_] == '\'')) {
            return quotedValue();
        }
        if (position_ < text_.size() && text_[position_] == '{') {
            return bracedValue();
        }
        const std::size_t end = std::min(text_.find(';', position_), text_.size());
        const std::string_view plain = trimmed(text_.substr(position_, end - position_));
        position_ = end;
        return std::string(plain);
    }

    [[nodiscard]] std::size_t position() const { return position_; }

private:
    // The name of a driver may hold ';'.
    std::string bracedValue() {
        const std::size_t start = position_;
        const std::size_t close = text_.find('}', start);
        if (close == std::string_view::npos) {
            refuse(start, "a brace is not closed");
        }
        position_ = close + 1;
        endOfValue("a value in braces");
        return std::string(text_.substr(start + 1, close - start - 1));
    }

    std::string quotedValue() {
        const std::size_t start = position_;
        const char quote = text_[position_++];
        std::string value;
        while (true) {
            if (position_ == text_.size()) {
                refuse(start, "a quoted value is not closed");
            }
            const char letter = text_[position_++];
            if (letter != quote) {
                value.push_back(letter);
            } else if (position_ < text_.size() && text_[position_] == quote) {
                value.push_back(quote);
                ++position_;
            } else {
                break;
            }
        }
        endOfValue("a quoted value");
        return value;
    }

    void endOfValue(const std::string& value) {
        while (position_ < text_.size() && isConnectionBlank(text_[position_])) {
            ++position_;
        }
        if (position_ < text_.size() && text_[position_] != ';') {
            refuse(position_, "after " + value + " only ';' may stand");
        }
    }

    // The text itself is not shown: it may hold a password.
    [[noreturn]] void refuse(std::size_t position, const std::string& reason) const {
        fail::invalidArgument("The connection string cannot be read at character " +
                              plain::text(static_cast<std::int64_t>(position + 1)) + ": " + reason +
                              ". Write it as Key=Value;Key=Value.");
    }

    std::string_view text_;
    std::size_t position_ = 0;
};

bool holdsPassword(const std::string& key) {
    return equalsIgnoringCase(key, "Password") || equalsIgnoringCase(key, "PWD");
}

// Strings within strings, which some providers have.
bool holdsString(const std::string& key) {
    return equalsIgnoringCase(key, "Extended Properties");
}

std::string withoutPasswords(std::string_view text) {
    std::string made;
    std::size_t copied = 0;
    ConnectionStringReader reader(text);
    while (reader.nextPair()) {
        const std::size_t start = reader.position();
        const std::string key = reader.key();
        const std::string value = reader.value();
        std::string instead;
        if (holdsString(key)) {
            const std::string inner = withoutPasswords(value);
            if (inner == value) {
                continue;
            }
            instead = key + "=" + inQuotes(inner);
        } else if (!holdsPassword(key)) {
            continue;
        }
        made += text.substr(copied, start - copied);
        made += instead;
        copied = std::min(reader.position() + (instead.empty() ? 1 : 0), text.size());
    }
    made += text.substr(copied);
    return made;
}

}  // namespace

bool ConnectionString::isTrue(std::string_view value) {
    return equalsIgnoringCase(value, "True") || equalsIgnoringCase(value, "Yes") || value == "1";
}

std::string ConnectionString::shown(std::string_view text) {
    const auto persists = parse(text).find("Persist Security Info");
    return persists && isTrue(*persists) ? std::string(text) : withoutPasswords(text);
}

ConnectionString ConnectionString::parse(std::string_view text) {
    ConnectionString made;
    ConnectionStringReader reader(text);
    while (reader.nextPair()) {
        std::string key = reader.key();
        made.pairs_.push_back({std::move(key), reader.value()});
    }
    return made;
}

std::optional<std::string> ConnectionString::find(std::string_view key) const {
    const auto found = std::find_if(pairs_.rbegin(), pairs_.rend(), [key](const Pair& pair) {
        return equalsIgnoringCase(pair.key, key);
    });
    if (found == pairs_.rend()) {
        return std::nullopt;
    }
    return found->value;
}

}  // namespace kap::ado
