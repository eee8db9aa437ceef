#include "engine/values/message_text.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "base/hexadecimal.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {
namespace {

constexpr std::size_t kLongestText = 2047;

// One place of the pattern.
struct Place {
    bool left = false;
    bool zeros = false;
    bool plus = false;
    bool prefix = false;
    std::size_t width = 0;
    std::size_t precision = std::string::npos;
    char kind = '\0';
};

class Formatter {
public:
    Formatter(std::string_view pattern, const std::vector<MessageArgument>& arguments)
        : pattern_(pattern), arguments_(arguments) {}

    std::string run() {
        while (position_ < pattern_.size()) {
            const char letter = pattern_[position_++];
            if (letter != '%') {
                text_ += letter;
            } else if (position_ < pattern_.size() && pattern_[position_] == '%') {
                text_ += '%';
                ++position_;
            } else {
                add(place());
            }
        }
        return cut();
    }

private:
    Place place() {
        Place result;
        const std::size_t start = position_ - 1;
        for (; position_ < pattern_.size(); ++position_) {
            const char flag = pattern_[position_];
            if (flag == '-') {
                result.left = true;
            } else if (flag == '0') {
                result.zeros = true;
            } else if (flag == '+') {
                result.plus = true;
            } else if (flag == '#') {
                result.prefix = true;
            } else if (flag != ' ') {
                break;
            }
        }
        result.width = number();
        if (position_ < pattern_.size() && pattern_[position_] == '.') {
            ++position_;
            result.precision = number();
        }
        while (position_ < pattern_.size() &&
               (pattern_[position_] == 'l' || pattern_[position_] == 'h' ||
                pattern_[position_] == 'I' || pattern_[position_] == '6' ||
                pattern_[position_] == '4')) {
            ++position_;
        }
        if (position_ < pattern_.size()) result.kind = pattern_[position_++];
        if (std::string_view("sdiuoxX").find(result.kind) == std::string_view::npos) {
            throw tsql::ServerError(tsql::Message::InvalidFormatSpecification,
                                    {pattern_.substr(start)});
        }
        return result;
    }

    std::size_t number() {
        if (position_ < pattern_.size() && pattern_[position_] == '*') {
            ++position_;
            const MessageArgument* argument = next();
            const auto value = argument == nullptr ? std::nullopt : plain::readInt(argument->text);
            return static_cast<std::size_t>(std::clamp(value.value_or(0), 0, 4000));
        }
        std::size_t result = 0;
        for (; position_ < pattern_.size() && pattern_[position_] >= '0' &&
               pattern_[position_] <= '9';
             ++position_) {
            result = std::min(result * 10 + static_cast<std::size_t>(pattern_[position_] - '0'),
                              std::size_t{4000});
        }
        return result;
    }

    const MessageArgument* next() {
        return used_ < arguments_.size() ? &arguments_[used_++] : nullptr;
    }

    void add(const Place& place) {
        const MessageArgument* argument = next();
        std::string text = "(null)";
        if (argument != nullptr && !argument->null) {
            if (argument->number != (place.kind != 's')) {
                throw tsql::ServerError(tsql::Message::SubstitutionTypeDiffers,
                                        {plain::text(static_cast<std::int64_t>(used_))});
            }
            text = place.kind == 's' ? argument->text.substr(0, place.precision)
                                     : numberText(*argument, place);
        }
        const std::size_t missing = place.width > text.size() ? place.width - text.size() : 0;
        const bool zeros =
            place.zeros && !place.left && place.kind != 's' && place.precision == std::string::npos;
        if (place.left) {
            text_ += text + std::string(missing, ' ');
        } else if (zeros && !text.empty() && (text.front() == '-' || text.front() == '+')) {
            text_ += text.front() + std::string(missing, '0') + text.substr(1);
        } else {
            text_ += std::string(missing, zeros ? '0' : ' ') + text;
        }
    }

    // The precision of a number is the least count of its digits.
    static std::string withZeros(std::string digits, const Place& place) {
        const bool given = place.precision != std::string::npos;
        if (given && place.precision > digits.size()) {
            digits.insert(0, place.precision - digits.size(), '0');
        }
        return digits;
    }

    static std::string numberText(const MessageArgument& argument, const Place& place) {
        const std::int64_t value = plain::readWhole(argument.text).value_or(0);
        if (place.kind == 'd' || place.kind == 'i') {
            const bool negative = value < 0;
            const std::string digits = argument.text.substr(negative ? 1 : 0);
            return (negative ? "-" : place.plus ? "+" : "") + withZeros(digits, place);
        }
        auto rest = static_cast<std::uint64_t>(value);
        if (value >= INT32_MIN && value <= INT32_MAX) rest &= 0xFFFFFFFFU;
        const std::uint64_t base = place.kind == 'u' ? 10 : (place.kind == 'o' ? 8 : 16);
        const auto letters = place.kind == 'X' ? hex::Case::Upper : hex::Case::Lower;
        std::string text;
        do {
            text.insert(text.begin(), hex::digit(rest % base, letters));
            rest /= base;
        } while (rest != 0);
        text = withZeros(std::move(text), place);
        if (place.prefix && base == 16 && value != 0)
            text.insert(0, place.kind == 'X' ? "0X" : "0x");
        if (place.prefix && base == 8) text.insert(0, "0");
        return text;
    }

    std::string cut() {
        constexpr std::size_t kPoints = 3;
        if (text_.size() <= kLongestText) return std::move(text_);
        std::size_t end = kLongestText - kPoints;
        while (end > 0 && (static_cast<unsigned char>(text_[end]) & 0xC0U) == 0x80U)
            --end;
        return text_.substr(0, end) + "...";
    }

    std::string_view pattern_;
    const std::vector<MessageArgument>& arguments_;
    std::size_t position_ = 0;
    std::size_t used_ = 0;
    std::string text_;
};

}  // namespace

std::string messageText(std::string_view pattern, const std::vector<MessageArgument>& arguments) {
    return Formatter(pattern, arguments).run();
}

}  // namespace kap::engine
