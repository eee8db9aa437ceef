#include "engine/sqlite/functions/function_support.hpp"

#include "engine/sqlite/functions/c_border.hpp"
#include "engine/sqlite/functions/optimizations.hpp"
#include "engine/sqlite/functions/registration.hpp"
#include "engine/sqlite/sqlite.hpp"

namespace kap::engine {

namespace {

// What SQLite hands back at each call: the body and how to call it.
struct FunctionEntry {
    FunctionBody body;
    OnNull onNull;
    ErrorSlot* slot;
};

struct ResultWriter {
    sqlite3_context* context;

    void operator()(std::monostate) const { sqlite3_result_null(context); }
    void operator()(std::int64_t value) const { sqlite3_result_int64(context, value); }
    void operator()(double value) const { sqlite3_result_double(context, value); }
    void operator()(const std::string& value) const {
        sqlite3_result_text64(context, value.data(), value.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
    }
    void operator()(const Blob& value) const {
        sqlite3_result_blob64(context, value.bytes.data(), value.bytes.size(), SQLITE_TRANSIENT);
    }
};

void callScalar(sqlite3_context* context, int count, sqlite3_value** values) {
    const auto& entry = *static_cast<const FunctionEntry*>(sqlite3_user_data(context));
    const Arguments arguments(count, values);
    atCBorder(context, *entry.slot, [&] {
        if (entry.onNull == OnNull::GiveNull && arguments.anyNull()) {
            sqlite3_result_null(context);
        } else {
            setResult(context, entry.body(arguments));
        }
    });
}

void destroyFunction(void* entry) {
    delete static_cast<FunctionEntry*>(entry);
}

}  // namespace

bool Arguments::anyNull() const {
    for (int i = 0; i < count_; ++i) {
        if (isNull(i)) return true;
    }
    return false;
}

std::string_view Arguments::text(int index) const {
    return textBytes(values_[index]);
}

Blob Arguments::blob(int index) const {
    return {std::string(bytes(index))};
}

std::string_view Arguments::bytes(int index) const {
    return blobBytes(values_[index]);
}

Value Arguments::value(int index, const tsql::TypeSpec& type) const {
    if (isNull(index)) return {};
    switch (storedAs(type)) {
        case ado::Storage::Integer:
            return integer(index);
        case ado::Storage::Real:
            return real(index);
        case ado::Storage::Binary:
            // A sum within another is told as it is shorter.
            if (tsql::isWideDecimal(type) && kind(index) == SQLITE_INTEGER) return integer(index);
            return blob(index);
        case ado::Storage::Text:
            break;
    }
    return std::string(text(index));
}

void Registrar::scalar(const char* name, int argumentCount, FunctionBody body, OnNull onNull,
                       Stability stability) {
    int flags = SQLITE_UTF8 | SQLITE_INNOCUOUS;
    if (stability == Stability::Same) flags |= SQLITE_DETERMINISTIC;
    auto* entry = new FunctionEntry{body, onNull, &slot_};
    // SQLite destroys the entry also when it refuses the registration.
    const int result = sqlite3_create_function_v2(connection_, name, argumentCount, flags, entry,
                                                  callScalar, nullptr, nullptr, destroyFunction);
    if (result != SQLITE_OK) {
        throw lastError(connection_);
    }
}

void Registrar::raw(const char* name, int argumentCount,
                    void (*body)(sqlite3_context*, int, sqlite3_value**)) {
    constexpr int kFlags = SQLITE_UTF8 | SQLITE_INNOCUOUS | SQLITE_DETERMINISTIC;
    const int result = sqlite3_create_function_v2(connection_, name, argumentCount, kFlags, nullptr,
                                                  body, nullptr, nullptr, nullptr);
    if (result != SQLITE_OK) {
        throw lastError(connection_);
    }
}

void setResult(sqlite3_context* context, const Value& value) {
    std::visit(ResultWriter{context}, value);
}

void registerFunctions(sqlite3* connection, ErrorSlot& slot) {
    disableUnsafeOptimizations(connection);
    Registrar registrar(connection, slot);
    registerConversionFunctions(registrar);
    registerNumberFunctions(registrar);
    registerMathFunctions(registrar);
    registerTextFunctions(registrar);
    registerCharacterFunctions(registrar);
    registerChecksumFunctions(registrar);
    registerDigestFunctions(registrar);
    registerCultureFunctions(registrar);
    registerSoundFunctions(registrar);
    registerJoinedTexts(registrar);
    registerMarkupFunctions(registrar);
    registerTextBuilders(registrar);
    registerCollatedFunctions(registrar);
    registerPercentiles(registrar);
    registerPatternFunctions(registrar);
    registerDateFunctions(registrar);
    registerFineDateFunctions(registrar);
    registerAggregateFunctions(registrar);
    registerPackedValues(registrar);
    registerVariantFunctions(registrar);
}

}  // namespace kap::engine
