#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "engine/catalog/tables.hpp"

namespace kap::engine {

// A field of a file that BULK INSERT reads.
struct BulkField {
    std::string terminator;  // empty: the field has so many letters
    std::int64_t length = 0;
    const Column* column = nullptr;  // that it goes into; null: it is passed over
};

// What a format file says.
struct BulkFormat {
    std::vector<BulkField> fields;
    bool wideText = false;  // UTF-16
};

// Reads a format file, of lines or of XML, for a table. Errors: 4860 and 4861 for the file, 4822 to
// 4828 for what stands in it, 40517 for fields that are no texts.
[[nodiscard]] BulkFormat bulkFormat(const std::string& file, const Table& table, int line);

}  // namespace kap::engine
