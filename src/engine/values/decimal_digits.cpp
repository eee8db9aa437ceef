#include <algorithm>

#include <kaputil/automation/plain_text.hpp>

#include "engine/values/exact.hpp"
#include "engine/values/number_format.hpp"

namespace kap::engine {

namespace {

void dropLeadingZeros(std::string& digits) {
    digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size()));
    if (digits.empty()) digits = "0";
}

DecimalDigits digitsOfText(std::string_view text) {
    DecimalDigits result;
    result.negative = text.starts_with('-');
    if (result.negative) text.remove_prefix(1);
    const std::size_t point = text.find('.');
    result.whole = text.substr(0, point);
    if (point != std::string_view::npos) result.fraction = text.substr(point + 1);
    dropLeadingZeros(result.whole);
    return result;
}

}  // namespace

DecimalDigits DecimalDigits::of(Wide value, int scale) {
    return digitsOfText(scaledText(value, scale));
}

DecimalDigits DecimalDigits::of(double value) {
    constexpr int kDecimals = 14;  // behind the first digit
    const std::string text = plain::scientific(value, kDecimals);
    const std::size_t mark = text.find('e');
    std::string_view exponent = std::string_view(text).substr(mark + 1);
    if (exponent.starts_with('+')) exponent.remove_prefix(1);
    DecimalDigits result = digitsOfText(std::string_view(text).substr(0, mark))
                               .shifted(plain::readInt(exponent).value_or(0));
    result.fraction.erase(result.fraction.find_last_not_of('0') + 1);
    return result;
}

bool DecimalDigits::isZero() const {
    return whole == "0" && fraction.find_first_not_of('0') == std::string::npos;
}

DecimalDigits DecimalDigits::rounded(std::size_t decimals) const {
    DecimalDigits result = *this;
    result.fraction.resize(decimals, '0');
    if (fraction.size() <= decimals || fraction[decimals] < '5') return result;
    std::string all = "0" + result.whole + result.fraction;
    auto digit = all.rbegin();
    for (; *digit == '9'; ++digit)
        *digit = '0';
    ++*digit;
    result.whole = all.substr(0, all.size() - decimals);
    result.fraction = all.substr(all.size() - decimals);
    dropLeadingZeros(result.whole);
    return result;
}

DecimalDigits DecimalDigits::shifted(int places) const {
    DecimalDigits result = *this;
    const auto count = static_cast<std::size_t>(std::abs(places));
    if (places > 0) {
        result.fraction.resize(std::max(count, result.fraction.size()), '0');
        result.whole += result.fraction.substr(0, count);
        result.fraction.erase(0, count);
    } else if (places < 0) {
        if (result.whole.size() < count) result.whole.insert(0, count - result.whole.size(), '0');
        result.fraction.insert(0, result.whole.substr(result.whole.size() - count));
        result.whole.resize(result.whole.size() - count);
    }
    dropLeadingZeros(result.whole);
    return result;
}

}  // namespace kap::engine
