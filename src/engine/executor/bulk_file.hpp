#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tsql/statements.hpp"

namespace kap::engine {

// All bytes of a file of this machine. Raises ServerError 4860 and 4861 when it is not there or
// cannot be read.
[[nodiscard]] std::string bytesOfFile(const std::string& name, int line);

// The rows of a file that BULK INSERT reads: fields that end with a terminator, the last one of a
// row with that of the row. A row has as many fields as the table has columns, whatever lines the
// file has.
class BulkFile {
public:
    // Raises ServerError 4860 and 4861 when the file is not there or cannot be read.
    BulkFile(const tsql::BulkInsertStatement& bulk, int line);

    // The fields of the next row; absent for an empty one, nothing at the end of the file. Error
    // 4832 when the file ends within a row.
    [[nodiscard]] std::optional<std::vector<std::optional<std::string>>> next(std::size_t fields);

private:
    [[nodiscard]] bool atRowEnd(std::size_t& length) const;
    [[nodiscard]] std::optional<std::string> field(bool last);
    [[nodiscard]] std::string quoted();

    std::string fieldTerminator_;
    std::string rowTerminator_;
    char quote_;
    int line_;
    std::string text_;  // in UTF-8
    std::size_t at_ = 0;
};

}  // namespace kap::engine
