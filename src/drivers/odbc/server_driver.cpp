#include "drivers/server_driver.hpp"

#include "drivers/odbc/odbc_driver.hpp"

namespace kap::ado {

const Driver* serverDriver(const ConnectionString& keys) {
    static const odbc::OdbcDriver driver;
    return odbc::asksForServer(keys) ? &driver : nullptr;
}

}  // namespace kap::ado
