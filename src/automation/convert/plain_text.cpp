#include <kaputil/automation/plain_text.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <system_error>

#include <kaputil/automation/error.hpp>

#include "automation/convert/calendar.hpp"

namespace kap::plain {
namespace {

// Enough for the longest double in fixed form with a few hundred decimals.
using Buffer = std::array<char, 800>;

// The decimals that the buffer surely holds behind the longest whole part.
constexpr int kMostDecimals = 450;

template <class... Arguments>
std::string print(Arguments... arguments) {
    Buffer buffer;  // NOLINT(*-member-init): written before it is read
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), arguments...).ptr;
    return {buffer.data(), end};
}

template <class Whole>
std::optional<Whole> read(std::string_view text) {
    Whole value{};
    const char* last = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), last, value);
    return error == std::errc{} && end == last ? std::optional(value) : std::nullopt;
}

// A date's day and its milliseconds since midnight, which count forward in every century.
struct Instant {
    convert::CivilDate date;
    int milliseconds;
};

Instant instantOf(Date date) {
    constexpr int kMillisecondsPerDay = 86'400'000;
    const auto parts = convert::split(date, kMillisecondsPerDay);
    if (!parts) {
        throw AutomationError(errors::kOverflow);
    }
    if (parts->serialDay > convert::kLastSerial) {  // there is no midnight to round to
        return {convert::civilDate(convert::kLastSerial), kMillisecondsPerDay - 1};
    }
    return {convert::civilDate(parts->serialDay), parts->units};
}

std::string dateText(convert::CivilDate date) {
    return padded(date.year, 4) + '-' + padded(date.month, 2) + '-' + padded(date.day, 2);
}

}  // namespace

std::string text(std::int64_t value) {
    return print(value);
}

std::string padded(std::int64_t value, int width) {
    std::string digits = print(value);
    const std::size_t sign = value < 0 ? 1 : 0;
    const std::size_t wanted = static_cast<std::size_t>(width) + sign;
    if (digits.size() < wanted) {
        digits.insert(sign, wanted - digits.size(), '0');
    }
    return digits;
}

std::string shortest(double value) {
    return print(value);
}

std::string shortest(float value) {
    return print(value);
}

std::string fixed(double value, int decimals) {
    return print(value, std::chars_format::fixed, std::min(decimals, kMostDecimals));
}

std::string scientific(double value, int decimals) {
    return print(value, std::chars_format::scientific, std::min(decimals, kMostDecimals));
}

std::string general(double value, int digits) {
    return print(value, std::chars_format::general, std::min(digits, kMostDecimals));
}

std::optional<std::int64_t> readWhole(std::string_view text) {
    return read<std::int64_t>(text);
}

std::optional<int> readInt(std::string_view text) {
    return read<int>(text);
}

std::optional<RealNumber> readReal(std::string_view text) {
    // Digits only: the standard library's reader knows "inf" and "nan", too.
    if (text.find_first_not_of("0123456789.eE+-") != std::string_view::npos) {
        return std::nullopt;
    }
    RealNumber number;
    const char* last = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), last, number.value);
    if (error == std::errc::invalid_argument || end != last) {
        return std::nullopt;
    }
    number.inRange = error == std::errc{};
    return number;
}

std::string isoDate(Date date) {
    return dateText(instantOf(date).date);
}

std::string isoDateTime(Date date) {
    constexpr int kSecond = 1000;
    const Instant instant = instantOf(date);
    const int seconds = instant.milliseconds / kSecond;
    const int rest = instant.milliseconds % kSecond;
    return dateText(instant.date) + ' ' + padded(seconds / 3600, 2) + ':' +
           padded(seconds / 60 % 60, 2) + ':' + padded(seconds % 60, 2) +
           (rest != 0 ? '.' + padded(rest, 3) : std::string());
}

}  // namespace kap::plain
