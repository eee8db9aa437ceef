#pragma once

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "data/driver.hpp"
#include "engine/sqlite/sqlite.hpp"

namespace kap::engine {

// A query that has given its first rows, and stands at the next one. While it stands it holds a
// state of the database.
class StandingRows {
public:
    // `count` rows have been taken of `most`; 0: there is no limit.
    StandingRows(std::shared_ptr<PreparedStatement> statement, std::vector<ado::ColumnInfo> columns,
                 std::int64_t count, std::int64_t most)
        : statement_(std::move(statement)),
          columns_(std::move(columns)),
          count_(count),
          most_(most) {}
    StandingRows(const StandingRows&) = delete;
    StandingRows& operator=(const StandingRows&) = delete;
    ~StandingRows() { statement_->reset(); }

    [[nodiscard]] PreparedStatement& statement() const noexcept { return *statement_; }
    [[nodiscard]] const std::vector<ado::ColumnInfo>& columns() const noexcept { return columns_; }
    [[nodiscard]] std::int64_t count() const noexcept { return count_; }
    // The row at which it stands has been taken; false when no other is to come.
    [[nodiscard]] bool next() {
        ++count_;
        return (most_ == 0 || count_ < most_) && statement_->step();
    }

private:
    std::shared_ptr<PreparedStatement> statement_;
    std::vector<ado::ColumnInfo> columns_;
    std::int64_t count_;
    std::int64_t most_;
};

}  // namespace kap::engine
