#include "drivers/text/row_lines.hpp"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <utility>

#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/locale.hpp>
#include <kaputil/automation/plain_text.hpp>

#include "automation/convert/scaled_text.hpp"
#include "base/quoting.hpp"
#include "data/cell_value.hpp"

namespace kap::ado::text_files {
namespace {

using ado::DataTypeEnum;

// Behind the point: as many as an amount has.
constexpr std::size_t kFewDigits = 4;
constexpr std::int64_t kPowers[] = {1, 10, 100, 1000, 10000};

bool isPlain(char c) {
    return c >= ' ' && c <= '~';
}

bool isPlain(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return isPlain(c); });
}

// The character before the decimals; one that is not plain when there is more than one.
char pointOf(const Schema& schema) {
    const std::u16string_view symbol = schema.decimalSymbol.view();
    return symbol.size() == 1 && symbol.front() <= u'~' ? static_cast<char>(symbol.front()) : '\0';
}

bool isWhole(DataTypeEnum type) {
    return type == DataTypeEnum::adInteger || type == DataTypeEnum::adSmallInt ||
           type == DataTypeEnum::adUnsignedTinyInt;
}

bool isText(DataTypeEnum type) {
    return ado::storageOf(type) == ado::Storage::Text && type != DataTypeEnum::adGUID;
}

}  // namespace

ado::ColumnInfo columnInfo(const Column& column) {
    constexpr std::int32_t kLongest = 255;
    ado::ColumnInfo info;
    info.name = column.name.utf8();
    info.type = DataTypeEnum::adVarChar;
    info.definedSize = column.width ? static_cast<std::int32_t>(*column.width) : kLongest;
    info.isLong = true;  // whether a value fits is seen when it is written as the file has it
    return info;
}

RowLines::RowLines(const LineWriter& writer, std::vector<SourceColumn> sources,
                   std::string_view replaced, std::string_view instead)
    : writer_(writer),
      replaced_(replaced),
      delimiter_(writer.encoded(writer.schema().delimiter)),
      point_(pointOf(writer.schema())) {
    targets_.reserve(sources.size());
    for (std::size_t i = 0; i < sources.size(); ++i) {
        const Column& column = writer.schema().columns[i];
        Target& target = targets_.emplace_back();
        target.source = sources[i];
        target.column = &column;
        target.info = columnInfo(column);
        target.way = wayOf(sources[i], column);
        target.standsRight = LineWriter::standsRight(column);
        target.instead = instead.substr(0, column.width.value_or(instead.size()));
    }
}

RowLines::Way RowLines::wayOf(const SourceColumn& source, const Column& column) const {
    if (source.info == nullptr) return Way::Blank;
    const Schema& schema = writer_.schema();
    const DataTypeEnum type = source.info->type;
    if (schema.encoding == Encoding::Unicode || !isPlain(point_)) return Way::ByText;
    const bool asItIs = column.kind == ColumnKind::Text || column.kind == ColumnKind::Whole;
    if (isText(type) && asItIs) return Way::Plain;
    const bool number = column.kind == ColumnKind::Real && !schema.numberDigits;
    if (isWhole(type) && (asItIs || number)) return Way::Whole;
    const bool real = type == DataTypeEnum::adDouble || type == DataTypeEnum::adSingle;
    if (real && number) return Way::Real;
    const bool amount = type == DataTypeEnum::adCurrency && column.kind == ColumnKind::Currency;
    if (amount && schema.currencySymbol.empty() && schema.currencyDigits <= kFewDigits) {
        return Way::Amount;
    }
    const bool date = type == DataTypeEnum::adDBTimeStamp && column.kind == ColumnKind::Date;
    return date ? Way::Day : Way::ByText;
}

void RowLines::append(std::string& lines, std::size_t row, std::int64_t number) {
    const std::size_t begun = lines.size();
    const bool separated = writer_.schema().layout == Layout::Delimited;
    try {
        bool first = true;
        for (Target& target : targets_) {
            if (separated && !std::exchange(first, false)) lines += delimiter_;
            if (appendDirectly(lines, target, row)) continue;
            const auto column = static_cast<std::size_t>(&target - targets_.data());
            lines += writer_.encoded(writer_.cell(column, textOf(target, row), number));
        }
        lines += writer_.lineEnd();
    } catch (...) {
        lines.resize(begun);
        throw;
    }
}

bool RowLines::appendDirectly(std::string& lines, Target& target, std::size_t row) {
    if (target.way == Way::Blank || target.way == Way::ByText ||
        target.source.values->cell(row) != ado::ColumnStore::Cell::Filled) {
        return false;
    }
    const ado::ColumnStore& values = *target.source.values;
    switch (target.way) {
        case Way::Plain:
            return appendText(lines, target, values.bytes(row));
        case Way::Whole:
            return place(lines, target, plain::ScaledText(values.integer(row)).view());
        case Way::Real:
            return appendShort(lines, target, values.real(row)) || appendReal(lines, target, row);
        case Way::Amount:
            return appendAmount(lines, target, values.integer(row));
        case Way::Day:
            return appendDay(lines, target, values.real(row));
        case Way::Blank:
        case Way::ByText:
            return false;
    }
    return false;
}

bool RowLines::appendText(std::string& lines, const Target& target, std::string_view text) const {
    return isPlain(text) && text != replaced_ && place(lines, target, text);
}

// An amount is stored with four digits behind the point. One that is cut to fewer is rounded as
// texts are.
bool RowLines::appendAmount(std::string& lines, const Target& target, std::int64_t scaled) const {
    const std::size_t digits = writer_.schema().currencyDigits;
    const std::int64_t cut = kPowers[kFewDigits - digits];
    if (scaled % cut != 0) return false;
    return place(lines, target, plain::ScaledText(scaled / cut, digits, point_).view());
}

// Most numbers have a few decimals. A number that is the nearest to such a decimal of no more
// digits than its type keeps has that decimal as its text.
bool RowLines::appendShort(std::string& lines, const Target& target, double value) const {
    constexpr auto kUnit = static_cast<double>(kPowers[kFewDigits]);
    constexpr double kMostOfDouble = 1e15;
    constexpr double kMostOfSingle = 1e7;
    const bool single = target.source.info->type == DataTypeEnum::adSingle;
    const double scaled = std::nearbyint(value * kUnit);
    if (scaled == 0 || !(std::abs(scaled) < (single ? kMostOfSingle : kMostOfDouble))) return false;
    const double nearest = scaled / kUnit;
    if (single ? static_cast<float>(nearest) != static_cast<float>(value) : nearest != value) {
        return false;
    }
    auto units = static_cast<std::int64_t>(scaled);
    std::size_t digits = kFewDigits;
    for (; digits > 0 && units % 10 == 0; units /= 10)
        --digits;
    return place(lines, target, plain::ScaledText(units, digits, point_).view());
}

bool RowLines::appendReal(std::string& lines, const Target& target, std::size_t row) const {
    const bool single = target.source.info->type == DataTypeEnum::adSingle;
    const String text =
        convert::toString(ado::toVariant(*target.source.info, *target.source.values, row));
    std::string written;
    for (const char16_t unit : text.view()) {
        // A Single with an exponent has none when it is read again with the room of a Double.
        const bool grows = single && unit == u'E';
        if (unit == currentLocale().decimalSeparator) {
            written += point_;
        } else if (grows || unit < u' ' || unit > u'~') {
            return false;
        } else {
            written += static_cast<char>(unit);
        }
    }
    return place(lines, target, written);
}

// Days come again and again: each is written once by way of its text.
bool RowLines::appendDay(std::string& lines, Target& target, double days) const {
    constexpr double kFarthest = 3'000'000;
    constexpr std::size_t kMostKept = 5'000;
    if (!(days > -kFarthest && days < kFarthest)) return false;
    const auto day = static_cast<std::int64_t>(days);
    if (static_cast<double>(day) != days) return false;
    auto known = target.days.find(day);
    if (known == target.days.end()) {
        if (target.days.size() == kMostKept) target.days.clear();
        const String text =
            writer_.formatted(*target.column, convert::toString(Variant(Date{days})));
        std::string written = text.utf8();
        if (!isPlain(written)) return false;
        known = target.days.emplace(day, std::move(written)).first;
    }
    return place(lines, target, known->second);
}

bool RowLines::place(std::string& lines, const Target& target, std::string_view cell) const {
    if (writer_.schema().layout == Layout::Delimited) {
        placeDelimited(lines, target, cell);
        return true;
    }
    const std::size_t width = target.column->width.value_or(0);
    if (cell.size() > width) return false;
    const std::size_t begin = lines.size() + (target.standsRight ? width - cell.size() : 0);
    lines.append(width, ' ');
    std::ranges::copy(cell, lines.begin() + static_cast<std::ptrdiff_t>(begin));
    return true;
}

void RowLines::placeDelimited(std::string& lines, const Target& target, std::string_view cell) {
    if (target.column->kind != ColumnKind::Text || cell.empty()) {
        lines += cell;
        return;
    }
    lines += '"';
    appendDoubling(lines, cell, '"');
    lines += '"';
}

std::optional<String> RowLines::textOf(const Target& target, std::size_t row) const {
    if (target.way == Way::Blank) return std::nullopt;
    const ado::ColumnStore& values = *target.source.values;
    const ado::ColumnStore::Cell cell = values.cell(row);
    const bool replaces = cell == ado::ColumnStore::Cell::Null ||
                          (cell == ado::ColumnStore::Cell::Filled &&
                           isText(target.source.info->type) && values.bytes(row) == replaced_);
    if (replaces) return String(target.instead);
    const ado::Value text =
        ado::toCell(target.info, ado::toVariant(*target.source.info, values, row));
    const auto* bytes = std::get_if<std::string>(&text);
    return bytes == nullptr ? std::nullopt : std::optional<String>(*bytes);
}

}  // namespace kap::ado::text_files
