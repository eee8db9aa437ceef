#pragma once

#include <chrono>
#include <deque>
#include <memory>
#include <optional>
#include <vector>

#include "data/driver.hpp"
#include "engine/executor/program.hpp"
#include "engine/executor/session_state.hpp"

namespace kap::engine {

class ScriptRunner;

// The rest of a script that only reads and stands still behind one of its queries, until its client
// has taken that one's rows and asks for the next result. Nothing of it is held in the database
// meanwhile but what the query holds itself (RowStream).
//
// It is run to its end, into memory, before anything else is done on the connection
// (ScriptRunner::makeWay).
class ScriptRest final : public ado::ResultSource {
public:
    // `timeout` is what a client may wait for each result.
    ScriptRest(ScriptRunner& runner, std::shared_ptr<Program> program, std::shared_ptr<Frame> frame,
               std::chrono::seconds timeout);

    [[nodiscard]] std::optional<ado::Result> next(
        std::vector<ado::ServerMessage>& messages) override;
    // Takes the rest of the results into memory. A failure is kept for the result that it comes
    // in place of, but raised here, too, when it has undone the open transaction.
    void readAhead();
    // The connection is going to be closed: nothing can be asked for any more.
    void drop() noexcept { runner_ = nullptr; }

private:
    ScriptRunner* runner_;  // null: the connection has been closed
    std::shared_ptr<Program> program_;
    std::shared_ptr<Frame> frame_;
    std::chrono::seconds timeout_;
    std::deque<ado::Result> ahead_;
    std::vector<ado::ServerMessage> messages_;  // of what has been read ahead
    std::optional<ado::DriverError> failure_;
};

}  // namespace kap::engine
