#include "cli/commands/import/table_filler.hpp"

#include <utility>

#include <kaputil/automation/error.hpp>
#include <kaputil/automation/plain_text.hpp>

namespace kap::cli {
namespace {

// A text as a message shows it.
std::string quotedForMessage(std::string_view text) {
    constexpr std::size_t kMostBytes = 60;
    std::size_t end = text.size();
    if (end > kMostBytes) {
        for (end = kMostBytes; end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U;
             --end) {
        }
    }
    return "\"" + std::string(text.substr(0, end)) + (end < text.size() ? "...\"" : "\"");
}

bool holdsText(const ado::ColumnDefinition& column) {
    switch (column.type) {
        case ado::DataTypeEnum::adChar:
        case ado::DataTypeEnum::adVarChar:
        case ado::DataTypeEnum::adLongVarChar:
        case ado::DataTypeEnum::adWChar:
        case ado::DataTypeEnum::adVarWChar:
        case ado::DataTypeEnum::adLongVarWChar:
            return true;
        default:
            return false;
    }
}

}  // namespace

TableFiller::TableFiller(ado::Connection& connection, const std::string& table,
                         std::vector<ado::ColumnDefinition> columns, CellFormat format,
                         std::string null)
    : columns_(std::move(columns)),
      format_(std::move(format)),
      null_(std::move(null)),
      rows_(connection, table, columns_),
      values_(columns_.size()) {}

// Nothing is Null, except in a text that cannot be: there it is the empty one.
migrate::ImportedValue TableFiller::valueOf(const DelimitedValue& given,
                                            const ado::ColumnDefinition& column) const {
    const bool text = holdsText(column);
    if (!given.quoted && given.text == null_ && (!null_.empty() || column.nullable || !text)) {
        return {};
    }
    if (given.text.empty() && !text) {
        return {};  // "" is no number, and is meant to be none
    }
    return format_.read(given.text, column);
}

std::vector<RowFault> TableFiller::read(const std::vector<DelimitedValue>& row) {
    std::vector<RowFault> faults;
    if (row.size() != columns_.size()) {
        faults.push_back({.reason = "has " + plain::text(row.size()) +
                                    (row.size() == 1 ? " value" : " values") + " where " +
                                    plain::text(columns_.size()) + " are expected"});
        return faults;
    }
    for (std::size_t i = 0; i < row.size(); ++i) {
        const DelimitedValue& given = row[i];
        try {
            if (given.broken) {
                throw CellFault{"has a quote that does not end it"};
            }
            values_[i] = valueOf(given, columns_[i]);
        } catch (const CellFault& fault) {
            faults.push_back({.column = columns_[i].name,
                              .reason = quotedForMessage(given.text) + " " + fault.reason});
        }
    }
    return faults;
}

// The columns that cannot hold their values, each with the database's reason.
std::vector<RowFault> TableFiller::refusedValues() {
    std::vector<RowFault> faults;
    for (std::size_t i = 0; i < values_.size(); ++i) {
        try {
            rows_.check(i, values_[i]);
        } catch (const AutomationError& error) {
            faults.push_back({.column = columns_[i].name, .reason = error.what()});
        }
    }
    return faults;
}

std::vector<RowFault> TableFiller::insert() {
    try {
        rows_.insert(values_);
        return {};
    } catch (const AutomationError& error) {
        std::vector<RowFault> faults = refusedValues();
        if (faults.empty()) {
            faults.push_back({.reason = error.what()});
        }
        return faults;
    }
}

std::int64_t TableFiller::fill(DelimitedText& text,
                               const std::function<bool(const RowFault&)>& tell,
                               const std::function<void(std::size_t)>& progress) {
    constexpr std::int64_t kRowsBetweenLooks = 1024;
    std::vector<DelimitedValue> row;
    std::int64_t number = 0;
    std::int64_t inserted = 0;
    while (text.next(row)) {
        ++number;
        std::vector<RowFault> faults = read(row);
        if (faults.empty()) {
            faults = insert();
            inserted += faults.empty() ? 1 : 0;
        }
        for (RowFault& fault : faults) {
            fault.row = number;
            fault.line = text.line();
            if (!tell(fault)) {
                return inserted;
            }
        }
        if (number % kRowsBetweenLooks == 0) {
            progress(text.position());
        }
    }
    return inserted;
}

}  // namespace kap::cli
