#include <array>
#include <utility>

#include "engine/binder/function_table.hpp"

// SQL_VARIANT_PROPERTY: what is known of the type that a value has by itself.
namespace kap::engine {

using tsql::SqlType;

namespace {

constexpr tsql::TypeSpec kAnyType{SqlType::SqlVariant};

BoundExpression propertyOfValue(ScalarCall& call) {
    constexpr tsql::TypeSpec kName{SqlType::NVarChar, 128};
    const BoundExpression value = call.binder.convertTo(call[0], kAnyType, call.line);
    const BoundExpression name = call.binder.convertTo(call[1], kName, call.line);
    return BoundExpression::expression(sql::call(fn::kVariantProperty, value.tree, name.tree),
                                       kAnyType, true);
}

constexpr std::array kVariantFunctions = std::to_array<ScalarFunction>({
    {"sql_variant_property", 2, 2, propertyOfValue},
});

}  // namespace

std::span<const ScalarFunction> variantFunctions() {
    return kVariantFunctions;
}

}  // namespace kap::engine
