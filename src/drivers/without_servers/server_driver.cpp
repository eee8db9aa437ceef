#include "drivers/server_driver.hpp"

namespace kap::ado {

const Driver* serverDriver(const ConnectionString& /*keys*/) {
    return nullptr;
}

}  // namespace kap::ado
