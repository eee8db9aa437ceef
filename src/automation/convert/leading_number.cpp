#include <charconv>
#include <string>

#include <kaputil/automation/convert.hpp>

#include "automation/convert/characters.hpp"
#include "automation/convert/number_text.hpp"
#include "automation/locale_tables.hpp"

namespace kap::convert {
namespace {

bool isSkipped(char16_t unit) {
    return unit == u' ' || unit == u'\t' || unit == u'\n' || unit == u'\r';
}

bool isExponentMark(char16_t unit) {
    return unit == u'e' || unit == u'E' || unit == u'd' || unit == u'D';
}

// The characters that belong to the leading number, blanks between them left out.
class LeadingNumber {
public:
    std::string collect(std::u16string_view text) {
        for (const char16_t unit : text) {
            if (!isSkipped(unit) && !take(unit)) {
                break;
            }
        }
        return finished();
    }

private:
    bool take(char16_t unit) {
        const bool ok = continues(unit);
        if (ok) {
            collected_.push_back(isExponentMark(unit) ? 'e' : static_cast<char>(unit));
        }
        return ok;
    }

    bool continues(char16_t unit) {
        if (isDigit(unit)) {
            digitSeen_ = true;
            exponentDigit_ = exponentSeen_;
            return true;
        }
        if (unit == u'-' || unit == u'+') {
            return collected_.empty() || collected_.back() == 'e';
        }
        if (unit == u'.' && !pointSeen_ && !exponentSeen_) {
            pointSeen_ = true;
            return true;
        }
        if (isExponentMark(unit) && digitSeen_ && !exponentSeen_) {
            exponentSeen_ = true;
            mantissaEnd_ = collected_.size();
            return true;
        }
        return false;
    }

    [[nodiscard]] std::string finished() const {
        std::string number =
            exponentSeen_ && !exponentDigit_ ? collected_.substr(0, mantissaEnd_) : collected_;
        if (number.starts_with('+')) {
            number.erase(0, 1);
        }
        const std::size_t exponentPlus = number.find("e+");
        if (exponentPlus != std::string::npos) {
            number.erase(exponentPlus + 1, 1);
        }
        return number;
    }

    std::string collected_;
    std::size_t mantissaEnd_ = 0;
    bool digitSeen_ = false;
    bool pointSeen_ = false;
    bool exponentSeen_ = false;
    bool exponentDigit_ = false;
};

// The longest "&H..." or "&O..." at the start; up to 16 bits are a pattern of that width.
double prefixedNumber(std::u16string_view text, std::u16string_view digits) {
    const std::size_t end = std::min(text.find_first_not_of(digits, 2), text.size());
    const auto read = readNumber(text.substr(0, end), knownLocales().front());
    if (!read) {
        return 0;
    }
    constexpr std::uint64_t kSixteenBits = 0xFFFF;
    if (read->pattern != NumberText::Pattern::None && read->bits <= kSixteenBits) {
        return static_cast<std::int16_t>(static_cast<std::uint16_t>(read->bits));
    }
    return toDouble(*read).value_or(0);
}

}  // namespace

double leadingNumber(std::u16string_view text) {
    while (!text.empty() && isSkipped(text.front())) {
        text.remove_prefix(1);
    }
    if (text.starts_with(u"&H") || text.starts_with(u"&h")) {
        return prefixedNumber(text, u"0123456789abcdefABCDEF");
    }
    if (text.starts_with(u"&O") || text.starts_with(u"&o")) {
        return prefixedNumber(text, u"01234567");
    }
    const std::string number = LeadingNumber().collect(text);
    double value = 0;
    std::from_chars(number.data(), number.data() + number.size(), value);
    return value;
}

}  // namespace kap::convert
