#pragma once

#include <memory>
#include <string>
#include <vector>

#include "engine/values/row_format.hpp"
#include "engine/values/value.hpp"

namespace kap::engine {

// Makes one text of rows. Errors are the server's, those of FOR XML from 6800, of FOR JSON from
// 13600.
class RowsAsTextWriter {
public:
    RowsAsTextWriter() = default;
    RowsAsTextWriter(const RowsAsTextWriter&) = delete;
    RowsAsTextWriter& operator=(const RowsAsTextWriter&) = delete;
    virtual ~RowsAsTextWriter() = default;

    // A value for each column of the format, in storage form.
    virtual void add(const std::vector<Value>& row) = 0;
    // The text of all rows; to be called once.
    [[nodiscard]] virtual std::string finish() = 0;
};

// Errors of the names that the format has: 6809, 6810, 6829, 6846, 6850 to 6854, 6864; 13601,
// 13605.
[[nodiscard]] std::unique_ptr<RowsAsTextWriter> xmlWriter(RowFormat format);
[[nodiscard]] std::unique_ptr<RowsAsTextWriter> jsonWriter(RowFormat format);
[[nodiscard]] std::unique_ptr<RowsAsTextWriter> rowsWriter(RowFormat format);

// Of AUTO: the first level whose element the row does not go on with.
[[nodiscard]] std::size_t firstNewLevel(const RowFormat& format, const std::vector<Value>& before,
                                        const std::vector<Value>& row);

}  // namespace kap::engine
