#include "host/text_source/row_lines.hpp"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <utility>

#include <kaputil/frame/convert.hpp>
#include <kaputil/frame/locale.hpp>
#include <kaputil/frame/plain_text.hpp>

#include "ado/cell_value.hpp"

namespace kap::host::text_source {
namespace {

using ado::DataTypeEnum;

// Behind the point: as many as an amount has.
constexpr std::size_t kFewDigits = 4;
constexpr std::int64_t kPowers[] = {1, 10, 100, 1000, 10000};

bool isPlain(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~'; });
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
      decimalSymbol_(writer.schema().decimalSymbol.utf8()) {
    targets_.reserve(sources.size());
    for (std::size_t i = 0; i < sources.size(); ++i) {
        const Column& column = writer.schema().columns[i];
        Target& target = targets_.emplace_back();
        target.source = sources[i];
        target.column = &column;
        target.info = columnInfo(column);
        target.way = wayOf(sources[i], column);
        target.instead = instead.substr(0, column.width.value_or(instead.size()));
    }
}

RowLines::Way RowLines::wayOf(const SourceColumn& source, const Column& column) const {
    if (source.info == nullptr) return Way::Blank;
    const Schema& schema = writer_.schema();
    const DataTypeEnum type = source.info->type;
    const bool direct = schema.encoding != Encoding::Unicode && isPlain(decimalSymbol_);
    if (!direct) return Way::ByText;
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
    try {
        bool first = true;
        for (Target& target : targets_) {
            const bool separated = writer_.schema().layout == Layout::Delimited;
            if (separated && !std::exchange(first, false)) lines += delimiter_;
            appendCell(lines, target, row, number);
        }
        lines += writer_.lineEnd();
    } catch (...) {
        lines.resize(begun);
        throw;
    }
}

void RowLines::appendCell(std::string& lines, Target& target, std::size_t row,
                          std::int64_t number) {
    cell_.clear();
    if (writeDirectly(target, row)) {
        place(lines, target);
        return;
    }
    const auto column = static_cast<std::size_t>(&target - targets_.data());
    lines += writer_.encoded(writer_.cell(column, textOf(target, row), number));
}

bool RowLines::writeDirectly(Target& target, std::size_t row) {
    if (target.way == Way::Blank || target.way == Way::ByText ||
        target.source.values->cell(row) != ado::ColumnStore::Cell::Value) {
        return false;
    }
    const ado::ColumnStore& values = *target.source.values;
    switch (target.way) {
        case Way::Plain:
            return writeText(values.bytes(row), target);
        case Way::Whole:
            cell_ = plain::text(values.integer(row));
            break;
        case Way::Real:
            if (!writeReal(target, row)) return false;
            break;
        case Way::Amount:
            if (!writeAmount(values.integer(row))) return false;
            break;
        case Way::Day:
            if (!writeDay(target, values.real(row))) return false;
            break;
        case Way::Blank:
        case Way::ByText:
            return false;
    }
    return fits(cell_.size(), target);
}

bool RowLines::fits(std::size_t length, const Target& target) const {
    return writer_.schema().layout == Layout::Delimited ||
           length <= target.column->width.value_or(0);
}

bool RowLines::writeText(std::string_view text, const Target& target) {
    if (!fits(text.size(), target) || !isPlain(text) || text == replaced_) return false;
    cell_ = text;
    return true;
}

// An amount is stored with four digits behind the point. One that is cut to fewer is rounded as
// texts are.
bool RowLines::writeAmount(std::int64_t scaled) {
    const std::size_t digits = writer_.schema().currencyDigits;
    const std::int64_t cut = kPowers[kFewDigits - digits];
    if (scaled % cut != 0) return false;
    writeDecimal(scaled / cut, digits);
    return true;
}

// Most numbers have a few decimals. A number that is the nearest to such a decimal of no more
// digits than its type keeps has that decimal as its text.
bool RowLines::writeShort(double value, bool single) {
    constexpr auto kUnit = static_cast<double>(kPowers[kFewDigits]);
    constexpr double kMostOfDouble = 1e15;
    constexpr double kMostOfSingle = 1e7;
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
    writeDecimal(units, digits);
    return true;
}

// A number of so many digits behind the point, at most kFewDigits.
void RowLines::writeDecimal(std::int64_t units, std::size_t digits) {
    if (units < 0) cell_ += '-';
    cell_ += plain::text(std::abs(units / kPowers[digits]));
    if (digits == 0) return;
    const std::string fraction = plain::text(std::abs(units % kPowers[digits]));
    cell_ += decimalSymbol_;
    cell_.append(digits - fraction.size(), '0');
    cell_ += fraction;
}

bool RowLines::writeReal(const Target& target, std::size_t row) {
    const bool single = target.source.info->type == DataTypeEnum::adSingle;
    if (writeShort(target.source.values->real(row), single)) return true;
    const String text =
        convert::toString(ado::toVariant(*target.source.info, *target.source.values, row));
    for (const char16_t unit : text.view()) {
        // A Single with an exponent has none when it is read again with the room of a Double.
        const bool grows = single && unit == u'E';
        if (unit == currentLocale().decimalSeparator) {
            cell_ += decimalSymbol_;
        } else if (grows || unit < u' ' || unit > u'~') {
            return false;
        } else {
            cell_ += static_cast<char>(unit);
        }
    }
    return true;
}

// Days come again and again: each is written once by way of its text.
bool RowLines::writeDay(Target& target, double days) {
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
    cell_ = known->second;
    return true;
}

void RowLines::place(std::string& lines, const Target& target) const {
    if (writer_.schema().layout == Layout::Delimited) {
        placeDelimited(lines, target);
        return;
    }
    const std::size_t room = target.column->width.value_or(0) - cell_.size();
    const bool right = LineWriter::standsRight(*target.column);
    if (right) lines.append(room, ' ');
    lines += cell_;
    if (!right) lines.append(room, ' ');
}

void RowLines::placeDelimited(std::string& lines, const Target& target) const {
    if (target.column->kind != ColumnKind::Text || cell_.empty()) {
        lines += cell_;
        return;
    }
    lines += '"';
    for (const char letter : cell_) {
        lines.append(letter == '"' ? 2 : 1, letter);
    }
    lines += '"';
}

std::optional<String> RowLines::textOf(const Target& target, std::size_t row) const {
    if (target.way == Way::Blank) return std::nullopt;
    const ado::ColumnStore& values = *target.source.values;
    const ado::ColumnStore::Cell cell = values.cell(row);
    const bool replaces = cell == ado::ColumnStore::Cell::Null ||
                          (cell == ado::ColumnStore::Cell::Value &&
                           isText(target.source.info->type) && values.bytes(row) == replaced_);
    if (replaces) return String(target.instead);
    const ado::CellValue text =
        ado::toCell(target.info, ado::toVariant(*target.source.info, values, row));
    const auto* bytes = std::get_if<std::string>(&text);
    return bytes == nullptr ? std::nullopt : std::optional<String>(*bytes);
}

}  // namespace kap::host::text_source
