#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <random>
#include <string_view>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/arithmetic.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/automation/format.hpp>
#include <kaputil/automation/locale.hpp>
#include <kaputil/util/amounts.hpp>

// A million roundings and conversions of numbers as one number, which must be the same in every
// build: an amount must not depend on the host on which it is rounded.
namespace kap::test {

// What every build computes. A change of it is a change of results.
inline constexpr std::uint64_t kNumberDigest = 12726740850598893086U;

class NumberDigest {
public:
    [[nodiscard]] std::uint64_t value() const { return hash_; }

    void rounding() {
        constexpr const char16_t* kModes[] = {u"A", u"I", u"S"};
        const double size = real();
        const auto decimals = static_cast<std::int16_t>(whole(45) - 22);
        const String mode = kModes[whole(3)];
        addResult([&] { return util::KapRound(size, decimals, mode); });
        const double price = amount();
        const auto usual = static_cast<std::int16_t>(whole(9) - 4);
        addResult([&] { return util::KapRound(price, usual, u"A"); });
    }

    void conversions() {
        const double number = whole(2) == 0 ? amount() : real();
        addResult([&] { return Variant(convert::toString(Variant(number))); });
        addResult([&] { return Variant(convert::toString(Variant(static_cast<float>(number)))); });
        addResult([&] { return Variant(convert::toDouble(convert::toString(Variant(number)))); });
        addResult([&] { return Variant(convert::toCurrency(Variant(number))); });
        addResult([&] { return Variant(convert::toDecimal(Variant(number))); });
        addResult([&] { return Variant(convert::toDouble(convert::toDecimal(Variant(number)))); });
        addResult([&] { return Variant(convert::toLong(Variant(number))); });
        addResult([&] { return Variant(convert::format(Variant(number), u"#,##0.00##")); });
        const std::int32_t exponent = whole(41) - 20;
        addResult([&] { return arithmetic::power(number, exponent); });
    }

    // The same in the database.
    void queries(const Ref<ado::Connection>& database, int count) {
        for (int i = 0; i < count; ++i) {
            const String number = convert::toString(Variant(convert::toDecimal(Variant(amount()))));
            const String digits = convert::toString(Variant(whole(13) - 6));
            addResult([&] {
                return database
                    ->Execute(u"SELECT STR(ROUND(CAST(" + number + u" AS float), " + digits +
                              u"), 40, 16) + ' ' + CONVERT(varchar(40), POWER(10.0E0, " + digits +
                              u"), 2) + ' ' + CONVERT(varchar(40), POWER(CAST(" + number +
                              u" AS float), 3), 2) + ' ' + CAST(ROUND(" + number + u", " + digits +
                              u") AS varchar(40))")
                    ->Fields()
                    ->Item(0)
                    ->Value();
            });
        }
    }

private:
    [[nodiscard]] std::int32_t whole(std::uint32_t below) {
        return static_cast<std::int32_t>(generator_() % below);
    }
    // Of any size: every pattern of bits whose exponent is not far from one.
    [[nodiscard]] double real() {
        const std::uint64_t bits = generator_();
        const std::uint64_t exponent = 1023 - 64 + (bits >> 52) % 128;
        const std::uint64_t pattern = (bits & 0x800FFFFFFFFFFFFFU) | (exponent << 52U);
        return std::bit_cast<double>(pattern);
    }
    // As they stand on invoices: up to five decimals.
    [[nodiscard]] double amount() {
        constexpr double kUnits[] = {1, 10, 100, 1000, 10000, 100000};
        const double number = static_cast<double>(whole(2000000000)) - 1000000000;
        return number / kUnits[whole(6)];
    }

    template <class Result>
    void addResult(Result result) {
        try {
            add(result());
        } catch (const AutomationError& error) {
            add(static_cast<std::uint64_t>(error.number()));
        }
    }

    void add(const Variant& value) {
        add(static_cast<std::uint64_t>(value.type()));
        switch (value.type()) {
            case VarType::Double:
                return add(std::bit_cast<std::uint64_t>(value.as<double>()));
            case VarType::Long:
                return add(static_cast<std::uint64_t>(value.as<std::int32_t>()));
            case VarType::Currency:
                return add(static_cast<std::uint64_t>(value.as<Currency>().scaled));
            default: {
                const String text = convert::toString(value);
                for (const char16_t unit : text.view()) {
                    add(std::uint64_t{unit});
                }
            }
        }
    }

    void add(std::uint64_t number) {
        constexpr std::uint64_t kPrime = 1099511628211U;
        hash_ = (hash_ ^ number) * kPrime;
        hash_ ^= hash_ >> 29U;
    }

    std::mt19937_64 generator_{20030512};  // the same sequence in every build
    std::uint64_t hash_ = 14695981039346656037U;
};

inline std::uint64_t numberDigest() {
    const LocaleScope locale("en-US");
    constexpr int kRounds = 90000;
    constexpr int kQueries = 2000;
    NumberDigest digest;
    for (int i = 0; i < kRounds; ++i) {
        digest.rounding();
        digest.conversions();
    }
    const auto database = make<ado::Connection>();
    database->Open(u"Provider=KapLocal;Data Source=:memory:digest");
    digest.queries(database, kQueries);
    return digest.value();
}

}  // namespace kap::test
