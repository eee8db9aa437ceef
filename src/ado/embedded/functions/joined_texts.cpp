#include <algorithm>
#include <compare>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "ado/embedded/collation.hpp"
#include "ado/embedded/functions/function_support.hpp"
#include "ado/embedded/functions/text_units.hpp"

// STRING_AGG: the texts of a group joined, in an order of their own.
namespace kap::ado::embedded {

namespace {

struct FreeValue {
    void operator()(sqlite3_value* value) const { sqlite3_value_free(value); }
};
using OwnValue = std::unique_ptr<sqlite3_value, FreeValue>;

struct JoinedText {
    std::string text;
    std::vector<OwnValue> keys;
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

std::string_view textOf(sqlite3_value* value) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value));
    return {text == nullptr ? "" : text, static_cast<std::size_t>(sqlite3_value_bytes(value))};
}

// Nulls first, then numbers, then texts, then bytes.
int rankOf(sqlite3_value* value) {
    switch (sqlite3_value_type(value)) {
        case SQLITE_NULL:
            return 0;
        case SQLITE_TEXT:
            return 2;
        case SQLITE_BLOB:
            return 3;
        default:
            return 1;
    }
}

int sign(std::partial_ordering order) {
    return std::is_lt(order) ? -1 : std::is_gt(order) ? 1 : 0;
}

int compare(sqlite3_value* left, sqlite3_value* right) {
    const int rank = rankOf(left);
    if (rank != rankOf(right)) return rank < rankOf(right) ? -1 : 1;
    if (rank == 0) return 0;
    if (rank == 2) return sign(compareTexts(textOf(left), textOf(right)));
    if (rank == 3) {
        const auto bytes = [](sqlite3_value* value) {
            const auto* start = static_cast<const char*>(sqlite3_value_blob(value));
            return std::string_view(start == nullptr ? "" : start,
                                    static_cast<std::size_t>(sqlite3_value_bytes(value)));
        };
        return bytes(left).compare(bytes(right));
    }
    const bool whole =
        sqlite3_value_type(left) == SQLITE_INTEGER && sqlite3_value_type(right) == SQLITE_INTEGER;
    if (whole) return sign(sqlite3_value_int64(left) <=> sqlite3_value_int64(right));
    return sign(sqlite3_value_double(left) <=> sqlite3_value_double(right));
}

bool comesBefore(const JoinedText& left, const JoinedText& right, const std::string& directions) {
    for (std::size_t i = 0; i < directions.size(); ++i) {
        const int order = compare(left.keys[i].get(), right.keys[i].get());
        if (order != 0) return (order < 0) == (directions[i] == 'a');
    }
    return false;
}

void add(State& state, int count, sqlite3_value** values) {
    if (state.pieces == nullptr) state.pieces = new JoinedTexts;
    JoinedTexts& all = *state.pieces;
    all.separator = textOf(values[1]);
    all.directions = textOf(values[2]);
    all.mostBytes = sqlite3_value_int64(values[3]);
    all.national = sqlite3_value_int(values[4]) != 0;
    JoinedText& piece = all.pieces.emplace_back();
    piece.text = textOf(values[0]);
    constexpr int kFirstKey = 5;
    for (int i = kFirstKey; i < count; ++i) {
        piece.keys.emplace_back(sqlite3_value_dup(values[i]));
        if (piece.keys.back() == nullptr) throw std::bad_alloc();
    }
}

// kap_string_agg(text, separator, directions, most bytes, national, keys...)
void stepJoin(sqlite3_context* context, int count, sqlite3_value** values) {
    if (sqlite3_value_type(values[0]) == SQLITE_NULL) return;
    auto* state = static_cast<State*>(sqlite3_aggregate_context(context, sizeof(State)));
    if (state == nullptr) {
        sqlite3_result_error_nomem(context);
        return;
    }
    try {
        add(*state, count, values);
    } catch (const std::bad_alloc&) {
        sqlite3_result_error_nomem(context);
    }
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
        throw tsql::ServerError(
            9829,
            "STRING_AGG aggregation result exceeded the limit of 8000 bytes. Use LOB types to "
            "avoid result truncation.");
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
    try {
        setResult(context, joined(*all));
    } catch (const tsql::ServerError& error) {
        setError(context, *static_cast<ErrorSlot*>(sqlite3_user_data(context)), error);
    } catch (const std::bad_alloc&) {
        sqlite3_result_error_nomem(context);
    }
}

}  // namespace

void registerJoinedTexts(Registrar& registrar) {
    constexpr int kFlags = SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS;
    if (sqlite3_create_function_v2(registrar.connection(), "kap_string_agg", -1, kFlags,
                                   &registrar.slot(), nullptr, stepJoin, finishJoin,
                                   nullptr) != SQLITE_OK) {
        throw std::runtime_error("cannot register the SQL function kap_string_agg");
    }
}

}  // namespace kap::ado::embedded
