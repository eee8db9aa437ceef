#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "drivers/text/schema.hpp"

namespace kap::ado::text_files {

// Writes rows as lines of a text file, as its schema says. Values come as texts under the user's
// locale; one that is no number or date stands as it is. Lines end in CR LF; characters that the
// file's encoding lacks become question marks.
class LineWriter {
public:
    explicit LineWriter(Schema schema);

    [[nodiscard]] const Schema& schema() const noexcept { return schema_; }

    // What an empty file begins with: the mark of its encoding, the names of the columns.
    [[nodiscard]] std::string beginning() const;

    // One row, its values in the order of the columns; one that is not there is blank. Raises the
    // driver's error (-2147217833) for a value that does not fit into its column, holds characters
    // that the file's encoding lacks, or would break a line of fixed length; the text names `row`,
    // counted from 1, and the column.
    [[nodiscard]] std::string line(const std::vector<std::optional<String>>& values,
                                   std::int64_t row) const;

    // What lines are made of: a value as it stands in its column, the text of a value before it is
    // placed there, the end of a line, and the bytes of any of them.
    [[nodiscard]] std::u16string cell(std::size_t position, const std::optional<String>& given,
                                      std::int64_t row) const;
    [[nodiscard]] String formatted(const Column& column, const String& value) const;
    [[nodiscard]] std::string encoded(std::u16string_view text) const;
    [[nodiscard]] const std::string& lineEnd() const noexcept { return lineEnd_; }
    [[nodiscard]] static bool standsRight(const Column& column) noexcept;

private:
    [[nodiscard]] String dateText(const String& value, std::optional<std::size_t> width) const;
    [[nodiscard]] String numberText(const String& text) const;
    void appendFixed(std::u16string& line, const Column& column, const String& text) const;
    void appendDelimited(std::u16string& line, const Column& column, const String& text) const;

    Schema schema_;
    std::string lineEnd_;
};

}  // namespace kap::ado::text_files
