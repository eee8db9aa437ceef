#include "drivers/text/line_writer.hpp"

#include <utility>

#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/format.hpp>
#include <kaputil/automation/locale.hpp>
#include <kaputil/automation/plain_text.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "base/code_page.hpp"
#include "base/quoting.hpp"
#include "base/unicode.hpp"
#include "drivers/text/failure.hpp"
#include "platform/text_encoding.hpp"

namespace kap::ado::text_files {
namespace {

// A format of so many decimals.
std::u16string fixedPattern(std::size_t digits) {
    return digits == 0 ? u"0" : u"0." + std::u16string(digits, u'0');
}

[[noreturn]] void refuse(std::int64_t row, const Column& column, const String& reason) {
    failWith(ado::errors::kTruncated,
             u"Riga " + String(plain::text(row)) + u", colonna " + column.name + u": " + reason);
}

// The code page of an encoding that has one.
std::optional<CodePage> codePageOf(Encoding encoding) {
    switch (encoding) {
        case Encoding::Oem:
            return CodePage::Dos850;
        case Encoding::Ansi:
            return CodePage::Windows1252;
        case Encoding::Unicode:
        case Encoding::Utf8:
            break;
    }
    return std::nullopt;
}

// The characters of a text that an encoding lacks, each once, as a message names them.
std::u16string charactersWithout(Encoding encoding, std::u16string_view text) {
    std::u16string missing;
    const auto page = codePageOf(encoding);
    if (!page || encode(*page, text)) return missing;
    for (std::size_t i = 0; i < text.size();) {
        const bool pair = (text[i] & 0xFC00U) == 0xD800U && i + 1 < text.size();
        const std::u16string_view character = text.substr(i, pair ? 2 : 1);
        i += character.size();
        const bool known = encode(*page, character).has_value();
        if (!known && missing.find(character) == std::u16string::npos) missing += character;
    }
    return missing;
}

}  // namespace

LineWriter::LineWriter(Schema schema) : schema_(std::move(schema)), lineEnd_(encoded(u"\r\n")) {}

bool LineWriter::standsRight(const Column& column) noexcept {
    return column.kind == ColumnKind::Whole || column.kind == ColumnKind::Real ||
           column.kind == ColumnKind::Currency;
}

// A number's text with the schema's decimal symbol in place of the user's.
String LineWriter::numberText(const String& text) const {
    std::u16string changed;
    for (const char16_t unit : text.view()) {
        if (unit == currentLocale().decimalSeparator) {
            changed += schema_.decimalSymbol.view();
        } else {
            changed.push_back(unit);
        }
    }
    return changed;
}

// Without a format a date that is a whole day stands alone, and the hour has no zero in front. A
// column as wide as the schema of a query makes it has no room for seconds from ten o'clock on.
String LineWriter::dateText(const String& value, std::optional<std::size_t> width) const {
    const Date date = convert::toDate(value);
    if (!schema_.dateTimeFormat.empty()) {
        return convert::format(date, schema_.dateTimeFormat);
    }
    const bool wholeDay = date.days == static_cast<double>(static_cast<std::int64_t>(date.days));
    String text = convert::format(date, wholeDay ? u"ddddd" : u"ddddd h:nn:ss");
    if (!wholeDay && width && text.size() > *width) {
        text = convert::format(date, u"ddddd h:nn");
    }
    return text;
}

String LineWriter::formatted(const Column& column, const String& value) const {
    switch (column.kind) {
        case ColumnKind::Real:
            if (convert::isNumeric(value)) {
                const double number = convert::toDouble(value);
                return numberText(schema_.numberDigits
                                      ? convert::format(number, fixedPattern(*schema_.numberDigits))
                                      : convert::toString(number));
            }
            break;
        case ColumnKind::Currency:
            if (convert::isNumeric(value)) {
                const Currency amount = convert::toCurrency(value);
                return schema_.currencySymbol +
                       numberText(convert::format(amount, fixedPattern(schema_.currencyDigits)));
            }
            break;
        case ColumnKind::Date:
            if (convert::isDate(value)) {
                return dateText(value, column.width);
            }
            break;
        case ColumnKind::Boolean:
            if (unicode::sameName(value, currentLocale().trueText)) {
                return u"1";
            }
            if (unicode::sameName(value, currentLocale().falseText)) {
                return u"0";
            }
            break;
        case ColumnKind::Text:
        case ColumnKind::Whole:
            break;
    }
    return value;
}

void LineWriter::appendFixed(std::u16string& line, const Column& column, const String& text) const {
    const std::size_t room = column.width.value_or(0) - text.size();
    const std::u16string blanks(room, u' ');
    line += standsRight(column) ? blanks + text.units() : text.units() + blanks;
}

void LineWriter::appendDelimited(std::u16string& line, const Column& column,
                                 const String& text) const {
    if (column.kind != ColumnKind::Text || text.empty()) {
        line += text.view();
        return;
    }
    line.push_back(u'"');
    appendDoubling(line, text.view(), u'"');
    line.push_back(u'"');
}

std::string LineWriter::encoded(std::u16string_view text) const {
    if (const auto page = codePageOf(schema_.encoding)) {
        if (auto bytes = encode(*page, text)) {
            return std::move(*bytes);
        }
        failWith(ado::errors::kTruncated, u"\"" + String(text) +
                                              u"\" ha caratteri che il file non può contenere: " +
                                              charactersWithout(schema_.encoding, text));
    }
    return schema_.encoding == Encoding::Unicode ? platform::utf16Bytes(text)
                                                 : unicode::displayUtf8(text);
}

std::string LineWriter::beginning() const {
    std::u16string text;
    if (schema_.encoding == Encoding::Unicode) {
        text.push_back(u'\uFEFF');
    }
    if (!schema_.header) {
        return encoded(text);
    }
    for (std::size_t i = 0; i < schema_.columns.size(); ++i) {
        const Column& column = schema_.columns[i];
        if (schema_.layout == Layout::FixedLength) {
            // A name that is longer than its column is cut: only values must be whole.
            appendFixed(text, column,
                        String(column.name.view().substr(0, column.width.value_or(0))));
        } else {
            text += i > 0 ? schema_.delimiter.view() : u"";
            appendDelimited(text, {column.name, ColumnKind::Text, {}}, column.name);
        }
    }
    return encoded(text) + lineEnd_;
}

std::u16string LineWriter::cell(std::size_t position, const std::optional<String>& given,
                                std::int64_t row) const {
    const Column& column = schema_.columns[position];
    const String value = given ? formatted(column, *given) : String();
    if (const std::u16string missing = charactersWithout(schema_.encoding, value);
        !missing.empty()) {
        refuse(row, column, u"caratteri che il file non può contenere: " + String(missing));
    }
    std::u16string text;
    if (schema_.layout == Layout::Delimited) {
        appendDelimited(text, column, value);
        return text;
    }
    if (value.size() > column.width.value_or(0)) {
        refuse(row, column,
               u"\"" + value + u"\" non sta in " + String(plain::text(column.width.value_or(0))) +
                   u" caratteri.");
    }
    if (value.view().find_first_of(u"\r\n") != std::u16string_view::npos) {
        refuse(row, column, u"il testo va a capo.");
    }
    appendFixed(text, column, value);
    return text;
}

std::string LineWriter::line(const std::vector<std::optional<String>>& values,
                             std::int64_t row) const {
    std::u16string text;
    for (std::size_t i = 0; i < schema_.columns.size(); ++i) {
        if (schema_.layout == Layout::Delimited && i > 0) {
            text += schema_.delimiter.view();
        }
        text += cell(i, values[i], row);
    }
    return encoded(text) + lineEnd_;
}

}  // namespace kap::ado::text_files
