#pragma once

#include <memory>
#include <string>

#include "base/lru_cache.hpp"
#include "engine/sqlite/sqlite.hpp"

namespace kap::engine {

// The prepared statements of a connection, by their text: programs send the same statement again
// and again, from many scripts, and preparing one costs as much as running it.
class StatementPool {
public:
    explicit StatementPool(sqlite3* database) : database_(database), kept_(kMostKept) {}

    // A statement of that text that nobody is in the middle of. It is shared: whoever runs it binds
    // all of its values first and leaves it reset.
    [[nodiscard]] std::shared_ptr<PreparedStatement> get(const std::string& sql);

private:
    static constexpr std::size_t kMostKept = 500;

    sqlite3* database_;
    LruCache<std::shared_ptr<PreparedStatement>> kept_;
};

}  // namespace kap::engine
