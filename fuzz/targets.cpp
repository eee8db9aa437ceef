#include "fuzz/targets.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/arithmetic.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/automation/format.hpp>
#include <kaputil/automation/locale.hpp>
#include <kaputil/core/cproprieta.hpp>
#include <kaputil/data/error_numbers.hpp>
#include <kaputil/util/dates.hpp>
#include <kaputil/util/values.hpp>

#include "fuzz/reader_targets.hpp"

namespace kap::fuzz {
namespace {

constexpr std::array<const char*, 3> kLocales = {"it-IT", "en-US", "en-GB"};

[[noreturn]] void fail(const char* what, std::u16string_view text) {
    std::fprintf(stderr, "fuzz: %s, for the units", what);
    for (const char16_t unit : text) {
        std::fprintf(stderr, " %04X", static_cast<unsigned>(unit));
    }
    std::fputc('\n', stderr);
    std::abort();
}

void check(bool holds, const char* what, std::u16string_view text) {
    if (!holds) {
        fail(what, text);
    }
}

// The result of an action, nullopt when it raised one of the numbers that it may raise.
template <class Action>
auto attempt(Action action, std::initializer_list<std::int32_t> mayRaise, std::u16string_view text)
    -> std::optional<decltype(action())> {
    try {
        return action();
    } catch (const AutomationError& error) {
        check(std::find(mayRaise.begin(), mayRaise.end(), error.number()) != mayRaise.end(),
              "an error that the action does not raise", text);
        return std::nullopt;
    }
}

constexpr std::initializer_list<std::int32_t> kConversionErrors = {errors::kOverflow,
                                                                   errors::kTypeMismatch};

template <class Action>
void inEveryLocale(Action action) {
    for (const char* name : kLocales) {
        const LocaleScope locale(name);
        action();
    }
}

// A text is numeric exactly when it converts to Double, and what is printed reads back as printed.
void numbers(std::u16string_view text) {
    inEveryLocale([text] {
        const Variant value = text;
        const auto number =
            attempt([&] { return convert::toDouble(value); }, kConversionErrors, text);
        check(convert::isNumeric(value) == number.has_value(), "numeric and no number", text);
        if (!number) {
            return;
        }
        check(std::isfinite(*number), "a number that is not finite", text);
        const String printed = convert::toString(*number);
        const auto again =
            attempt([&] { return convert::toDouble(Variant(printed)); }, kConversionErrors, text);
        // The fifteen digits of the largest numbers may round beyond them.
        check(again || std::fabs(*number) > 1.7e308, "a printed number does not read back", text);
        check(!again || convert::toString(*again) == printed, "a number changes on its way", text);
    });
}

void allTypes(std::u16string_view text) {
    constexpr std::array kTypes = {VarType::Byte,   VarType::Integer, VarType::Long,
                                   VarType::Single, VarType::Double,  VarType::Currency,
                                   VarType::Date,   VarType::Boolean, VarType::Decimal,
                                   VarType::String, VarType::Variant};
    inEveryLocale([&] {
        const Variant value = text;
        for (const VarType type : kTypes) {
            const auto changed =
                attempt([&] { return convert::changeType(value, type); }, kConversionErrors, text);
            check(!changed || type == VarType::Variant || changed->type() == type,
                  "a value of another type", text);
            if (changed) {
                static_cast<void>(convert::toString(*changed));
            }
        }
    });
}

// A text is a date exactly when it converts to one, and what is printed reads back as printed.
void dates(std::u16string_view text) {
    inEveryLocale([text] {
        const Variant value = text;
        const auto date = attempt([&] { return convert::toDate(value); }, kConversionErrors, text);
        check(convert::isDate(value) == date.has_value(), "a date test that is wrong", text);
        if (date) {
            const String printed = convert::toString(*date);
            const auto again =
                attempt([&] { return convert::toDate(Variant(printed)); }, kConversionErrors, text);
            check(again && convert::toString(*again) == printed, "a date changes on its way", text);
        }
    });
}

void leadingNumbers(std::u16string_view text) {
    check(!std::isnan(convert::leadingNumber(text)), "a leading number that is none", text);
}

// The first quarter of the text is the value, the rest the format.
void formats(std::u16string_view text) {
    const std::u16string_view given = text.substr(0, text.size() / 4);
    const std::u16string_view pattern = text.substr(given.size());
    double real = 0;
    if (given.size() >= 4) {
        std::uint64_t bits = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            bits = (bits << 16) | given[i];
        }
        real = std::bit_cast<double>(bits);
    }
    const std::array<Variant, 6> values = {Variant(given),
                                           Variant(std::isfinite(real) ? real : 1.5),
                                           Variant(Date{std::fmod(real, 3e6)}),
                                           Variant::null(),
                                           Variant(),
                                           Variant(Currency{-12345678})};
    // The longest part of a date is written for a run of its letters; a number has 310 digits.
    const std::size_t longest = 60 * pattern.size() + 2 * given.size() + 500;
    inEveryLocale([&] {
        for (const Variant& value : values) {
            const auto written =
                attempt([&] { return convert::format(value, pattern); },
                        {errors::kInvalidArgument, errors::kOverflow, errors::kTypeMismatch}, text);
            check(!written || written->size() <= longest, "a text too long for its format", text);
        }
    });
}

void typedDates(std::u16string_view text) {
    inEveryLocale([text] {
        const String checked = util::kapControllaData(text, u"yyyy-mm-dd");
        check(checked.empty() || convert::isDate(checked), "a checked date that is none", text);
        const Variant literal = util::DtoSQL(text);
        check(literal.as<String>().empty() || convert::isDate(literal), "a literal that is no date",
              text);
        static_cast<void>(util::kapVal(text, u"Integer"));
    });
}

// The text is a bag's content; names and values come from its parts.
void propertyStrings(std::u16string_view text) {
    static constexpr std::initializer_list<std::int32_t> kErrors = {
        errors::kInvalidArgument, errors::kOverflow, errors::kInvalidUseOfNull,
        errors::kTypeMismatch};
    const auto bag = make<CProprieta>();
    bag->Scrivi(u"", text);
    const String name{text.substr(0, std::min<std::size_t>(3, text.size()))};
    const auto run = [&](auto action) {
        static_cast<void>(attempt(
            [&] {
                action();
                return true;
            },
            kErrors, text));
    };
    run([&] { static_cast<void>(bag->Leggi(name)); });
    run([&] { bag->Scrivi(name, text.substr(text.size() / 2)); });
    run([&] { static_cast<void>(bag->Leggi(std::int16_t{2})); });
    run([&] { bag->Elimina(name); });
    run([&] { static_cast<void>(bag->NomeProprieta(3)); });
    check(bag->Count() >= 0, "a negative count", text);
}

// Two halves as operands: the types of results and the errors of arithmetic.
void operands(std::u16string_view text) {
    const Variant left = text.substr(0, text.size() / 2);
    const Variant right = text.substr(text.size() / 2);
    using Operation = Variant (*)(const Variant&, const Variant&);
    constexpr std::array<Operation, 6> kOperations = {
        &arithmetic::add,    &arithmetic::subtract,      &arithmetic::multiply,
        &arithmetic::divide, &arithmetic::integerDivide, &arithmetic::modulo};
    for (const Operation operation : kOperations) {
        static_cast<void>(
            attempt([&] { return operation(left, right); },
                    {errors::kOverflow, errors::kTypeMismatch, errors::kDivisionByZero}, text));
    }
}

Ref<ado::Recordset> someRecords() {
    auto records = make<ado::Recordset>();
    records->Fields()->Append(u"A", ado::DataTypeEnum::adVarWChar, 20);
    records->Fields()->Append(u"N", ado::DataTypeEnum::adInteger);
    records->Fields()->Append(u"D", ado::DataTypeEnum::adDate);
    records->Open();
    for (const char16_t* name : {u"abc", u"ABD", u"è"}) {
        records->AddNew(u"A", name);
        records->Update(u"N", static_cast<std::int32_t>(records->RecordCount()));
    }
    records->AddNew(u"D", Date{37980.5});
    return records;
}

// Criteria and orders are taken or refused, whole; a refused one leaves every record shown.
void criteria(std::u16string_view text) {
    static const Ref<ado::Recordset> records = someRecords();
    const std::initializer_list<std::int32_t> refusals = {
        errors::kInvalidArgument,  // half of a surrogate pair
        ado::errors::kInvalidArgument, ado::errors::kItemNotFound};
    const LocaleScope locale("it-IT");
    const auto tried = [&](auto action) {
        return attempt(
                   [&] {
                       action();
                       return true;
                   },
                   refusals, text)
            .has_value();
    };
    const bool filtered = tried([&] { records->setFilter(Variant(text)); });
    check(filtered || records->RecordCount() == 4, "a refused filter that hides records", text);
    records->setFilter(u"");
    const bool found = tried([&] { records->Find(text); });
    check(!found || records->Eof() || records->AbsolutePosition() >= 1, "a lost position", text);
    tried([&] { records->setSort(text); });
    check(records->RecordCount() == 4, "an order that loses records", text);
    records->setSort(u"");
}

constexpr std::array<Target, 9> kTargets = {{{"numbers", &numbers},
                                             {"types", &allTypes},
                                             {"dates", &dates},
                                             {"leading", &leadingNumbers},
                                             {"formats", &formats},
                                             {"typed", &typedDates},
                                             {"properties", &propertyStrings},
                                             {"operands", &operands},
                                             {"criteria", &criteria}}};

}  // namespace

std::span<const Target> targets() {
    static const std::vector<Target> all = [] {
        std::vector<Target> known(kTargets.begin(), kTargets.end());
        for (const auto more : {readerTargets(), sqlTargets(), fileTargets(), markupTargets()}) {
            known.insert(known.end(), more.begin(), more.end());
        }
        return known;
    }();
    return all;
}

std::u16string textOf(std::span<const unsigned char> bytes) {
    std::u16string text(std::min(bytes.size() / 2, kMaxUnits), u'\0');
    for (std::size_t i = 0; i < text.size(); ++i) {
        text[i] = static_cast<char16_t>(bytes[2 * i] | (bytes[2 * i + 1] << 8));
    }
    return text;
}

}  // namespace kap::fuzz
