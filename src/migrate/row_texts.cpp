#include "migrate/row_texts.hpp"

#include <cstdint>
#include <utility>

#include "ado/row_cursor.hpp"
#include "data/cell_text.hpp"
#include "migrate/cell_text.hpp"

namespace kap::migrate {

using Cell = ado::ColumnStore::Cell;

RowTexts::RowTexts(ado::Recordset& rows) : rows_(rows) {
    const auto fields = rows.Fields();
    for (std::int32_t i = 0; i < fields->Count(); ++i) {
        const Ref<ado::Field> field = fields->Item(i);
        const ado::ColumnInfo& info = rows.rows().columns()[static_cast<std::size_t>(i)];
        // A field shows an identifier in braces, and a decimal with all its decimals.
        const bool asStored = info.type != ado::DataTypeEnum::adGUID;
        const std::size_t decimals = info.wideDecimal ? info.numericScale : 0;
        columns_.push_back({field, asStored, !isNumber(*field), decimals});
    }
}

bool RowTexts::append(std::string& text, std::size_t column) const {
    const Column& from = columns_[column];
    ado::RowCursor& cursor = rows_.rows();
    if (from.asStored && cursor.editMode() == ado::EditModeEnum::adEditNone) {
        const ado::ColumnStore& store = cursor.table().store(column);
        const std::size_t row = cursor.currentRow();
        if (store.cell(row) != Cell::ReplacedNull) {
            std::string stored;
            const bool wide = from.decimals > 0;
            const bool holds =
                ado::appendCellText(cursor.columns()[column], store, row, wide ? stored : text);
            if (wide && holds) text += withDecimals(std::move(stored), from.decimals);
            return holds;
        }
    }
    const auto shown = cellText(*from.field);
    text += shown.value_or("");
    return shown.has_value();
}

bool RowTexts::waitsForNext() const {
    return rows_.rows().fetchesNext();
}

}  // namespace kap::migrate
