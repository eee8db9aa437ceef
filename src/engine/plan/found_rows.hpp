#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "engine/binder/scope.hpp"
#include "engine/plan/capture.hpp"
#include "engine/plan/statement_plan.hpp"
#include "engine/sqlite/write_tree.hpp"

// Statements that find all rows before they write any: MERGE, and UPDATE and DELETE whose OUTPUT
// reads other tables than the written one.
namespace kap::engine {

// The two temporary tables of such a statement: the rows that it finds, with the new values of its
// target and what OUTPUT wants of its sources, and those that it has written.
class FoundRows {
public:
    explicit FoundRows(const Table& target);

    [[nodiscard]] const sql::TableName& found() const { return found_; }

    // Makes the tables and removes them. Each found row has so many new values, and so many
    // columns of sources; written rows are kept where triggers or OUTPUT want them.
    void makeTables(MergePlan& plan, std::size_t values, std::size_t sourceColumns,
                    bool kept) const;
    // The columns of a query that finds rows for an action.
    [[nodiscard]] static std::vector<sql::Item> foundItems(
        sql::Expression rowNumber, std::size_t action, std::span<const sql::Expression> values,
        std::span<const sql::Expression> sourceColumns);
    // Puts the rows of such a query, which has so many of both, among those found.
    [[nodiscard]] sql::Insert find(std::size_t values, std::size_t sourceColumns,
                                   sql::Select rows) const;
    // Whether a row was found for an action; `source` is the name of the found rows.
    [[nodiscard]] static sql::Expression isChosen(std::size_t action, const char* source = "");
    // Forgets what was found no row of the target for, and what was found again.
    [[nodiscard]] sql::Delete keepFirst() const;
    // Sets aside what a step has written, each row with the found row that it comes from.
    [[nodiscard]] sql::Insert keep(std::uint8_t event, std::size_t action) const;
    // Puts the written rows of one action back where triggers look for them.
    void refill(MergePlan& plan) const;

    // What writes the rows that were found for an action.
    [[nodiscard]] sql::Delete removal(std::size_t action) const;
    [[nodiscard]] sql::Update update(const std::vector<const Column*>& columns,
                                     std::size_t action) const;

    // Puts the rows that were found for an action where a trigger looks for them that fires instead
    // of it: with the new values of these columns, and else as they were.
    [[nodiscard]] sql::Insert caught(RowState state, const std::vector<const Column*>& assigned,
                                     std::size_t action) const;

    // What OUTPUT reads: the written rows before or after, and the columns of a source, which are
    // those from `first` on among the found ones.
    [[nodiscard]] Source written(RowState state) const;
    [[nodiscard]] static Source foundSource(Source source, std::size_t first);
    // The rows of OUTPUT, without columns yet, in the order in which they were found.
    [[nodiscard]] sql::Select output() const;

private:
    const Table& target_;
    sql::TableName found_;
    sql::TableName done_;
};

// A numbered column of found rows, from 0: c1, s2...
[[nodiscard]] std::string foundName(const char* prefix, std::size_t index);
// A column of a source as OUTPUT reads it among the found rows.
[[nodiscard]] sql::Expression foundValue(std::size_t index);

}  // namespace kap::engine
