#include "drivers/text/schema.hpp"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/automation/locale.hpp>
#include <kaputil/automation/plain_text.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "base/unicode.hpp"
#include "drivers/text/failure.hpp"
#include "platform/paths.hpp"
#include "platform/profile_text.hpp"
#include "platform/whole_file.hpp"

namespace kap::ado::text_files {
namespace {

constexpr std::array<std::pair<std::u16string_view, ColumnKind>, 15> kTypes = {{
    {u"Bit", ColumnKind::Boolean},
    {u"Byte", ColumnKind::Whole},
    {u"Short", ColumnKind::Whole},
    {u"Integer", ColumnKind::Whole},
    {u"Long", ColumnKind::Whole},
    {u"Single", ColumnKind::Real},
    {u"Float", ColumnKind::Real},
    {u"Double", ColumnKind::Real},
    {u"Currency", ColumnKind::Currency},
    {u"Date", ColumnKind::Date},
    {u"DateTime", ColumnKind::Date},
    {u"Char", ColumnKind::Text},
    {u"Text", ColumnKind::Text},
    {u"Memo", ColumnKind::Text},
    {u"LongChar", ColumnKind::Text},
}};

// "LongChar300" is LongChar.
std::u16string_view withoutSize(std::u16string_view type) {
    while (!type.empty() && type.back() >= u'0' && type.back() <= u'9') {
        type.remove_suffix(1);
    }
    return type;
}

std::optional<ColumnKind> kindNamed(std::u16string_view type) {
    for (const auto& [name, kind] : kTypes) {
        if (unicode::sameName(name, type) ||
            (name == u"LongChar" && unicode::sameName(name, withoutSize(type)))) {
            return kind;
        }
    }
    return std::nullopt;
}

std::optional<std::size_t> wholeNumber(const String& text) {
    const auto number = plain::readInt(text.utf8());
    return number && *number >= 0 ? std::optional(static_cast<std::size_t>(*number)) : std::nullopt;
}

// Takes the last word off a text.
std::u16string_view takeLastWord(std::u16string_view& text) {
    text = unicode::trim(text);
    const std::size_t blank = text.rfind(u' ');
    const std::size_t begin = blank == std::u16string_view::npos ? 0 : blank + 1;
    const std::u16string_view word = text.substr(begin);
    text = unicode::trim(text.substr(0, begin));
    return word;
}

std::u16string_view withoutQuotes(std::u16string_view name) {
    const bool quoted = name.size() >= 2 && name.front() == u'"' && name.back() == u'"';
    return quoted ? name.substr(1, name.size() - 2) : name;
}

// A line of fixed length is made in memory.
constexpr std::size_t kWidestColumn = 10'000'000;

class Reader {
public:
    Reader(const platform::ProfileText& text, String file) : text_(text), file_(std::move(file)) {}

    [[nodiscard]] Schema read() const {
        Schema schema;
        readFormat(schema);
        schema.header = !unicode::sameName(value(u"ColNameHeader").value_or(u""), u"False");
        schema.encoding = encoding();
        const String decimal(std::u16string(1, currentLocale().decimalSeparator));
        schema.decimalSymbol = value(u"DecimalSymbol").value_or(decimal);
        schema.numberDigits = number(u"NumberDigits");
        schema.currencyDigits = number(u"CurrencyDigits").value_or(schema.currencyDigits);
        schema.currencySymbol = value(u"CurrencySymbol").value_or(u"");
        schema.dateTimeFormat = value(u"DateTimeFormat").value_or(u"");
        readColumns(schema);
        return schema;
    }

private:
    [[nodiscard]] std::optional<String> value(const String& key) const {
        auto found = text_.value(file_, key);
        return found ? std::optional(String(std::move(*found))) : std::nullopt;
    }

    [[noreturn]] void refuse(const String& key) const {
        failWith(ado::errors::kUnspecified,
                 u"Schema.ini, sezione [" + file_ + u"]: il valore di " + key + u" non è valido.");
    }

    [[nodiscard]] std::optional<std::size_t> number(const String& key) const {
        constexpr std::size_t kMostDigits = 15;
        const auto text = value(key);
        if (!text || text->empty()) {
            return std::nullopt;
        }
        const auto found = wholeNumber(*text);
        if (!found || *found > kMostDigits) {
            refuse(key);
        }
        return found;
    }

    void readFormat(Schema& schema) const {
        const std::u16string format = value(u"Format").value_or(u"CSVDelimited").units();
        const std::u16string name = unicode::lower(format);
        if (name == u"fixedlength") {
            schema.layout = Layout::FixedLength;
        } else if (name == u"tabdelimited") {
            schema.delimiter = u"\t";
        } else if (name.size() == 12 && name.starts_with(u"delimited(") && name.ends_with(u')')) {
            schema.delimiter = format.substr(10, 1);
        } else if (name != u"csvdelimited") {
            refuse(u"Format");
        }
    }

    [[nodiscard]] Encoding encoding() const {
        const std::u16string name = unicode::lower(value(u"CharacterSet").value_or(u"ANSI"));
        if (name == u"oem") {
            return Encoding::Oem;
        }
        if (name == u"unicode") {
            return Encoding::Unicode;
        }
        if (name == u"utf-8" || name == u"utf8" || name == u"65001") {
            return Encoding::Utf8;
        }
        if (name != u"ansi") {
            refuse(u"CharacterSet");
        }
        return Encoding::Ansi;
    }

    void readColumns(Schema& schema) const {
        for (std::int32_t position = 1;; ++position) {
            const String key = u"Col" + String(plain::text(position));
            const auto text = value(key);
            if (!text) {
                break;
            }
            schema.columns.push_back(column(key, *text, schema.layout));
        }
        if (schema.columns.empty()) {
            failWith(ado::errors::kUnknownObject,
                     u"Schema.ini non descrive le colonne di " + file_ + u".");
        }
    }

    // The name may hold blanks; what follows it is therefore read from the end.
    [[nodiscard]] Column column(const String& key, const String& text, Layout layout) const {
        Column made;
        std::u16string_view rest = text;
        std::u16string_view type = takeLastWord(rest);
        std::u16string_view before = rest;
        if (unicode::sameName(takeLastWord(before), u"Width")) {
            made.width = wholeNumber(String(type));
            if (made.width && *made.width > kWidestColumn) {
                refuse(key);
            }
            rest = before;
            type = takeLastWord(rest);
        }
        const auto kind = kindNamed(type);
        made.name = withoutQuotes(rest);
        if (!kind || made.name.empty() || (layout == Layout::FixedLength && !made.width)) {
            refuse(key);
        }
        made.kind = *kind;
        return made;
    }

    const platform::ProfileText& text_;
    String file_;
};

}  // namespace

Schema readSchema(const std::filesystem::path& folder, const String& file) {
    const auto path = platform::locate(platform::pathText(folder / "").units() + u"SCHEMA.INI");
    const auto bytes = platform::readFile(path, platform::kLargestSettings);
    return Reader(platform::ProfileText(bytes.value_or("")), file).read();
}

}  // namespace kap::ado::text_files
