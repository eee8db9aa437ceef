#pragma once

#include <cstdint>
#include <string_view>

#include <sqlite3.h>

#include "engine/values/error_slot.hpp"
#include "engine/values/exact.hpp"
#include "engine/values/value.hpp"

namespace kap::engine {

// The arguments of one call of a SQL function.
class Arguments {
public:
    Arguments(int count, sqlite3_value** values) : count_(count), values_(values) {}

    [[nodiscard]] int count() const { return count_; }
    [[nodiscard]] bool isNull(int index) const {
        return sqlite3_value_type(values_[index]) == SQLITE_NULL;
    }
    [[nodiscard]] bool anyNull() const;
    // SQLite's own kind of the value: SQLITE_INTEGER, SQLITE_NULL...
    [[nodiscard]] int kind(int index) const { return sqlite3_value_type(values_[index]); }
    [[nodiscard]] std::int64_t integer(int index) const {
        return sqlite3_value_int64(values_[index]);
    }
    // A whole number that an exact type keeps, in either form.
    [[nodiscard]] Wide exact(int index) const {
        const bool wide = sqlite3_value_type(values_[index]) == SQLITE_BLOB;
        return wide ? wideFromBytes(bytes(index)) : Wide{integer(index)};
    }
    [[nodiscard]] int small(int index) const { return sqlite3_value_int(values_[index]); }
    [[nodiscard]] double real(int index) const { return sqlite3_value_double(values_[index]); }
    // Valid until the call ends.
    [[nodiscard]] std::string_view text(int index) const;
    [[nodiscard]] Blob blob(int index) const;
    [[nodiscard]] tsql::TypeSpec type(int index) const { return unpackType(integer(index)); }
    // The argument in the storage form of a type.
    [[nodiscard]] Value value(int index, const tsql::TypeSpec& type) const;

private:
    [[nodiscard]] std::string_view bytes(int index) const;

    int count_;
    sqlite3_value** values_;
};

enum class OnNull {
    GiveNull,  // any NULL argument makes the result NULL, without a call
    Call,
};

enum class Stability {
    Same,  // equal arguments give equal results within a statement: SQLite may compute once
    PerCall,
};

using FunctionBody = Value (*)(const Arguments&);

// Registers functions with one connection.
//
// A body that throws tsql::ServerError fails the statement; the error goes to the slot.
class Registrar {
public:
    Registrar(sqlite3* connection, ErrorSlot& slot) : connection_(connection), slot_(slot) {}

    // `argumentCount` -1 takes any number.
    void scalar(const char* name, int argumentCount, FunctionBody body,
                OnNull onNull = OnNull::GiveNull, Stability stability = Stability::Same);

    // A function of SQLite's own values, whatever their types; it cannot fail.
    void raw(const char* name, int argumentCount,
             void (*body)(sqlite3_context*, int, sqlite3_value**));

    [[nodiscard]] sqlite3* connection() const { return connection_; }
    [[nodiscard]] ErrorSlot& slot() const { return slot_; }

private:
    sqlite3* connection_;
    ErrorSlot& slot_;
};

// Gives a value back to SQLite.
void setResult(sqlite3_context* context, const Value& value);

void registerConversionFunctions(Registrar& registrar);
void registerNumberFunctions(Registrar& registrar);
void registerMathFunctions(Registrar& registrar);
void registerTextFunctions(Registrar& registrar);
void registerCharacterFunctions(Registrar& registrar);
void registerChecksumFunctions(Registrar& registrar);
void registerDigestFunctions(Registrar& registrar);
void registerCultureFunctions(Registrar& registrar);
void registerSoundFunctions(Registrar& registrar);
void registerJoinedTexts(Registrar& registrar);
void registerMarkupFunctions(Registrar& registrar);
void registerTextBuilders(Registrar& registrar);
void registerCollatedFunctions(Registrar& registrar);
void registerPercentiles(Registrar& registrar);
void registerPatternFunctions(Registrar& registrar);
void registerDateFunctions(Registrar& registrar);
void registerFineDateFunctions(Registrar& registrar);
void registerAggregateFunctions(Registrar& registrar);
void registerPackedValues(Registrar& registrar);
void registerVariantFunctions(Registrar& registrar);

}  // namespace kap::engine
