#include "cli/commands/import/cell_reader.hpp"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <optional>
#include <vector>

#include <kaputil/automation/error.hpp>
#include <kaputil/automation/locale.hpp>
#include <kaputil/automation/plain_text.hpp>
#include <kaputil/automation/string.hpp>

#include "base/ascii.hpp"
#include "cli/output/usage_error.hpp"

namespace kap::cli {
namespace {

using ado::DataTypeEnum;

constexpr const char* kNoNumber = "is no number";
constexpr const char* kNoDate = "is no date";

bool isDigits(std::string_view text) {
    return !text.empty() && std::ranges::all_of(text, isAsciiDigit);
}

std::string signOf(char16_t unit) {
    return String(std::u16string(1, unit)).utf8();
}

std::int64_t readWholeNumber(const std::string& number) {
    // "12.00" is a whole number, too.
    const std::size_t point = number.find('.');
    const std::string_view decimals = point == std::string::npos
                                          ? std::string_view()
                                          : std::string_view(number).substr(point + 1);
    if (decimals.find_first_not_of('0') != std::string_view::npos) {
        throw CellFault{"is no whole number"};
    }
    const auto whole = plain::readWhole(std::string_view(number).substr(0, point));
    if (!whole) {
        throw CellFault{kNoNumber};
    }
    return *whole;
}

double readFloat(const std::string& number) {
    const auto real = plain::readReal(number);
    if (!real || !real->inRange) {
        throw CellFault{kNoNumber};
    }
    return real->value;
}

std::int64_t readBit(std::string_view text) {
    const std::string word = asciiLower(text);
    for (const char* yes : {"1", "true", "vero", "yes", "y", "s\xC3\xAC", "si", "s", "t", "v"}) {
        if (word == yes) {
            return 1;
        }
    }
    for (const char* no : {"0", "false", "falso", "no", "n", "f"}) {
        if (word == no) {
            return 0;
        }
    }
    throw CellFault{"is neither yes (1) nor no (0)"};
}

ado::Blob readBytes(std::string_view text) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    ado::Blob blob;
    const bool marked = text.starts_with("0x") || text.starts_with("0X");
    const std::string digits = asciiLower(marked ? text.substr(2) : text);
    if (digits.size() % 2 != 0 || digits.find_first_not_of(kDigits) != std::string::npos) {
        throw CellFault{"are no bytes (0x0A1B)"};
    }
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        blob.bytes.push_back(
            static_cast<char>(kDigits.find(digits[i]) * 16 + kDigits.find(digits[i + 1])));
    }
    return blob;
}

int readSmall(std::string_view digits) {
    constexpr std::size_t kMostDigits = 4;
    if (!isDigits(digits) || digits.size() > kMostDigits) {
        throw CellFault{kNoDate};
    }
    return static_cast<int>(*plain::readWhole(digits));
}

std::vector<std::string_view> cutAt(std::string_view text, std::string_view marks) {
    std::vector<std::string_view> parts;
    while (true) {
        const std::size_t end = text.find_first_of(marks);
        parts.push_back(text.substr(0, end));
        if (end == std::string_view::npos) {
            return parts;
        }
        text.remove_prefix(end + 1);
    }
}

// The part of a day that a time of hours, minutes, perhaps seconds and their decimals is.
double readTime(std::string_view text) {
    constexpr double kSecondsADay = 86400;
    const std::vector<std::string_view> parts = cutAt(text, ":");
    if (parts.size() < 2 || parts.size() > 3) {
        throw CellFault{kNoDate};
    }
    const int hours = readSmall(parts[0]);
    const int minutes = readSmall(parts[1]);
    double seconds = 0;
    if (parts.size() == 3) {
        const auto given = plain::readReal(parts[2]);
        if (!given || !isAsciiDigit(parts[2].front())) {
            throw CellFault{kNoDate};
        }
        seconds = given->value;
    }
    if (hours > 23 || minutes > 59 || seconds >= 60) {
        throw CellFault{kNoDate};
    }
    return (hours * 3600 + minutes * 60 + seconds) / kSecondsADay;
}

// Linear days from 30 December 1899.
double daysOf(int year, int month, int day) {
    using std::chrono::sys_days;
    const std::chrono::year_month_day date{std::chrono::year(year),
                                           std::chrono::month(static_cast<unsigned>(month)),
                                           std::chrono::day(static_cast<unsigned>(day))};
    if (!date.ok() || year < 1) {
        throw CellFault{kNoDate};
    }
    constexpr std::chrono::year_month_day kFirst{std::chrono::year(1899), std::chrono::month(12),
                                                 std::chrono::day(30)};
    return static_cast<double>((sys_days(date) - sys_days(kFirst)).count());
}

// Of two digits: up to 49 in this century, as the dialect reads them.
int yearOf(std::string_view digits) {
    constexpr int kLastOfThisCentury = 49;
    const int year = readSmall(digits);
    if (digits.size() > 2) {
        return year;
    }
    return year + (year <= kLastOfThisCentury ? 2000 : 1900);
}

std::optional<double> dayAsPrograms(std::string_view text) {
    constexpr std::size_t kCompact = 8;
    if (text.size() == kCompact && isDigits(text)) {
        return daysOf(readSmall(text.substr(0, 4)), readSmall(text.substr(4, 2)),
                      readSmall(text.substr(6)));
    }
    const std::vector<std::string_view> parts = cutAt(text, "-");
    if (parts.size() == 3 && parts[0].size() == 4) {
        return daysOf(readSmall(parts[0]), readSmall(parts[1]), readSmall(parts[2]));
    }
    return std::nullopt;
}

}  // namespace

CellFormat::CellFormat(const std::string& locale) {
    try {
        const LocaleScope scope(locale);
        const Locale& rules = currentLocale();
        decimalSign_ = signOf(rules.decimalSeparator);
        groupSign_ = signOf(rules.groupSeparator);
        switch (rules.dateOrder) {
            case DateOrder::DayMonthYear:
                dates_ = DateForm::DayMonthYear;
                break;
            case DateOrder::MonthDayYear:
                dates_ = DateForm::MonthDayYear;
                break;
            case DateOrder::YearMonthDay:
                dates_ = DateForm::YearMonthDay;
                break;
        }
    } catch (const AutomationError&) {
        throw UsageError("\"" + locale + "\" is no locale that is known, as it-IT and en-US are");
    }
}

// The digits in front of the decimals, in groups of three or in none.
std::string CellFormat::wholePart(std::string_view digits) const {
    constexpr std::size_t kGroup = 3;
    std::string whole;
    for (bool first = true; !digits.empty(); first = false) {
        const std::size_t end = groupSign_.empty() ? digits.npos : digits.find(groupSign_);
        const std::string_view group = digits.substr(0, end);
        const bool alone = first && end == digits.npos;
        const bool fits = first ? alone || group.size() <= kGroup : group.size() == kGroup;
        if (!isDigits(group) || !fits) {
            throw CellFault{kNoNumber};
        }
        whole += group;
        if (end == digits.npos) {
            return whole;
        }
        digits.remove_prefix(end + groupSign_.size());
    }
    throw CellFault{kNoNumber};
}

// The number as programs write it: "-1234.5", with an exponent where it had one.
std::string CellFormat::number(std::string_view text) const {
    std::string plainNumber;
    if (text.starts_with('-') || text.starts_with('+')) {
        plainNumber = text.front() == '-' ? "-" : "";
        text.remove_prefix(1);
    }
    const std::size_t exponent = text.find_first_of("eE");
    const std::string_view behind =
        exponent == text.npos ? std::string_view() : text.substr(exponent);
    text = text.substr(0, exponent);
    const std::size_t sign = text.find(decimalSign_);
    const std::string_view whole = text.substr(0, sign);
    const std::string_view decimals =
        sign == text.npos ? std::string_view() : text.substr(sign + decimalSign_.size());
    if (whole.empty() && decimals.empty()) {
        throw CellFault{kNoNumber};
    }
    plainNumber += whole.empty() ? "0" : wholePart(whole);
    if (!decimals.empty()) {
        if (!isDigits(decimals)) {
            throw CellFault{kNoNumber};
        }
        plainNumber += "." + std::string(decimals);
    }
    return plainNumber += behind;
}

double CellFormat::date(std::string_view text) const {
    const std::size_t blank = text.find_first_of(" T");
    const std::string_view day = text.substr(0, blank);
    const double time = blank == text.npos ? 0 : readTime(trimmed(text.substr(blank + 1), " "));
    if (const auto iso = dayAsPrograms(day)) {
        return *iso + time;
    }
    const std::vector<std::string_view> parts = cutAt(day, "/-.");
    if (dates_ == DateForm::Iso || parts.size() != 3) {
        throw CellFault{kNoDate};
    }
    switch (dates_) {
        case DateForm::DayMonthYear:
            return daysOf(yearOf(parts[2]), readSmall(parts[1]), readSmall(parts[0])) + time;
        case DateForm::MonthDayYear:
            return daysOf(yearOf(parts[2]), readSmall(parts[0]), readSmall(parts[1])) + time;
        default:
            return daysOf(yearOf(parts[0]), readSmall(parts[1]), readSmall(parts[2])) + time;
    }
}

migrate::ImportedValue CellFormat::read(std::string_view text,
                                        const ado::ColumnDefinition& column) const {
    const std::string_view value = trimmed(text, " \t");
    switch (column.type) {
        case DataTypeEnum::adBoolean:
            return readBit(value);
        case DataTypeEnum::adInteger:
        case DataTypeEnum::adSmallInt:
        case DataTypeEnum::adUnsignedTinyInt:
        case DataTypeEnum::adBigInt:
            return readWholeNumber(number(value));
        case DataTypeEnum::adSingle:
        case DataTypeEnum::adDouble:
            return readFloat(number(value));
        case DataTypeEnum::adCurrency:
        case DataTypeEnum::adDecimal:
        case DataTypeEnum::adNumeric:
            return number(value);
        case DataTypeEnum::adDBDate:
        case DataTypeEnum::adDBTimeStamp:
            return date(value);
        case DataTypeEnum::adBinary:
        case DataTypeEnum::adVarBinary:
        case DataTypeEnum::adLongVarBinary:
            return readBytes(value);
        default:
            return std::string(text);
    }
}

}  // namespace kap::cli
