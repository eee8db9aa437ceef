#pragma once

#include <string>
#include <string_view>

#include "migrate/row_import.hpp"

namespace kap::cli {

// How a file writes numbers and dates.
class CellFormat {
public:
    // As programs do: '.' in front of the decimals, 2025-03-31 10:30:00.
    CellFormat() = default;
    // As the people of a country do ("it-IT"): 1.234,56 and 31/03/2025. Throws UsageError for a
    // country that the library does not know.
    explicit CellFormat(const std::string& locale);

    // A text as the value of a column. Throws CellFault when it is none.
    [[nodiscard]] migrate::ImportedValue read(std::string_view text,
                                              const ado::ColumnDefinition& column) const;

private:
    enum class DateForm : unsigned char { Iso, DayMonthYear, MonthDayYear, YearMonthDay };

    [[nodiscard]] std::string number(std::string_view text) const;
    [[nodiscard]] std::string wholePart(std::string_view digits) const;
    [[nodiscard]] double date(std::string_view text) const;

    std::string decimalSign_ = ".";
    std::string groupSign_;
    DateForm dates_ = DateForm::Iso;
};

// Why a text is no value of its column, without the text: "is no number".
struct CellFault {
    std::string reason;
};

}  // namespace kap::cli
