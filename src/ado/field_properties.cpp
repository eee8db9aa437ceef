// What a provider tells of a column.
#include <utility>
#include <vector>

#include <kaputil/ado/field.hpp>

#include "ado/row_cursor.hpp"
#include "automation/class_builder.hpp"

namespace kap::ado {
namespace {

using Details = Property::Details;

Details textProperty(const char16_t* name, const std::string& value) {
    return {name, DataTypeEnum::adBSTR,
            [text = String(value)] { return text.empty() ? Variant() : Variant(text); }};
}

Details flagProperty(const char16_t* name, bool value) {
    return {name, DataTypeEnum::adBoolean, [value] { return Variant(value); }};
}

}  // namespace

FieldStatusEnum Field::Status() const {
    static_cast<void>(cursor());
    return FieldStatusEnum::adFieldOK;
}

Ref<Properties> Field::Properties() const {
    const ColumnInfo& column = cursor().columns()[ordinal_];
    const bool isText = storageOf(column.type) == Storage::Text;
    std::vector<Details> all = {
        textProperty(u"BASECATALOGNAME", {}),
        textProperty(u"BASECOLUMNNAME", column.baseColumn),
        textProperty(u"BASESCHEMANAME", {}),
        textProperty(u"BASETABLENAME", column.baseTable),
        flagProperty(u"ISAUTOINCREMENT", column.identity),
        flagProperty(u"ISCASESENSITIVE", false),
        flagProperty(u"ISSEARCHABLE", isText || storageOf(column.type) != Storage::Binary),
        flagProperty(u"KEYCOLUMN", column.key),
    };
    // Kept for the programs that set it: a client cursor sorts without an index.
    const std::shared_ptr<RowCursor> rows = cursor_;
    const std::size_t ordinal = ordinal_;
    all.push_back({u"OPTIMIZE", DataTypeEnum::adBoolean,
                   [rows, ordinal] { return Variant(rows->isOptimized(ordinal)); },
                   [rows, ordinal](const Variant& value) {
                       rows->optimize(ordinal, convert::toBoolean(value));
                   }});
    return make<ado::Properties>(std::move(all));
}

}  // namespace kap::ado
