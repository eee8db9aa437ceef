#pragma once

#include <chrono>
#include <cstddef>
#include <list>
#include <string>

#include "drivers/odbc/odbc_connection.hpp"

namespace kap::ado::odbc {

// The statements with parameters that a connection runs again and again. One that is run for the
// second time is prepared; it is kept until it has not been used for long.
class PreparedStatements {
public:
    explicit PreparedStatements(OdbcConnection& connection) : connection_(connection) {}

    // A statement for a text, in use until it is given back.
    struct InUse {
        Handle handle;
        bool prepared = false;
    };
    [[nodiscard]] InUse of(const std::string& text, std::chrono::seconds timeout);
    // Runs it; its parameters are bound.
    [[nodiscard]] static SQLRETURN run(const InUse& statement, const std::string& text);
    // It has succeeded and been read to its end; one that failed is not given back.
    void giveBack(const std::string& text, InUse statement);
    // The tables may have changed.
    void forget() { kept_.clear(); }

private:
    struct Kept {
        std::string text;
        Handle handle;  // unset: run once, not prepared
    };
    void keep(const std::string& text, Handle handle);

    static constexpr std::size_t kMost = 32;
    OdbcConnection& connection_;
    std::list<Kept> kept_;  // the last used first
};

}  // namespace kap::ado::odbc
