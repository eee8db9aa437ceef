#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "data/driver.hpp"
#include "engine/executor/program.hpp"
#include "engine/executor/row_reader.hpp"
#include "engine/executor/session_state.hpp"
#include "engine/executor/standing_rows.hpp"
#include "engine/sqlite/journal_watch.hpp"

namespace kap::engine {

class ScriptRunner;

// The rows of a query that a client has not asked for yet. They are read from one state of the
// database, which others may go on to write.
//
// The rest is taken into memory when the journal has grown too large, and before anything else is
// done on the connection (ScriptRunner::makeWay), which so sees nobody in the middle of anything.
class RowStream final : public ado::RowSource, public StandingReader {
public:
    // `timeout` is what a client may wait for the next rows.
    RowStream(ScriptRunner& runner, std::shared_ptr<Program> program, std::shared_ptr<Frame> frame,
              std::unique_ptr<StandingRows> rows, std::chrono::seconds timeout);
    RowStream(const RowStream&) = delete;
    RowStream& operator=(const RowStream&) = delete;
    ~RowStream() override;

    void fetch(std::vector<ado::ColumnStore>& rows) override;
    [[nodiscard]] bool fetchSome(std::vector<ado::ColumnStore>& rows) override;
    // From now on until it has been read to its end, or made to read ahead, the connection is the
    // stream's. Raises std::system_error without a thread for the watch.
    void stand();
    // Takes the rest into memory. A failure is kept for the fetch that meets it, but raised here,
    // too, when it has undone the open transaction: nothing more may be done as if it were there.
    void readAhead();
    // Goes to the end without taking what is left. Raises DriverError for a failure that nobody has
    // met yet.
    void passOver();
    void takeRest() noexcept override;
    // Whether it stands in the middle of the rows, and so holds a state of the database.
    [[nodiscard]] bool stands();
    // The connection is going to be closed: nothing can be fetched any more.
    void drop();

private:
    enum class Wait : std::uint8_t { Limited, Endless };
    // Reads until so many rows have come or so much time has passed.
    [[nodiscard]] bool read(std::vector<ado::ColumnStore>& rows, bool all, Wait wait);
    void takeAhead(std::vector<ado::ColumnStore>& rows);
    void raiseFailure();
    void finish() noexcept;

    ScriptRunner* runner_;  // null: the connection has been closed
    std::shared_ptr<Program> program_;
    std::shared_ptr<Frame> frame_;
    std::unique_ptr<StandingRows> standing_;  // unset: no row is to come
    std::vector<ado::ColumnInfo> columns_;
    RowReader reader_;
    std::chrono::seconds timeout_;
    std::vector<ado::ColumnStore> ahead_;
    std::optional<ado::DriverError> failure_;
    bool outOfMemory_ = false;
    bool raised_ = false;  // the failure has reached the client
    bool undone_ = false;  // the failure has undone the open transaction, and nobody knows it yet
};

}  // namespace kap::engine
