#include "ado/hand_made_column.hpp"

#include <limits>

#include "data/failures.hpp"
#include "data/value_type.hpp"

namespace kap::ado {
namespace {

bool hasBit(const std::optional<std::int32_t>& attributes, FieldAttributeEnum bit) {
    return attributes && (*attributes & static_cast<std::int32_t>(bit)) != 0;
}

}  // namespace

std::optional<std::int32_t> attributesGiven(std::int32_t bits) {
    const bool unspecified =
        bits == static_cast<std::int32_t>(FieldAttributeEnum::adFldUnspecified);
    return unspecified ? std::nullopt : std::optional(bits);
}

void describeByHand(ColumnInfo& column, DataTypeEnum type, std::int32_t size,
                    std::optional<std::int32_t> attributes) {
    if (!isColumnType(type)) {
        fail::invalidArgument();
    }
    const bool isLong = isLongType(type) || hasBit(attributes, FieldAttributeEnum::adFldLong);
    std::int32_t definedSize = widthOf(type) > 0 ? widthOf(type) : size;
    if (definedSize <= 0) {
        if (!isLong) {
            fail::invalidArgument();
        }
        definedSize = std::numeric_limits<std::int32_t>::max();
    }
    column.type = type;
    column.definedSize = definedSize;
    column.precision = usualPrecision(type);
    column.numericScale = usualScale(type);
    column.isLong = isLong;
    column.fixedLength = widthOf(type) > 0 || hasBit(attributes, FieldAttributeEnum::adFldFixed);
    column.givenAttributes = attributes;
}

}  // namespace kap::ado
