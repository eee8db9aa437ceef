#include "ado/criteria.hpp"

#include <cmath>
#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/decimal.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/automation/locale.hpp>
#include <kaputil/automation/plain_text.hpp>

#include "ado/cell_order.hpp"
#include "automation/convert/calendar.hpp"
#include "base/ascii.hpp"
#include "base/power.hpp"
#include "base/text_order.hpp"
#include "base/unicode.hpp"
#include "data/failures.hpp"
#include "data/variant_cell.hpp"

namespace kap::ado {
namespace {

using Node = CriteriaNode;
using Cell = ColumnStore::Cell;

[[noreturn]] void refuse(const Node& node, const char* why) {
    fail::invalidArgument("The criteria for column '" + node.column + "': '" + node.value + "' " +
                          why + ".");
}

bool isDate(DataTypeEnum type) {
    return type == DataTypeEnum::adDate || type == DataTypeEnum::adDBDate ||
           type == DataTypeEnum::adDBTime || type == DataTypeEnum::adDBTimeStamp;
}

bool holds(Node::Operator comparison, std::partial_ordering order) {
    switch (comparison) {
        case Node::Operator::Equal:
            return std::is_eq(order);
        case Node::Operator::NotEqual:
            return std::is_neq(order);
        case Node::Operator::Less:
            return std::is_lt(order);
        case Node::Operator::LessOrEqual:
            return std::is_lteq(order);
        case Node::Operator::Greater:
            return std::is_gt(order);
        case Node::Operator::GreaterOrEqual:
            return std::is_gteq(order);
        case Node::Operator::Like:
            break;
    }
    return false;
}

// The test of one column: `compare` tells how a cell that is not Null stands to the value; the
// bool is whether the cell is a replaced Null, which reads as the neutral value.
template <class Compare>
RowTest comparing(const ColumnStore& store, Node::Operator comparison, Compare compare) {
    return [&store, comparison, compare](std::size_t row) {
        const Cell cell = store.cell(row);
        return cell != Cell::Null && holds(comparison, compare(row, cell == Cell::ReplacedNull));
    };
}

Decimal numberOf(const Node& node) {
    try {
        if (node.literal == Node::Literal::Text) {
            return convert::toDecimal(Variant(node.value));
        }
    } catch (const AutomationError&) {
        refuse(node, "is no number");
    }
    if (const auto decimal = Decimal::parse(node.value)) {
        return *decimal;
    }
    const auto real = plain::readReal(node.value);
    const auto rounded = real && real->inRange ? Decimal::fromDouble(real->value) : std::nullopt;
    if (node.literal == Node::Literal::Date || !rounded) {
        refuse(node, "is no number");
    }
    return *rounded;
}

int scaleOf(const ColumnInfo& column) {
    constexpr int kCurrencyScale = 4;
    if (column.type == DataTypeEnum::adCurrency) {
        return kCurrencyScale;
    }
    const bool decimal =
        column.type == DataTypeEnum::adNumeric || column.type == DataTypeEnum::adDecimal;
    return decimal ? column.numericScale : 0;
}

RowTest integerTest(const ColumnInfo& column, const ColumnStore& store, const Node& node) {
    const Decimal number = numberOf(node);
    const int scale = scaleOf(column);
    const auto scaled = number.scaledTo(scale);
    if (scaled && Decimal(*scaled, scale) == number) {
        return comparing(
            store, node.comparison, [&store, value = *scaled](auto row, bool replaced) {
                return std::partial_ordering((replaced ? 0 : store.integer(row)) <=> value);
            });
    }
    // Between two values that the column can hold, or beyond them all.
    const double value = number.toDouble() * powerOfTen(scale);
    return comparing(store, node.comparison, [&store, value](auto row, bool replaced) {
        return (replaced ? 0.0 : static_cast<double>(store.integer(row))) <=> value;
    });
}

RowTest wideTest(const ColumnStore& store, const Node& node) {
    const std::string value = numberOf(node).plainText();
    return comparing(store, node.comparison, [&store, value](auto row, bool replaced) {
        return std::partial_ordering(
            compareDecimals(replaced ? std::string_view() : store.bytes(row), value));
    });
}

bool booleanOf(const Node& node) {
    if (equalsIgnoringCase(node.value, "TRUE")) {
        return true;
    }
    return !equalsIgnoringCase(node.value, "FALSE") && !numberOf(node).isZero();
}

RowTest booleanTest(const ColumnStore& store, const Node& node) {
    const std::int64_t value = booleanOf(node) ? 1 : 0;
    return comparing(store, node.comparison, [&store, value](auto row, bool replaced) {
        return std::partial_ordering((replaced ? 0 : store.integer(row)) <=> value);
    });
}

RowTest realTest(const ColumnInfo& column, const ColumnStore& store, const Node& node) {
    double value = numberOf(node).toDouble();
    if (column.type == DataTypeEnum::adSingle) {
        value = static_cast<double>(static_cast<float>(value));
    }
    return comparing(store, node.comparison, [&store, value](auto row, bool replaced) {
        return (replaced ? 0.0 : store.real(row)) <=> value;
    });
}

double daysOf(const Node& node) {
    if (node.literal == Node::Literal::Word) {
        return numberOf(node).toDouble();
    }
    try {
        const Variant text(node.value);
        if (node.literal == Node::Literal::Text) {
            return convert::linearDays(convert::toDate(text));
        }
        const LocaleScope monthFirst("en-US");
        return convert::linearDays(convert::toDate(text));
    } catch (const AutomationError&) {
        refuse(node, "is no date");
    }
}

// Dates are the same when they agree to the millisecond.
std::int64_t milliseconds(double days) {
    constexpr double kPerDay = 86'400'000.0;
    return std::llround(days * kPerDay);
}

RowTest dateTest(const ColumnStore& store, const Node& node) {
    const std::int64_t value = milliseconds(daysOf(node));
    return comparing(store, node.comparison, [&store, value](auto row, bool replaced) {
        return std::partial_ordering((replaced ? 0 : milliseconds(store.real(row))) <=> value);
    });
}

// `*` and `%` stand for any characters; the texts are in upper case.
bool matchesPattern(std::u16string_view text, std::u16string_view pattern) {
    std::size_t at = 0;
    std::size_t wanted = 0;
    std::optional<std::pair<std::size_t, std::size_t>> retry;  // behind the last wildcard
    while (at < text.size()) {
        const bool wild =
            wanted < pattern.size() && (pattern[wanted] == u'*' || pattern[wanted] == u'%');
        if (wild) {
            retry = {at, ++wanted};
        } else if (wanted < pattern.size() && pattern[wanted] == text[at]) {
            ++at;
            ++wanted;
        } else if (retry) {
            at = ++retry->first;
            wanted = retry->second;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of(u"*%", wanted) == std::u16string_view::npos;
}

// The text of a cell that criteria compare.
std::string shownText(const ColumnInfo& column, const ColumnStore& store, std::size_t row) {
    return column.type == DataTypeEnum::adVariant ? variantCellText(store.bytes(row))
                                                  : std::string(store.bytes(row));
}

RowTest likeTest(const ColumnInfo& column, const ColumnStore& store, const Node& node) {
    const std::u16string pattern = unicode::upper(String(node.value).view());
    return [&column, &store, pattern](std::size_t row) {
        if (store.cell(row) == Cell::Null) {
            return false;
        }
        const bool replaced = store.cell(row) == Cell::ReplacedNull;
        const String text(replaced ? std::string() : shownText(column, store, row));
        return matchesPattern(unicode::upper(text.view()), pattern);
    };
}

// A cell with a type of its own: numbers are compared with numbers, all else as text.
RowTest variantTest(const ColumnStore& store, const Node& node) {
    const std::string value = node.value;
    const bool number = node.literal == Node::Literal::Word;
    return comparing(store, node.comparison, [&store, value, number](auto row, bool replaced) {
        const std::string text = replaced ? std::string() : variantCellText(store.bytes(row));
        const auto one = number ? Decimal::parse(text) : std::nullopt;
        const auto other = number ? Decimal::parse(value) : std::nullopt;
        return one && other
                   ? std::partial_ordering(compareDecimals(one->plainText(), other->plainText()))
                   : std::partial_ordering(compareTexts(text, value));
    });
}

RowTest textTest(const ColumnInfo& column, const ColumnStore& store, const Node& node) {
    if (node.comparison == Node::Operator::Like) {
        return likeTest(column, store, node);
    }
    if (column.type == DataTypeEnum::adVariant) {
        return variantTest(store, node);
    }
    std::string value = node.value;
    if (column.type == DataTypeEnum::adGUID && value.starts_with('{') && value.ends_with('}')) {
        value = value.substr(1, value.size() - 2);
    }
    return comparing(store, node.comparison, [&store, value](auto row, bool replaced) {
        return std::partial_ordering(
            compareTexts(replaced ? std::string_view() : store.bytes(row), value));
    });
}

RowTest nullTest(const ColumnStore& store, const Node& node) {
    if (node.comparison != Node::Operator::Equal && node.comparison != Node::Operator::NotEqual) {
        refuse(node, "can only be equal or not");
    }
    const bool wanted = node.comparison == Node::Operator::Equal;
    return [&store, wanted](std::size_t row) { return (store.cell(row) == Cell::Null) == wanted; };
}

RowTest comparisonTest(const RowTable& table, const Node& node) {
    const auto found = table.find(String(node.column).view());
    if (!found) {
        fail::itemNotFound();
    }
    const ColumnInfo& column = table.columns()[*found];
    const ColumnStore& store = table.store(*found);
    if (node.literal == Node::Literal::Word && equalsIgnoringCase(node.value, "NULL")) {
        return nullTest(store, node);
    }
    const Storage storage = storageOf(column.type);
    if (storage == Storage::Text) {
        return textTest(column, store, node);
    }
    if (node.comparison == Node::Operator::Like || storage == Storage::Binary) {
        refuse(node, "cannot be compared so: the column is no text");
    }
    if (column.wideDecimal) {
        return wideTest(store, node);
    }
    if (column.type == DataTypeEnum::adBoolean) {
        return booleanTest(store, node);
    }
    if (isDate(column.type)) {
        return dateTest(store, node);
    }
    return storage == Storage::Real ? realTest(column, store, node)
                                    : integerTest(column, store, node);
}

}  // namespace

RowTest rowTest(const RowTable& table, const CriteriaNode& criteria) {
    if (criteria.kind == Node::Kind::Comparison) {
        return comparisonTest(table, criteria);
    }
    std::vector<RowTest> parts;
    parts.reserve(criteria.parts.size());
    for (const Node& part : criteria.parts) {
        parts.push_back(rowTest(table, part));
    }
    const bool all = criteria.kind == Node::Kind::And;
    return [parts = std::move(parts), all](std::size_t row) {
        for (const RowTest& part : parts) {
            if (part(row) != all) {
                return !all;
            }
        }
        return all;
    };
}

}  // namespace kap::ado
