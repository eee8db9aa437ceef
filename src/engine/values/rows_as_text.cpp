#include "engine/values/rows_as_text.hpp"

#include <utility>

namespace kap::engine {
namespace {

bool goesOn(const FormattedColumn& column, const Value& before, const Value& now) {
    switch (column.comparison) {
        case RowComparison::Ignored:
            return true;
        case RowComparison::Differs:
            return false;
        case RowComparison::Compared:
            break;
    }
    return before == now;
}

}  // namespace

std::size_t firstNewLevel(const RowFormat& format, const std::vector<Value>& before,
                          const std::vector<Value>& row) {
    if (before.empty()) return 0;
    std::size_t level = format.levels.size() - 1;
    for (std::size_t i = 0; i < row.size(); ++i) {
        const FormattedColumn& column = format.columns[i];
        if (column.level < level && !goesOn(column, before[i], row[i])) level = column.level;
    }
    return level;
}

std::unique_ptr<RowsAsTextWriter> rowsWriter(RowFormat format) {
    return format.isJson() ? jsonWriter(std::move(format)) : xmlWriter(std::move(format));
}

}  // namespace kap::engine
