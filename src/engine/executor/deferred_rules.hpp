#pragma once

#include <cstddef>
#include <memory>

#include "engine/sqlite/sqlite.hpp"
#include "engine/sqlite/time_limit.hpp"

namespace kap::engine {

// Checks are off and references looked at later for as long as it lives: while rows hold what
// stands in for their values, and where rows are written again as they are.
class DeferredRules {
public:
    explicit DeferredRules(Database& database) : database_(database) {
        const TimeLimit::Pause whole;
        database_.run("PRAGMA defer_foreign_keys = ON");
        database_.run("PRAGMA ignore_check_constraints = ON");
    }
    DeferredRules(const DeferredRules&) = delete;
    DeferredRules& operator=(const DeferredRules&) = delete;
    ~DeferredRules() {
        const TimeLimit::Pause whole;
        reserve_.reset();
        for (const char* sql :
             {"PRAGMA ignore_check_constraints = OFF", "PRAGMA defer_foreign_keys = OFF"}) {
            for (int attempts = 0; attempts < kAttempts; ++attempts) {
                if (sqlite3_exec(database_.handle(), sql, nullptr, nullptr, nullptr) == SQLITE_OK) {
                    break;
                }
            }
        }
    }
    void checkAgain() { database_.run("PRAGMA ignore_check_constraints = OFF"); }

private:
    static constexpr int kAttempts = 3;
    // Memory to go back with: rules that stay off would let anything in.
    static constexpr std::size_t kReserve = 65536;

    Database& database_;
    std::unique_ptr<char[]> reserve_ = std::make_unique<char[]>(kReserve);
};

}  // namespace kap::engine
