#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "data/driver.hpp"
#include "engine/executor/program.hpp"
#include "tsql/statements.hpp"

namespace kap::engine {

// A cursor of a script: its query, with the variables as they were when it was declared, and, while
// it is open, the rows that the query had then.
struct Cursor {
    std::string name;
    tsql::CursorKind kind = tsql::CursorKind::Unsaid;
    bool scroll = false;
    bool readOnly = false;
    std::vector<std::string> updatable;  // of FOR UPDATE OF; empty: all columns
    std::shared_ptr<tsql::Statement> query;
    std::shared_ptr<Program> program;  // of the query alone, with the declaring script's names
    std::vector<Value> values;
    bool open = false;
    ado::Result rows;
    std::vector<tsql::TypeSpec> types;
    // The tables whose rows it shows, with the number of each row; none when it shows no rows as
    // they are.
    std::vector<std::pair<std::string, ado::ColumnStore>> rowNumbers;
    std::int64_t position = -1;

    [[nodiscard]] std::int64_t count() const {
        return rows.rows.empty() ? 0 : static_cast<std::int64_t>(rows.rows.front().size());
    }
};

// Cursors by name in lower case, or by the variable that holds them: null for one that holds none.
// A cursor lasts as long as a name or a variable means it.
using Cursors = std::map<std::string, std::shared_ptr<Cursor>>;

}  // namespace kap::engine
