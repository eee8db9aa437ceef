#include <algorithm>
#include <cmath>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "engine/sqlite/functions/c_border.hpp"
#include "engine/sqlite/functions/function_support.hpp"
#include "engine/sqlite/functions/kept_values.hpp"
#include "engine/sqlite/sqlite.hpp"
#include "tsql/server_error.hpp"

// PERCENTILE_CONT and PERCENTILE_DISC: the value that stands at a fraction of the way through the
// ordered values of a partition.
namespace kap::engine {

namespace {

struct OrderedValues {
    double fraction = 0;
    bool descending = false;
    bool sorted = false;
    std::vector<KeptValue> values;  // without nulls
};

// SQLite zeroes it at the start of a partition.
struct PercentileState {
    OrderedValues* values;
};

ErrorSlot& percentileSlot(sqlite3_context* context) {
    return *static_cast<ErrorSlot*>(sqlite3_user_data(context));
}

// kap_percentile_...(fraction, value, descending)
void stepPercentile(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
    atCBorder(context, percentileSlot(context), [&] {
        const double fraction = sqlite3_value_double(values[0]);
        if (!(fraction >= 0 && fraction <= 1)) {
            throw tsql::ServerError(tsql::Message::PercentileOutOfRange);
        }
        auto* state = static_cast<PercentileState*>(
            sqlite3_aggregate_context(context, sizeof(PercentileState)));
        if (state == nullptr) throw std::bad_alloc();
        if (state->values == nullptr) state->values = new OrderedValues;
        state->values->fraction = fraction;
        state->values->descending = sqlite3_value_int(values[2]) != 0;
        if (sqlite3_value_type(values[1]) == SQLITE_NULL) return;
        state->values->values.push_back(keptValue(values[1]));
        state->values->sorted = false;
    });
}

// The window is the whole partition, which no row leaves.
void leavePercentile(sqlite3_context* context, int /*count*/, sqlite3_value** /*values*/) {
    sqlite3_result_error(context, "a percentile is that of a whole partition", -1);
}

OrderedValues* orderedValues(sqlite3_context* context) {
    auto* state = static_cast<PercentileState*>(sqlite3_aggregate_context(context, 0));
    OrderedValues* all = state == nullptr ? nullptr : state->values;
    if (all == nullptr || all->values.empty()) {
        sqlite3_result_null(context);
        return nullptr;
    }
    if (all->sorted) return all;
    atCBorder(context, percentileSlot(context), [&] {
        std::ranges::sort(all->values, [&](const KeptValue& left, const KeptValue& right) {
            const int order = compareValues(left.get(), right.get());
            return all->descending ? order > 0 : order < 0;
        });
        all->sorted = true;
    });
    return all->sorted ? all : nullptr;
}

// Between the two values that the fraction falls between.
void tellContinuous(sqlite3_context* context) {
    const OrderedValues* all = orderedValues(context);
    if (all == nullptr) return;
    const double place = all->fraction * static_cast<double>(all->values.size() - 1);
    const auto below = static_cast<std::size_t>(std::floor(place));
    const auto above = static_cast<std::size_t>(std::ceil(place));
    const double low = sqlite3_value_double(all->values[below].get());
    const double high = sqlite3_value_double(all->values[above].get());
    sqlite3_result_double(context, low + (high - low) * (place - std::floor(place)));
}

// The first value whose place is not before the fraction.
void tellDiscrete(sqlite3_context* context) {
    const OrderedValues* all = orderedValues(context);
    if (all == nullptr) return;
    const double place = std::ceil(all->fraction * static_cast<double>(all->values.size()));
    const std::size_t index = place < 1 ? 0 : static_cast<std::size_t>(place) - 1;
    sqlite3_result_value(context, all->values[std::min(index, all->values.size() - 1)].get());
}

using TellPercentile = void (*)(sqlite3_context*);

template <TellPercentile kTell>
void finishPercentile(sqlite3_context* context) {
    kTell(context);
    auto* state = static_cast<PercentileState*>(sqlite3_aggregate_context(context, 0));
    if (state != nullptr) delete std::exchange(state->values, nullptr);
}

template <TellPercentile kTell>
void providePercentile(Registrar& registrar, const char* name) {
    constexpr int kFlags = SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS;
    constexpr int kArguments = 3;
    if (sqlite3_create_window_function(registrar.connection(), name, kArguments, kFlags,
                                       &registrar.slot(), stepPercentile, finishPercentile<kTell>,
                                       kTell, leavePercentile, nullptr) != SQLITE_OK) {
        throw lastError(registrar.connection());
    }
}

}  // namespace

void registerPercentiles(Registrar& registrar) {
    providePercentile<tellContinuous>(registrar, "kap_percentile_cont");
    providePercentile<tellDiscrete>(registrar, "kap_percentile_disc");
}

}  // namespace kap::engine
