#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "ado/driver.hpp"
#include "host/text_source/line_writer.hpp"

namespace kap::host::text_source {

// How a column of the file is described to the objects for data access: as a text.
[[nodiscard]] ado::ColumnInfo columnInfo(const Column& column);

// The values of one column of the file: a column of a result that is copied into it.
struct SourceColumn {
    const ado::ColumnInfo* info = nullptr;  // null: the column stays blank
    const ado::ColumnStore* values = nullptr;
};

// Writes the rows of a result as lines, the same that LineWriter writes of their values as texts.
//
// What most files are full of (texts of plain letters, whole numbers, amounts, days) is written
// straight from the result's columns; everything else goes by way of its text.
class RowLines {
public:
    // `sources` has an entry for each column of the schema. `instead` is written for Null and for
    // the text that is `replaced`, cut to the column's width. The writer and the result must
    // outlive this.
    RowLines(const LineWriter& writer, std::vector<SourceColumn> sources, std::string_view replaced,
             std::string_view instead);

    // Appends the line of a row of the result. Raises what LineWriter::line() raises, with `number`
    // as the row, and leaves `lines` as it was.
    void append(std::string& lines, std::size_t row, std::int64_t number);

private:
    // How the values of a column are written.
    enum class Way : std::uint8_t { Blank, Plain, Whole, Real, Amount, Day, ByText };

    struct Target {
        SourceColumn source;
        const Column* column = nullptr;
        ado::ColumnInfo info;  // of the column, as the file is described
        Way way = Way::ByText;
        std::string instead;
        std::unordered_map<std::int64_t, std::string> days;  // written before
    };

    [[nodiscard]] Way wayOf(const SourceColumn& source, const Column& column) const;
    void appendCell(std::string& lines, Target& target, std::size_t row, std::int64_t number);
    // False when the value has to go by way of its text.
    [[nodiscard]] bool writeDirectly(Target& target, std::size_t row);
    [[nodiscard]] bool writeText(std::string_view text, const Target& target);
    [[nodiscard]] bool writeAmount(std::int64_t scaled);
    [[nodiscard]] bool writeShort(double value, bool single);
    void writeDecimal(std::int64_t units, std::size_t digits);
    [[nodiscard]] bool writeReal(const Target& target, std::size_t row);
    [[nodiscard]] bool writeDay(Target& target, double days);
    [[nodiscard]] bool fits(std::size_t length, const Target& target) const;
    void place(std::string& lines, const Target& target) const;
    void placeDelimited(std::string& lines, const Target& target) const;
    [[nodiscard]] std::optional<String> textOf(const Target& target, std::size_t row) const;

    const LineWriter& writer_;
    std::vector<Target> targets_;
    std::string replaced_;
    std::string delimiter_;
    std::string decimalSymbol_;
    std::string cell_;  // the value being written
};

}  // namespace kap::host::text_source
