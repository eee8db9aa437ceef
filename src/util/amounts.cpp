#include <kaputil/util/amounts.hpp>

#include <cmath>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/arithmetic.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/platform/message_box.hpp>

#include "base/power.hpp"
#include "base/unicode.hpp"

namespace kap::util {
namespace {

// A little more than one half: it carries halves, and what binary fractions keep just short of
// them, away from zero.
constexpr double kHalf = 0.5000000001;

// The largest of the first two discounts: a whole price is never given away by mistake.
constexpr double kLargestDiscount = 99.99;

double checked(double value) {
    if (!std::isfinite(value)) {
        throw AutomationError(errors::kOverflow);
    }
    return value;
}

double quotient(double dividend, double divisor) {
    if (divisor == 0 && dividend != 0) {
        throw AutomationError(errors::kDivisionByZero);
    }
    return checked(dividend / divisor);
}

double signOf(double value) {
    return value < 0 ? -1 : value > 0 ? 1 : 0;
}

double ArrotondaNormale(double number, double factor) {
    return quotient(std::trunc(signOf(number) * kHalf + checked(number * factor)), factor);
}

double ArrotondaDifetto(double number, double factor) {
    return quotient(std::trunc(checked(number * factor)), factor);
}

double ArrotondaEccesso(double number, double factor) {
    const double whole = std::trunc(checked(number * factor));
    // Deliberately compared with the number itself: exact for whole numbers, while an amount that
    // has no more decimals than asked for is raised by one more step.
    return quotient(number == whole ? whole : whole + signOf(number), factor);
}

void limitDiscount(Variant& discount) {
    if (arithmetic::compare(discount, kLargestDiscount).value_or(0) > 0) {
        discount = kLargestDiscount;
    }
}

double discounted(double value, const Variant& discount) {
    constexpr std::int16_t kWhole = 100;
    const Variant factor = arithmetic::divide(arithmetic::subtract(kWhole, discount), kWhole);
    return convert::toDouble(arithmetic::multiply(value, factor));
}

// The row of a currency; at its end when there is none.
Ref<ado::Recordset> openCurrency(const Variant& connection, const String& currency) {
    auto rows = make<ado::Recordset>();
    // The code stands in the text as it is given, quotes and all.
    rows->Open(u"SELECT TOP 1 * FROM vtx_TabVal WHERE Codice = '" + currency + u"'", connection);
    return rows;
}

std::int16_t decimalsOf(const ado::Recordset& currency) {
    const Variant decimals = currency.Fields()->Item(u"Dec_Imp")->Value();
    return decimals.isNull() ? std::int16_t{0} : convert::toInteger(decimals);
}

}  // namespace

Variant KapRound(const Variant& numero, std::int16_t decimali, const String& arrotonda) {
    const std::u16string mode = unicode::upper(arrotonda);
    const auto procedure = mode == u"A"   ? &ArrotondaNormale
                           : mode == u"I" ? &ArrotondaDifetto
                           : mode == u"S" ? &ArrotondaEccesso
                                          : nullptr;
    if (procedure == nullptr) {
        return std::int16_t{-1};
    }
    const double factor = checked(powerOfTen(decimali));
    return procedure(convert::toDouble(numero), factor);
}

Variant CalcVal(ByRef<Variant> connessione, const String& sValuta, double nPrezzo, double nQta,
                ByRef<Variant> nSc1, ByRef<Variant> nSc2, ByRef<Variant> nsc3,
                ByRef<Variant> nScTestata) {
    // Deliberately not the third one, nor the header's.
    limitDiscount(*nSc1);
    limitDiscount(*nSc2);
    const Ref<ado::Recordset> currency = openCurrency(*connessione, sValuta);
    if (currency->Eof()) {
        platform::showMessage(platform::defaultMessageTitle(),
                              platform::MessageSeverity::Information,
                              u"Valuta " + sValuta + u" non trovata!");
        return {};
    }
    double value = checked(nQta * nPrezzo);
    for (const Variant& discount : {*nScTestata, *nSc1, *nSc2, *nsc3}) {
        value = discounted(value, discount);
    }
    return KapRound(value, decimalsOf(*currency), u"A");
}

}  // namespace kap::util
