#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "data/driver.hpp"
#include "drivers/text/line_writer.hpp"

namespace kap::ado::text_files {

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
        bool standsRight = false;
        std::string instead;
        std::unordered_map<std::int64_t, std::string> days;  // written before
    };

    [[nodiscard]] Way wayOf(const SourceColumn& source, const Column& column) const;
    // Each of these is false, and has written nothing, when the value has to go by way of its text.
    [[nodiscard]] bool appendDirectly(std::string& lines, Target& target, std::size_t row);
    [[nodiscard]] bool appendText(std::string& lines, const Target& target,
                                  std::string_view text) const;
    [[nodiscard]] bool appendAmount(std::string& lines, const Target& target,
                                    std::int64_t scaled) const;
    [[nodiscard]] bool appendShort(std::string& lines, const Target& target, double value) const;
    [[nodiscard]] bool appendReal(std::string& lines, const Target& target, std::size_t row) const;
    [[nodiscard]] bool appendDay(std::string& lines, Target& target, double days) const;
    // False when the cell is wider than its column.
    [[nodiscard]] bool place(std::string& lines, const Target& target, std::string_view cell) const;
    static void placeDelimited(std::string& lines, const Target& target, std::string_view cell);
    [[nodiscard]] std::optional<String> textOf(const Target& target, std::size_t row) const;

    const LineWriter& writer_;
    std::vector<Target> targets_;
    std::string replaced_;
    std::string delimiter_;
    char point_;  // before the decimals
};

}  // namespace kap::ado::text_files
