#include <chrono>
#include <cstddef>
#include <memory>
#include <utility>

#include "engine/executor/plan_handlers.hpp"
#include "engine/executor/row_reader.hpp"
#include "engine/executor/standing_rows.hpp"

namespace kap::engine {
namespace {

// What comes at once of a query that is read as its rows are needed: so many rows, or what there is
// after so long a time.
constexpr std::int64_t kFirstRows = 100;
constexpr std::chrono::milliseconds kFirstWait{20};
// Asking for the time costs as much as reading a small row: it is asked for at each of the first
// rows, and then at every so many.
constexpr std::int64_t kRowsBetweenLooks = 8;
// Of a small result: most grow no more than once.
constexpr std::size_t kUsualRows = 16;

}  // namespace

bool fill(const QueryPlan& plan, ExecutionContext& context, CompiledStatement& compiled,
          ado::Result& result, SchemaCheck check) {
    SessionState& state = context.state;
    // The queries of a function that this one calls are read to their ends.
    const bool mayStand = state.mayStand && state.frames.size() == 1;
    const auto start =
        mayStand ? std::chrono::steady_clock::now() : std::chrono::steady_clock::time_point::max();
    const auto waitedLong = [start](std::int64_t rows) {
        return (rows < kRowsBetweenLooks || rows % kRowsBetweenLooks == 0) &&
               std::chrono::steady_clock::now() - start >= kFirstWait;
    };
    PreparedStatement& rows = context.prepared(compiled.prepared, plan.sql);
    context.bind(compiled.plan->values.variables, compiled.constants, rows);
    ResetGuard guard(rows);
    bool more = rows.step();
    if (rows.preparedAnew() && check == SchemaCheck::Needed) {
        return false;
    }
    const RowReader reader(*compiled.columns);
    result.columns = *compiled.columns;
    result.rows.resize(compiled.columns->size());
    const std::int64_t most = state.writes.rowLimit;
    std::int64_t count = 0;
    if (more) {
        for (ado::ColumnStore& column : result.rows) {
            column.reserve(kUsualRows);
        }
    }
    while (more) {
        reader.read(rows, result.rows);
        ++count;
        more = (most == 0 || count < most) && rows.step();
        if (more && mayStand && (count >= kFirstRows || waitedLong(count))) {
            state.standing =
                std::make_unique<StandingRows>(compiled.prepared, *compiled.columns, count, most);
            guard.release();
            break;
        }
    }
    for (ado::ColumnStore& column : result.rows) {
        column.shrink();
    }
    state.rowCount = count;
    return true;
}

void execute(const QueryPlan& plan, StatementRun& run) {
    ado::Result result;
    (void)fill(plan, run.context, run.compiled, result, SchemaCheck::NotNeeded);
    run.results.push_back(std::move(result));
}

}  // namespace kap::engine
