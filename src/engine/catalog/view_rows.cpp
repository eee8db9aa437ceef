#include "engine/catalog/view_rows.hpp"

#include <algorithm>
#include <utility>

namespace kap::engine::views {

using tsql::SqlType;
using tsql::TypeSpec;

std::int64_t precisionOf(const TypeSpec& type) {
    static constexpr std::pair<SqlType, std::int64_t> kPrecisions[] = {
        {SqlType::Bit, 1},         {SqlType::TinyInt, 3},        {SqlType::SmallInt, 5},
        {SqlType::Int, 10},        {SqlType::BigInt, 19},        {SqlType::Money, 19},
        {SqlType::SmallMoney, 10}, {SqlType::Float, 53},         {SqlType::Real, 24},
        {SqlType::DateTime, 23},   {SqlType::SmallDateTime, 16}, {SqlType::Date, 10}};
    if (tsql::isDecimal(type.type)) return type.precision;
    for (const auto& [known, precision] : kPrecisions) {
        if (known == type.type) return precision;
    }
    return 0;
}

std::int64_t scaleOf(const TypeSpec& type) {
    constexpr std::int64_t kMoneyScale = 4;
    constexpr std::int64_t kDateTimeScale = 3;
    if (tsql::isMoney(type.type)) return kMoneyScale;
    return type.type == SqlType::DateTime ? kDateTimeScale : type.scale;
}

std::int64_t placeOfColumn(const SchemaCatalogue& catalogue, std::string_view table,
                           std::string_view column) {
    const Table* found = catalogue.find(table);
    if (found == nullptr) return 0;
    const auto at = std::ranges::find_if(
        found->columns, [&](const Column& each) { return sameName(each.name, column); });
    return at == found->columns.end() ? 0 : at - found->columns.begin() + 1;
}

std::optional<SystemRows> rowsOf(std::span<const View> list, const SchemaCatalogue& catalogue,
                                 std::string_view owner, std::string_view name) {
    for (const View& view : list) {
        const bool older = owner == "sys" && view.owner.empty();
        if (view.name == name && (view.owner == owner || older)) return view.rows(catalogue);
    }
    return std::nullopt;
}

}  // namespace kap::engine::views
