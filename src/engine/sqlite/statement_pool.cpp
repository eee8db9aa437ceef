#include "engine/sqlite/statement_pool.hpp"

namespace kap::engine {

std::shared_ptr<PreparedStatement> StatementPool::get(const std::string& sql) {
    const auto* kept = kept_.find(sql);
    if (kept != nullptr && !(*kept)->isRunning()) {
        return *kept;
    }
    auto made = std::make_shared<PreparedStatement>(database_, sql, StatementLife::Kept);
    if (kept == nullptr) {
        kept_.insert(sql, made);
    }
    return made;
}

}  // namespace kap::engine
