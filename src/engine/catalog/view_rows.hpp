#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "engine/catalog/schema_catalogue.hpp"

// What the views by which the database describes itself are made of.
namespace kap::engine::views {

inline constexpr tsql::TypeSpec kInt{tsql::SqlType::Int};
inline constexpr tsql::TypeSpec kSmallInt{tsql::SqlType::SmallInt};
inline constexpr tsql::TypeSpec kTinyInt{tsql::SqlType::TinyInt};
inline constexpr tsql::TypeSpec kBit{tsql::SqlType::Bit};
inline constexpr tsql::TypeSpec kName{tsql::SqlType::NVarChar, 128};
inline constexpr tsql::TypeSpec kShort{tsql::SqlType::VarChar, 60};
inline constexpr tsql::TypeSpec kText{tsql::SqlType::NVarChar, 4000};

inline Value number(std::int64_t value) {
    return value;
}

inline Value flag(bool value) {
    return std::int64_t{value ? 1 : 0};
}

inline Value text(std::string value) {
    return value;
}

// The name of an object, which is known with its schema, and the number of that schema.
[[nodiscard]] Value bare(std::string_view storedName);
[[nodiscard]] Value schemaNumber(const SchemaCatalogue& catalogue, std::string_view storedName);
// The name of its schema.
[[nodiscard]] Value schemaText(std::string_view storedName);

// The collation of a column; null when it is no text.
[[nodiscard]] Value shownCollation(const Column& column);

// The place of a column in its table, from 1; 0 when there is no such table or column.
[[nodiscard]] std::int64_t placeOfColumn(const SchemaCatalogue& catalogue, std::string_view table,
                                         std::string_view column);

struct View {
    std::string_view owner;  // in lower case; empty: the older ones, of dbo or nobody
    std::string_view name;
    SystemRows (*rows)(const SchemaCatalogue& catalogue);
};

// The rows of the view of that name in a list; absent when it is not there. Names in lower case;
// "sys" has the older views, too.
[[nodiscard]] std::optional<SystemRows> rowsOf(std::span<const View> list,
                                               const SchemaCatalogue& catalogue,
                                               std::string_view owner, std::string_view name);

// The lists of the other files: keys and foreign keys, and the standard's INFORMATION_SCHEMA.
[[nodiscard]] std::span<const View> keyViews();
[[nodiscard]] std::span<const View> indexViews();
[[nodiscard]] std::span<const View> constraintViews();
[[nodiscard]] std::span<const View> standardViews();
[[nodiscard]] std::span<const View> sequenceViews();
[[nodiscard]] std::span<const View> dependencyViews();
[[nodiscard]] std::span<const View> toolViews();

}  // namespace kap::engine::views
