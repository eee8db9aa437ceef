#pragma once

#include <cstdio>
#include <cstdlib>

#include <kaputil/automation/error.hpp>

// What the targets of readers share.
namespace kap::fuzz {

// The tables that scripts are run against.
inline constexpr const char16_t* kTables =
    u"CREATE TABLE t (a int IDENTITY PRIMARY KEY, b varchar(20), c money, d datetime, AggID "
    u"timestamp)"
    u"CREATE TABLE u (a int REFERENCES t(a), b float) CREATE INDEX i ON u (b)"
    u"INSERT INTO t (b, c, d) VALUES ('uno', 1.5, '20030102') INSERT INTO u VALUES (1, 0.5)";

inline void require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "fuzz: %s\n", what);
        std::abort();
    }
}

// Whatever an action raises is an error that a client can read.
template <class Action>
bool ends(Action action) {
    try {
        action();
        return true;
    } catch (const AutomationError& error) {
        require(!error.description().empty(), "an error without a description");
        return false;
    }
}

}  // namespace kap::fuzz
