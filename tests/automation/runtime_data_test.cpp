// Holds the conversions to what an independent implementation of the automation runtime answers:
// the tables under tests/automation/runtime/, made there by regenerate.sh.
#include <gtest/gtest.h>

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <kaputil/automation/arithmetic.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/automation/format.hpp>
#include <kaputil/automation/locale.hpp>

#include "automation/clock.hpp"
#include "automation/convert/calendar.hpp"
#include "support/build_folders.hpp"

namespace kap {
namespace {

using Fields = std::vector<std::string>;

// ---- the notation of the tables

std::u16string unescape(std::string_view utf8) {
    const String text{utf8};
    const std::u16string_view units = text;
    const std::map<char16_t, char16_t> plain = {
        {u't', u'\t'}, {u'n', u'\n'}, {u'r', u'\r'}, {u'\\', u'\\'}};
    std::u16string out;
    for (std::size_t i = 0; i < units.size(); ++i) {
        if (units[i] != u'\\') {
            out.push_back(units[i]);
        } else if (units[++i] == u'u') {
            const String code{units.substr(i + 1, 4)};
            out.push_back(static_cast<char16_t>(std::stoi(code.utf8(), nullptr, 16)));
            i += 4;
        } else {
            out.push_back(plain.at(units[i]));
        }
    }
    return out;
}

std::string escape(std::u16string_view text) {
    std::string out;
    for (const char16_t unit : text) {
        const bool printable = unit >= 0x20 && unit != 0x7F && unit != u'\\' &&
                               (unit < 0xD800 || unit > 0xDFFF) && unit != 0xA0 &&
                               (unit < 0x2000 || unit > 0x206F);
        if (printable) {
            out += String(std::u16string_view(&unit, 1)).utf8();
        } else {
            std::array<char, 8> code{};
            std::snprintf(code.data(), code.size(), "\\u%04X", static_cast<unsigned>(unit));
            out += code.data();
        }
    }
    return out;
}

template <class Number>
Number read(std::string_view text) {
    Number value{};
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

template <class Number>
std::string shown(Number value) {
    std::array<char, 400> text{};
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
}

// A decimal with all the digits of its scale.
Decimal readDecimal(std::string_view text) {
    const std::size_t point = text.find('.');
    const std::string digits = std::string(text.substr(0, point)) +
                               (point == text.npos ? "" : std::string(text.substr(point + 1)));
    const int scale = point == text.npos ? 0 : static_cast<int>(text.size() - point - 1);
    const Decimal whole = *Decimal::parse(digits);
    return {whole.magnitude(), scale, whole.negative()};
}

std::string shownDecimal(const Decimal& value) {
    std::string digits = Decimal(value.magnitude(), 0, false).plainText();
    const auto scale = static_cast<std::size_t>(value.scale());
    if (scale > 0) {
        if (digits.size() <= scale) {
            digits.insert(0, scale + 1 - digits.size(), '0');
        }
        digits.insert(digits.size() - scale, ".");
    }
    return (value.negative() ? "-" : "") + digits;
}

const std::map<std::string, VarType, std::less<>> kTypes = {
    {"Empty", VarType::Empty},       {"Null", VarType::Null},     {"Integer", VarType::Integer},
    {"Long", VarType::Long},         {"Single", VarType::Single}, {"Double", VarType::Double},
    {"Currency", VarType::Currency}, {"Date", VarType::Date},     {"String", VarType::String},
    {"Boolean", VarType::Boolean},   {"Byte", VarType::Byte},     {"Decimal", VarType::Decimal}};

Variant readValue(std::string_view field) {
    const std::size_t colon = field.find(':');
    const std::string_view text = colon == field.npos ? "" : field.substr(colon + 1);
    switch (kTypes.at(std::string(field.substr(0, colon)))) {
        case VarType::Null:
            return Variant::null();
        case VarType::Integer:
            return read<std::int16_t>(text);
        case VarType::Long:
            return read<std::int32_t>(text);
        case VarType::Single:
            return read<float>(text);
        case VarType::Double:
            return read<double>(text);
        case VarType::Currency:
            return Currency{*Decimal::parse(text)->scaledTo(4)};
        case VarType::Date:
            return Date{read<double>(text)};
        case VarType::String:
            return String(unescape(text));
        case VarType::Boolean:
            return text == "True";
        case VarType::Byte:
            return read<std::uint8_t>(text);
        case VarType::Decimal:
            return readDecimal(text);
        default:
            return {};
    }
}

std::string shownValue(const Variant& value) {
    switch (value.type()) {
        case VarType::Empty:
            return "Empty";
        case VarType::Null:
            return "Null";
        case VarType::Integer:
            return "Integer:" + shown(value.as<std::int16_t>());
        case VarType::Long:
            return "Long:" + shown(value.as<std::int32_t>());
        case VarType::Single:
            return "Single:" + shown(value.as<float>());
        case VarType::Double:
            return "Double:" + shown(value.as<double>());
        case VarType::Currency:
            return "Currency:" + shownDecimal(Decimal(value.as<Currency>().scaled, 4));
        case VarType::Date:
            return "Date:" + shown(value.as<Date>().days);
        case VarType::String:
            return "String:" + escape(value.as<String>());
        case VarType::Boolean:
            return value.as<bool>() ? "Boolean:True" : "Boolean:False";
        case VarType::Byte:
            return "Byte:" + shown(static_cast<int>(value.as<std::uint8_t>()));
        case VarType::Decimal:
            return "Decimal:" + shownDecimal(value.as<Decimal>());
        default:
            return "another type";
    }
}

// ---- the operations

std::string dayAndMonth(const Variant& value) {
    const auto read = convert::takeApart(convert::toDate(value));
    const int thisYear = convert::takeApart(localNow())->date.year;
    const auto& [date, time] = *read;
    return (date.year == thisYear ? std::string("this year ") : "year " + shown(date.year) + " ") +
           shown(date.month) + "-" + shown(date.day) + " " + shown(time.hour) + ":" +
           shown(time.minute) + ":" + shown(time.second);
}

std::string compared(const Variant& left, const Variant& right) {
    const std::optional<int> order = arithmetic::compare(left, right);
    return !order ? "Null" : *order < 0 ? "less" : *order > 0 ? "greater" : "equal";
}

std::string answer(const Fields& fields) {
    using Binary = Variant (*)(const Variant&, const Variant&);
    const std::map<std::string, Binary> operations = {
        {"add", &arithmetic::add},
        {"subtract", &arithmetic::subtract},
        {"multiply", &arithmetic::multiply},
        {"divide", &arithmetic::divide},
        {"integer divide", &arithmetic::integerDivide},
        {"modulo", &arithmetic::modulo},
        {"power", &arithmetic::power},
        {"concatenate", &arithmetic::concatenate}};
    const std::string& operation = fields.at(0);
    const Variant value = readValue(fields.at(2));
    if (const auto found = operations.find(operation); found != operations.end()) {
        return shownValue(found->second(value, readValue(fields.at(3))));
    }
    if (operation == "negate") {
        return shownValue(arithmetic::negate(value));
    }
    if (operation == "compare") {
        return compared(value, readValue(fields.at(3)));
    }
    if (operation == "day and month") {
        return dayAndMonth(value);
    }
    if (operation == "format") {
        const auto option = [&fields](std::size_t i) {
            return fields.size() > i ? read<int>(fields[i]) : 1;
        };
        return shownValue(convert::format(value, unescape(fields.at(3)),
                                          static_cast<convert::FirstDay>(option(4)),
                                          static_cast<convert::FirstWeek>(option(5))));
    }
    return shownValue(convert::changeType(value, kTypes.at(fields.at(3))));
}

std::string answerOrError(const Fields& fields) {
    const LocaleScope locale(fields.at(1));
    try {
        return answer(fields);
    } catch (const AutomationError& error) {
        return "error " + shown(error.number());
    }
}

// ---- the tables

Fields split(const std::string& line) {
    Fields fields;
    std::size_t start = 0;
    for (std::size_t tab = 0; tab != line.npos; start = tab + 1) {
        tab = line.find('\t', start);
        fields.push_back(line.substr(start, tab == line.npos ? tab : tab - start));
    }
    return fields;
}

std::string joined(const Fields& fields) {
    std::string line;
    for (const std::string& field : fields) {
        line += (line.empty() ? "" : "\t") + field;
    }
    return line;
}

std::vector<Fields> readTable(const std::string& name) {
    std::ifstream file(std::string(test::kSourceFolder) + "/tests/automation/runtime/" + name +
                       ".tsv");
    EXPECT_TRUE(file.is_open()) << name;
    std::vector<Fields> rows;
    for (std::string line; std::getline(file, line);) {
        if (!line.empty() && !line.starts_with('#')) {
            rows.push_back(split(line));
        }
    }
    return rows;
}

// The cases where this library knowingly answers otherwise, and what it answers.
std::map<std::string, std::string> differences() {
    std::map<std::string, std::string> known;
    for (Fields row : readTable("differences")) {
        const std::string ours = row.back();
        row.pop_back();
        known[joined(row)] = ours;
    }
    return known;
}

// A double made of digits may differ in the last digit that it carries beyond the fifteen that the
// runtime promises: there the independent implementation adds the digits up in floating point,
// while this library reads the nearest double.
bool sameToFifteenDigits(const std::string& left, const std::string& right) {
    const std::size_t colon = left.find(':');
    const std::string type = left.substr(0, colon);
    if ((type != "Double" && type != "Date") || !right.starts_with(type + ":")) {
        return false;
    }
    const auto first = read<double>(std::string_view(left).substr(colon + 1));
    const auto second = read<double>(std::string_view(right).substr(colon + 1));
    return std::fabs(first - second) <= 3e-15 * std::fabs(first);
}

bool agree(const Fields& fields, const std::string& ours, const std::string& theirs) {
    const bool digits = fields.at(2).starts_with("String:") || fields.at(2).starts_with("Decimal:");
    return ours == theirs || (digits && sameToFifteenDigits(ours, theirs));
}

void compareTable(const std::string& name, std::size_t atLeast) {
    const auto known = differences();
    const std::vector<Fields> rows = readTable(name);
    ASSERT_GE(rows.size(), atLeast);
    int wrong = 0;
    for (Fields fields : rows) {
        const std::string theirs = fields.back();
        fields.pop_back();
        const std::string line = joined(fields);
        const auto difference = known.find(line);
        const std::string expected = difference == known.end() ? theirs : difference->second;
        const std::string ours = answerOrError(fields);
        if (!agree(fields, ours, expected) && ++wrong <= 2000) {
            ADD_FAILURE() << line << "\n   expected " << expected << "\n   got      " << ours;
        }
        EXPECT_TRUE(difference == known.end() || difference->second != theirs)
            << line << ": listed as a difference and is none";
    }
    EXPECT_EQ(wrong, 0) << "of " << rows.size() << " cases";
}

TEST(RuntimeData, TextsReadAsNumbersAsTheIndependentImplementationReadsThem) {
    compareTable("numbers", 4000);
}

TEST(RuntimeData, ValuesChangeTypeAsInTheIndependentImplementation) {
    compareTable("types", 4000);
}

TEST(RuntimeData, TextsReadAsDatesAsTheIndependentImplementationReadsThem) {
    compareTable("dates", 2500);
}

TEST(RuntimeData, FormatsWriteWhatTheIndependentImplementationWrites) {
    compareTable("formats", 2000);
}

TEST(RuntimeData, ArithmeticGivesTheTypesAndValuesOfTheIndependentImplementation) {
    compareTable("arithmetic", 5000);
}

}  // namespace
}  // namespace kap
