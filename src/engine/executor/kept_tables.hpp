#pragma once

#include <string>
#include <vector>

#include "engine/catalog/counters.hpp"
#include "engine/executor/session_state.hpp"
#include "engine/sqlite/sqlite.hpp"

namespace kap::engine {

// The table variables of what is running, over a rollback: like other variables they keep what they
// hold, but SQLite undoes temporary tables with all the rest.
class KeptTables {
public:
    // Remembers the tables as they are.
    KeptTables(Database& database, Counters& counters, const std::vector<Frame*>& frames);
    // Makes them again as they were.
    void putBack();

private:
    struct Kept {
        const VariableTable* table = nullptr;
        std::string columns;  // that can be written, as a list
        std::vector<std::vector<Value>> rows;
    };

    void remember(const VariableTable& table);
    void putBack(const Kept& kept);
    [[nodiscard]] bool exists(const VariableTable& table);

    Database& database_;
    Counters& counters_;
    std::vector<Kept> tables_;
};

}  // namespace kap::engine
