#include "engine/sqlite/functions/function_support.hpp"
#include "engine/values/variant.hpp"

// What is done with a sql_variant as such.
namespace kap::engine {

namespace {

// kap_variant(value): what the session tells, a whole number or a name, with its type.
Value variantOfTold(const Arguments& arguments) {
    constexpr tsql::TypeSpec kName{tsql::SqlType::NVarChar, 128};
    const bool number = arguments.kind(0) == SQLITE_INTEGER;
    return number ? variantOf(arguments.integer(0), {tsql::SqlType::Int})
                  : variantOf(std::string(arguments.text(0)), kName);
}

// kap_variant_property(variant, name)
Value propertyOfVariant(const Arguments& arguments) {
    return variantProperty(arguments.text(0), arguments.text(1));
}

// kap_variant_bytes(variant): DATALENGTH
Value bytesOfVariant(const Arguments& arguments) {
    return std::int64_t{dataBytes(valueOfVariant(arguments.text(0)))};
}

}  // namespace

void registerVariantFunctions(Registrar& registrar) {
    registrar.scalar("kap_variant", 1, variantOfTold);
    registrar.scalar("kap_variant_property", 2, propertyOfVariant);
    registrar.scalar("kap_variant_bytes", 1, bytesOfVariant);
}

}  // namespace kap::engine
