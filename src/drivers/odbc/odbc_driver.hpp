#pragma once

#include "data/driver.hpp"

namespace kap::ado::odbc {

// Whether a connection string asks for a database server: by the keys of ODBC, or by the name of
// one of the server's usual providers.
[[nodiscard]] bool asksForServer(const ConnectionString& keys);

// The driver of database servers, through the ODBC drivers that the host has.
class OdbcDriver : public Driver {
public:
    [[nodiscard]] std::unique_ptr<Session> open(const ConnectionString& keys,
                                                std::chrono::seconds timeout) const override;
};

}  // namespace kap::ado::odbc
