#include <algorithm>
#include <cmath>
#include <new>

#include "engine/sqlite/functions/c_border.hpp"
#include "engine/sqlite/functions/function_support.hpp"
#include "engine/sqlite/sqlite.hpp"
#include "engine/values/convert_families.hpp"
#include "engine/values/exact.hpp"

namespace kap::engine {

namespace {

// The sums that the server makes: each has the type of its result, for the check at the end.
struct SumKind {
    const char* name;
    tsql::TypeSpec type;
};

constexpr int kWidestPrecision = 38;

constexpr SumKind kSums[] = {
    {"kap_sum_int", {tsql::SqlType::Int}},
    {"kap_sum_bigint", {tsql::SqlType::BigInt}},
    {"kap_sum_money", {tsql::SqlType::Money}},
    {"kap_sum_numeric", {tsql::SqlType::Numeric, tsql::kWideLength, kWidestPrecision, 0}},
    {"kap_sum_float", {tsql::SqlType::Float}},
};

struct SumEntry {
    SumKind kind;
    ErrorSlot* slot;
};

// Lies in memory that SQLite zeroes at the start of a group and aligns to eight bytes: too little
// for a Wide.
struct SumState {
    std::int64_t high;
    std::uint64_t low;
    double approximate;
    std::int64_t count;
    bool overflowed;

    [[nodiscard]] Wide exact() const { return (Wide{high} << 64) | low; }
    void addExact(std::int64_t value) {
        const Wide sum = exact() + value;
        high = static_cast<std::int64_t>(sum >> 64);
        low = static_cast<std::uint64_t>(sum);
    }
    // A sum that leaves 128 bits stays beyond every type.
    void addWide(Wide value) {
        const auto sum = sumOf(exact(), value);
        overflowed = overflowed || !sum;
        if (!sum) return;
        high = static_cast<std::int64_t>(*sum >> 64);
        low = static_cast<std::uint64_t>(*sum);
    }
};

const SumEntry& entryOf(sqlite3_context* context) {
    return *static_cast<const SumEntry*>(sqlite3_user_data(context));
}

// A value leaves the window.
void leaveSum(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
    if (sqlite3_value_type(values[0]) == SQLITE_NULL) return;
    auto* state = static_cast<SumState*>(sqlite3_aggregate_context(context, sizeof(SumState)));
    if (state == nullptr) {
        sqlite3_result_error_nomem(context);
        return;
    }
    --state->count;
    const bool wide = sqlite3_value_type(values[0]) == SQLITE_BLOB;
    state->addWide(wide ? -wideFromBytes(blobBytes(values[0]))
                        : -Wide{sqlite3_value_int64(values[0])});
}

void stepSum(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
    if (sqlite3_value_type(values[0]) == SQLITE_NULL) return;
    auto* state = static_cast<SumState*>(sqlite3_aggregate_context(context, sizeof(SumState)));
    if (state == nullptr) {
        sqlite3_result_error_nomem(context);
        return;
    }
    ++state->count;
    if (tsql::isApproximate(entryOf(context).kind.type.type)) {
        state->approximate += sqlite3_value_double(values[0]);
    } else if (sqlite3_value_type(values[0]) == SQLITE_BLOB) {
        state->addWide(wideFromBytes(blobBytes(values[0])));
    } else {
        state->addExact(sqlite3_value_int64(values[0]));
    }
}

Value total(const SumState& state, const tsql::TypeSpec& type) {
    if (tsql::isApproximate(type.type)) return fitApproximate(state.approximate, type);
    if (state.overflowed) overflow("expression", messageName(type));
    return fitWide(state.exact(), storedScale(type), type, Rounding::Truncate, "expression");
}

void finishSum(sqlite3_context* context) {
    const auto* state = static_cast<const SumState*>(sqlite3_aggregate_context(context, 0));
    if (state == nullptr || state->count == 0) {
        sqlite3_result_null(context);
        return;
    }
    const SumEntry& entry = entryOf(context);
    atCBorder(context, *entry.slot, [&] { setResult(context, total(*state, entry.kind.type)); });
}

// kap_checksum_agg(number): the numbers of a group in any order give the same.
struct ChecksumState {
    std::int64_t value;
    std::int64_t count;
};

void changeChecksum(sqlite3_context* context, sqlite3_value* value, int count) {
    if (sqlite3_value_type(value) == SQLITE_NULL) return;
    auto* state =
        static_cast<ChecksumState*>(sqlite3_aggregate_context(context, sizeof(ChecksumState)));
    if (state == nullptr) {
        sqlite3_result_error_nomem(context);
        return;
    }
    state->value ^= sqlite3_value_int64(value);
    state->count += count;
}

void stepChecksum(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
    changeChecksum(context, values[0], 1);
}

// A value leaves the window.
void leaveChecksum(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
    changeChecksum(context, values[0], -1);
}

void tellChecksum(sqlite3_context* context) {
    const auto* state = static_cast<const ChecksumState*>(sqlite3_aggregate_context(context, 0));
    if (state == nullptr || state->count == 0) {
        sqlite3_result_null(context);
    } else {
        sqlite3_result_int64(context, state->value);
    }
}

// kap_single(value): the value of the only row of a subquery that stands for one value.
struct SingleState {
    sqlite3_value* value;
};

void stepSingle(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
    auto* state =
        static_cast<SingleState*>(sqlite3_aggregate_context(context, sizeof(SingleState)));
    if (state == nullptr) {
        sqlite3_result_error_nomem(context);
        return;
    }
    if (state->value != nullptr) {
        atCBorder(context, *static_cast<ErrorSlot*>(sqlite3_user_data(context)),
                  [] { throw tsql::ServerError(tsql::Message::SubqueryReturnedSeveral); });
        return;
    }
    state->value = sqlite3_value_dup(values[0]);
    if (state->value == nullptr) sqlite3_result_error_nomem(context);
}

// SQLite calls this also when a stepSum has failed, so the copy is always freed.
void finishSingle(sqlite3_context* context) {
    auto* state = static_cast<SingleState*>(sqlite3_aggregate_context(context, 0));
    if (state == nullptr || state->value == nullptr) {
        sqlite3_result_null(context);
        return;
    }
    sqlite3_result_value(context, state->value);
    sqlite3_value_free(state->value);
    state->value = nullptr;
}

// The deviation and the variance by Welford's method, which large numbers of close values do not
// rob of their digits.
struct SpreadState {
    std::int64_t count;
    double mean;
    double squares;  // the sum of the squared distances from the mean
};

struct SpreadKind {
    const char* name;
    bool sample;  // of a sample: divided by one less
    bool deviation;
};

constexpr SpreadKind kSpreads[] = {{"kap_stdev", true, true},
                                   {"kap_stdevp", false, true},
                                   {"kap_var", true, false},
                                   {"kap_varp", false, false}};

SpreadState* spreadState(sqlite3_context* context) {
    auto* state =
        static_cast<SpreadState*>(sqlite3_aggregate_context(context, sizeof(SpreadState)));
    if (state == nullptr) sqlite3_result_error_nomem(context);
    return state;
}

void stepSpread(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
    if (sqlite3_value_type(values[0]) == SQLITE_NULL) return;
    SpreadState* state = spreadState(context);
    if (state == nullptr) return;
    const double value = sqlite3_value_double(values[0]);
    const double distance = value - state->mean;
    state->mean += distance / static_cast<double>(++state->count);
    state->squares += distance * (value - state->mean);
}

// A value leaves the window.
void leaveSpread(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
    if (sqlite3_value_type(values[0]) == SQLITE_NULL) return;
    SpreadState* state = spreadState(context);
    if (state == nullptr) return;
    if (--state->count == 0) {
        *state = {};
        return;
    }
    const double value = sqlite3_value_double(values[0]);
    const double distance = value - state->mean;
    state->mean -= distance / static_cast<double>(state->count);
    state->squares = std::max(0.0, state->squares - distance * (value - state->mean));
}

void tellSpread(sqlite3_context* context) {
    const SpreadState* state = spreadState(context);
    if (state == nullptr) return;
    const auto& kind = *static_cast<const SpreadKind*>(sqlite3_user_data(context));
    const std::int64_t divisor = state->count - (kind.sample ? 1 : 0);
    if (divisor <= 0) {
        sqlite3_result_null(context);
        return;
    }
    const double variance = state->squares / static_cast<double>(divisor);
    sqlite3_result_double(context, kind.deviation ? std::sqrt(variance) : variance);
}

void checkRegistered(int result, const Registrar& registrar) {
    if (result != SQLITE_OK) {
        throw lastError(registrar.connection());
    }
}

void destroySum(void* entry) {
    delete static_cast<SumEntry*>(entry);
}

}  // namespace

void registerAggregateFunctions(Registrar& registrar) {
    constexpr int kFlags = SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS;
    for (const SumKind& kind : kSums) {
        // Only decimals are added up so over a window.
        const bool window = tsql::isDecimal(kind.type.type);
        checkRegistered(sqlite3_create_window_function(
                            registrar.connection(), kind.name, 1, kFlags,
                            new SumEntry{kind, &registrar.slot()}, stepSum, finishSum,
                            window ? finishSum : nullptr, window ? leaveSum : nullptr, destroySum),
                        registrar);
    }
    for (const SpreadKind& kind : kSpreads) {
        auto* entry = const_cast<SpreadKind*>(&kind);  // SQLite hands it back as it is
        checkRegistered(sqlite3_create_window_function(registrar.connection(), kind.name, 1, kFlags,
                                                       entry, stepSpread, tellSpread, tellSpread,
                                                       leaveSpread, nullptr),
                        registrar);
    }
    checkRegistered(sqlite3_create_window_function(registrar.connection(), "kap_checksum_agg", 1,
                                                   kFlags, nullptr, stepChecksum, tellChecksum,
                                                   tellChecksum, leaveChecksum, nullptr),
                    registrar);
    checkRegistered(
        sqlite3_create_function_v2(registrar.connection(), "kap_single", 1, kFlags,
                                   &registrar.slot(), nullptr, stepSingle, finishSingle, nullptr),
        registrar);
}

}  // namespace kap::engine
