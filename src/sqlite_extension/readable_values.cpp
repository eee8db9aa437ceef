#include "sqlite_extension/readable_values.hpp"

#include <memory>
#include <string>

#include "engine/sqlite/functions/c_border.hpp"
#include "engine/sqlite/functions/function_support.hpp"
#include "engine/sqlite/sqlite.hpp"
#include "engine/values/convert.hpp"

namespace kap::sqlite_extension {
namespace {

using engine::Value;
using tsql::SqlType;
using tsql::TypeSpec;

constexpr TypeSpec kAnyText{SqlType::NVarChar, tsql::kMaxLength};

void forgetType(void* type) {
    delete static_cast<TypeSpec*>(type);
}

// A call's type: its text is the same in every row, and read once.
TypeSpec typeOf(sqlite3_context* context, sqlite3_value* text) {
    if (const void* known = sqlite3_get_auxdata(context, 1)) {
        return *static_cast<const TypeSpec*>(known);
    }
    auto type = std::make_unique<TypeSpec>(engine::typeDeclaredAs(engine::textBytes(text)));
    const TypeSpec read = *type;
    sqlite3_set_auxdata(context, 1, type.release(), &forgetType);
    return read;
}

// Amounts with all their decimals, dates with the time where there is one.
std::string readableText(const Value& value, const TypeSpec& type) {
    constexpr int kAllDecimals = 2;
    constexpr int kOdbcDate = 121;
    const int style = tsql::isMoney(type.type) ? kAllDecimals : 0;
    const Value text = engine::convert(value, type, kAnyText, engine::Overlength::Cut,
                                       tsql::isDate(type.type) ? kOdbcDate : style);
    std::string shown = std::get<std::string>(text);
    constexpr std::string_view kNoFraction = ".000";
    if (tsql::isDate(type.type) && shown.ends_with(kNoFraction)) {
        shown.resize(shown.size() - kNoFraction.size());
    }
    return shown;
}

Value toText(const Value& value, const TypeSpec& type) {
    return readableText(value, type);
}

Value toNumber(const Value& value, const TypeSpec& type) {
    return engine::convert(value, type, {SqlType::Float}, engine::Overlength::Cut);
}

template <Value (*convert)(const Value&, const TypeSpec&)>
void readableFunction(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
    engine::ErrorSlot slot;
    engine::atCBorder(context, slot, [&] {
        const engine::Arguments arguments(2, values);
        if (arguments.anyNull()) {
            sqlite3_result_null(context);
            return;
        }
        TypeSpec type = typeOf(context, values[1]);
        // Also where the type is written without the mark that the file puts behind it.
        const bool bytes = arguments.kind(0) == SQLITE_BLOB;
        if (bytes && tsql::isDecimal(type.type)) type.length = tsql::kWideLength;
        engine::setResult(context, convert(arguments.value(0, type), type));
    });
}

void storedFunction(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
    engine::ErrorSlot slot;
    engine::atCBorder(context, slot, [&] {
        const engine::Arguments arguments(2, values);
        if (arguments.anyNull()) {
            sqlite3_result_null(context);
            return;
        }
        const TypeSpec type = typeOf(context, values[1]);
        engine::setResult(context, engine::convert(std::string(arguments.text(0)), kAnyText, type,
                                                   engine::Overlength::Refuse));
    });
}

void provide(sqlite3* database, const char* name,
             void (*body)(sqlite3_context*, int, sqlite3_value**)) {
    constexpr int kFlags = SQLITE_UTF8 | SQLITE_INNOCUOUS | SQLITE_DETERMINISTIC;
    if (sqlite3_create_function_v2(database, name, 2, kFlags, nullptr, body, nullptr, nullptr,
                                   nullptr) != SQLITE_OK) {
        throw engine::lastError(database);
    }
}

}  // namespace

void registerReadableValues(sqlite3* database) {
    provide(database, "kap_text", &readableFunction<toText>);
    provide(database, "kap_number", &readableFunction<toNumber>);
    provide(database, "kap_stored", &storedFunction);
}

}  // namespace kap::sqlite_extension
