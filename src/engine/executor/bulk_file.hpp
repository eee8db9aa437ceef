#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "engine/executor/bulk_format.hpp"
#include "tsql/statements.hpp"

namespace kap::engine {

// All bytes of a file of this machine. Raises ServerError 4860 and 4861 when it is not there or
// cannot be read.
[[nodiscard]] std::string bytesOfFile(const std::string& name, int line);

// The rows of a file that BULK INSERT reads: fields that end with their terminators, or have a
// length. A row has as many fields as the layout, whatever lines the file has.
class BulkFile {
public:
    // Raises ServerError 4860 and 4861 when the file is not there or cannot be read.
    BulkFile(const tsql::BulkInsertStatement& bulk, BulkFormat format, int line);

    // The fields of the next row; absent for an empty one, nothing at the end of the file. Error
    // 4832 when the file ends within a row.
    [[nodiscard]] std::optional<std::vector<std::optional<std::string>>> next();

private:
    [[nodiscard]] std::size_t terminatorHere(const BulkField& field) const;
    [[nodiscard]] std::optional<std::string> field(const BulkField& field, bool last);
    [[nodiscard]] std::string ofLength(std::int64_t letters, bool last);
    [[nodiscard]] std::string quoted();

    std::vector<BulkField> fields_;
    char quote_;
    int line_;
    std::string text_;  // in UTF-8
    std::size_t at_ = 0;
};

}  // namespace kap::engine
