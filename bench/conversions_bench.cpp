// Numbers and dates to text and back, beside the standard library and a bare reader and writer of
// one fixed form. Both arms take and give the same values; the library's texts are UTF-16.

#include <array>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/locale.hpp>

#include "bench/job.hpp"

namespace {

using kap::Date;
using kap::Variant;
namespace convert = kap::convert;

constexpr std::size_t kValues = 10'000;

// Amounts and measures as business data holds them: up to nine digits before the point, none to
// four behind it.
const std::vector<double>& numbers() {
    static const std::vector<double> values = [] {
        std::mt19937_64 random(2003);
        std::vector<double> made;
        constexpr std::array<double, 5> kScales = {1, 10, 100, 1000, 10000};
        for (std::size_t i = 0; i < kValues; ++i) {
            const auto digits = static_cast<double>(random() % 1'000'000'000);
            made.push_back(digits / kScales[random() % kScales.size()]);
        }
        return made;
    }();
    return values;
}

// What computing leaves behind: every bit of the fraction in use.
const std::vector<double>& thirds() {
    static const std::vector<double> values = [] {
        std::vector<double> made;
        for (const double value : numbers()) {
            made.push_back(value / 3);
        }
        return made;
    }();
    return values;
}

template <class Value>
std::vector<Variant> variantsOf(const std::vector<Value>& values) {
    return {values.begin(), values.end()};
}

void finish(benchmark::State& state, bool right) {
    if (!right) {
        state.SkipWithError("the results are not those expected");
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(kValues) * state.iterations());
}

std::string printed(double value) {
    std::array<char, 32> text{};
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value,
                                       std::chars_format::general, 15)
                             .ptr};
}

std::size_t printedSize(const std::vector<double>& values) {
    std::size_t total = 0;
    for (const double value : values) {
        total += printed(value).size();
    }
    return total;
}

kap::bench::Loop printOurs(const std::vector<double>& (*values)()) {
    return [values](benchmark::State& state) {
        const kap::LocaleScope locale("en-US");
        const std::vector<Variant> given = variantsOf(values());
        std::size_t total = 0;
        for (auto _ : state) {
            total = 0;
            for (const Variant& value : given) {
                total += convert::toString(value).size();
            }
            benchmark::DoNotOptimize(total);
        }
        finish(state, total == printedSize(values()));
    };
}

kap::bench::Loop printBare(const std::vector<double>& (*values)()) {
    return [values](benchmark::State& state) {
        std::size_t total = 0;
        for (auto _ : state) {
            total = 0;
            for (const double value : values()) {
                total += printed(value).size();
            }
            benchmark::DoNotOptimize(total);
        }
        finish(state, total == printedSize(values()));
    };
}

KAP_BENCH_PAIR("number to text: amounts", {"convert::toString", printOurs(&numbers)},
               {"std::to_chars with 15 digits", printBare(&numbers)}, 1.3);
KAP_BENCH_PAIR("number to text: thirds", {"convert::toString", printOurs(&thirds)},
               {"std::to_chars with 15 digits", printBare(&thirds)}, 1.3);

std::vector<std::string> texts() {
    std::vector<std::string> made;
    for (const double value : numbers()) {
        made.push_back(printed(value));
    }
    return made;
}

double sumOf(const std::vector<double>& values) {
    double sum = 0;
    for (const double value : values) {
        sum += value;
    }
    return sum;
}

void readNumbers(benchmark::State& state) {
    const kap::LocaleScope locale("en-US");
    const std::vector<Variant> given = variantsOf(texts());
    double sum = 0;
    for (auto _ : state) {
        sum = 0;
        for (const Variant& text : given) {
            sum += convert::toDouble(text);
        }
        benchmark::DoNotOptimize(sum);
    }
    finish(state, sum == sumOf(numbers()));
}

void readNumbersBare(benchmark::State& state) {
    const std::vector<std::string> given = texts();
    double sum = 0;
    for (auto _ : state) {
        sum = 0;
        for (const std::string& text : given) {
            double value = 0;
            std::from_chars(text.data(), text.data() + text.size(), value);
            sum += value;
        }
        benchmark::DoNotOptimize(sum);
    }
    finish(state, sum == sumOf(numbers()));
}

KAP_BENCH_PAIR("text to number: amounts", {"convert::toDouble, any separators", readNumbers},
               {"std::from_chars", readNumbersBare}, 1.3);

const std::vector<Date>& dates() {
    static const std::vector<Date> values = [] {
        std::mt19937_64 random(1753);
        std::vector<Date> made;
        for (std::size_t i = 0; i < kValues; ++i) {
            made.push_back({static_cast<double>(random() % 60'000)});
        }
        return made;
    }();
    return values;
}

constexpr std::chrono::sys_days kOrigin = std::chrono::year{1899} / 12 / 30;

// Writes and reads "dd/mm/yyyy" and nothing else.
std::u16string bareDate(Date date) {
    const std::chrono::year_month_day civil(kOrigin +
                                            std::chrono::days(static_cast<int>(date.days)));
    std::u16string text(10, u'/');
    const auto put = [&text](std::size_t at, unsigned value, std::size_t width) {
        for (std::size_t i = width; i-- > 0; value /= 10) {
            text[at + i] = static_cast<char16_t>(u'0' + value % 10);
        }
    };
    put(0, static_cast<unsigned>(civil.day()), 2);
    put(3, static_cast<unsigned>(civil.month()), 2);
    put(6, static_cast<unsigned>(static_cast<int>(civil.year())), 4);
    return text;
}

double bareDays(std::u16string_view text) {
    const auto number = [text](std::size_t at, std::size_t width) {
        int value = 0;
        for (std::size_t i = at; i < at + width; ++i) {
            value = value * 10 + (text[i] - u'0');
        }
        return value;
    };
    const std::chrono::sys_days day = std::chrono::year{number(6, 4)} / number(3, 2) / number(0, 2);
    return static_cast<double>((day - kOrigin).count());
}

void printDates(benchmark::State& state) {
    const kap::LocaleScope locale("it-IT");
    const std::vector<Variant> given = variantsOf(dates());
    std::size_t same = 0;
    for (auto _ : state) {
        same = 0;
        for (const Variant& value : given) {
            same += convert::toString(value).size();
        }
        benchmark::DoNotOptimize(same);
    }
    finish(state, same >= 9 * kValues);
}

void printDatesBare(benchmark::State& state) {
    std::size_t total = 0;
    for (auto _ : state) {
        total = 0;
        for (const Date date : dates()) {
            total += bareDate(date).size();
        }
        benchmark::DoNotOptimize(total);
    }
    finish(state, total == 10 * kValues);
}

double sumOfDays() {
    double sum = 0;
    for (const Date date : dates()) {
        sum += date.days;
    }
    return sum;
}

void readDates(benchmark::State& state) {
    const kap::LocaleScope locale("it-IT");
    std::vector<Variant> given;
    for (const Date date : dates()) {
        given.emplace_back(std::u16string_view(bareDate(date)));
    }
    double sum = 0;
    for (auto _ : state) {
        sum = 0;
        for (const Variant& text : given) {
            sum += convert::toDate(text).days;
        }
        benchmark::DoNotOptimize(sum);
    }
    finish(state, sum == sumOfDays());
}

void readDatesBare(benchmark::State& state) {
    std::vector<std::u16string> given;
    for (const Date date : dates()) {
        given.push_back(bareDate(date));
    }
    double sum = 0;
    for (auto _ : state) {
        sum = 0;
        for (const std::u16string& text : given) {
            sum += bareDays(text);
        }
        benchmark::DoNotOptimize(sum);
    }
    finish(state, sum == sumOfDays());
}

// The bare arms know one form in one order; the library finds out which of all of them it has.
KAP_BENCH_PAIR("date to text: days", {"convert::toString", printDates},
               {"a loop that writes dd/mm/yyyy", printDatesBare}, 10.0);
KAP_BENCH_PAIR("text to date: days", {"convert::toDate, every form", readDates},
               {"a loop that reads dd/mm/yyyy", readDatesBare}, 8.0);

}  // namespace
