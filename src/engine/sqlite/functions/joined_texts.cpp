#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "engine/sqlite/functions/c_border.hpp"
#include "engine/sqlite/functions/function_support.hpp"
#include "engine/sqlite/functions/kept_values.hpp"
#include "engine/sqlite/sqlite.hpp"
#include "engine/values/text_units.hpp"

// STRING_AGG: the texts of a group joined, in an order of their own.
namespace kap::engine {

namespace {

struct JoinedText {
    std::string text;
    std::vector<KeptValue> keys;
};

struct JoinedTexts {
    std::string separator;
    std::string directions;  // of the keys: "a" ascending, "d" descending
    std::int64_t mostBytes = 0;
    bool national = false;
    std::vector<JoinedText> pieces;
};

// SQLite zeroes it at the start of a group.
struct State {
    JoinedTexts* pieces;
};

bool comesBefore(const JoinedText& left, const JoinedText& right, const std::string& directions) {
    for (std::size_t i = 0; i < directions.size(); ++i) {
        const int order = compareValues(left.keys[i].get(), right.keys[i].get());
        if (order != 0) return (order < 0) == (directions[i] == 'a');
    }
    return false;
}

void add(State& state, int count, sqlite3_value** values) {
    if (state.pieces == nullptr) state.pieces = new JoinedTexts;
    JoinedTexts& all = *state.pieces;
    all.separator = textBytes(values[1]);
    all.directions = textBytes(values[2]);
    all.mostBytes = sqlite3_value_int64(values[3]);
    all.national = sqlite3_value_int(values[4]) != 0;
    JoinedText& piece = all.pieces.emplace_back();
    piece.text = textBytes(values[0]);
    constexpr int kFirstKey = 5;
    for (int i = kFirstKey; i < count; ++i) {
        piece.keys.push_back(keptValue(values[i]));
    }
}

ErrorSlot& slotOf(sqlite3_context* context) {
    return *static_cast<ErrorSlot*>(sqlite3_user_data(context));
}

// kap_string_agg(text, separator, directions, most bytes, national, keys...)
void stepJoin(sqlite3_context* context, int count, sqlite3_value** values) {
    if (sqlite3_value_type(values[0]) == SQLITE_NULL) return;
    auto* state = static_cast<State*>(sqlite3_aggregate_context(context, sizeof(State)));
    if (state == nullptr) {
        sqlite3_result_error_nomem(context);
        return;
    }
    atCBorder(context, slotOf(context), [&] { add(*state, count, values); });
}

std::string joined(JoinedTexts& all) {
    std::stable_sort(all.pieces.begin(), all.pieces.end(),
                     [&](const JoinedText& left, const JoinedText& right) {
                         return comesBefore(left, right, all.directions);
                     });
    std::string text;
    for (const JoinedText& piece : all.pieces)
        text += (&piece == &all.pieces.front() ? "" : all.separator) + piece.text;
    const auto bytes = static_cast<std::int64_t>(unitLength(text)) * (all.national ? 2 : 1);
    if (all.mostBytes > 0 && bytes > all.mostBytes) {
        throw tsql::ServerError(tsql::Message::AggregatedTextTooLong);
    }
    return text;
}

// SQLite calls this also when a stepJoin has failed, so what was kept is always freed.
void finishJoin(sqlite3_context* context) {
    auto* state = static_cast<State*>(sqlite3_aggregate_context(context, 0));
    if (state == nullptr || state->pieces == nullptr) {
        sqlite3_result_null(context);
        return;
    }
    const std::unique_ptr<JoinedTexts> all(std::exchange(state->pieces, nullptr));
    atCBorder(context, slotOf(context), [&] { setResult(context, joined(*all)); });
}

}  // namespace

void registerJoinedTexts(Registrar& registrar) {
    constexpr int kFlags = SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS;
    if (sqlite3_create_function_v2(registrar.connection(), "kap_string_agg", -1, kFlags,
                                   &registrar.slot(), nullptr, stepJoin, finishJoin,
                                   nullptr) != SQLITE_OK) {
        throw lastError(registrar.connection());
    }
}

}  // namespace kap::engine
