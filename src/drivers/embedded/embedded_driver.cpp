#include "drivers/embedded/embedded_driver.hpp"

#include "drivers/embedded/session.hpp"
#include "engine/sqlite/options.hpp"

namespace kap::ado::embedded {

std::unique_ptr<Session> EmbeddedDriver::open(const ConnectionString& keys,
                                              std::chrono::seconds /*timeout: no server*/) const {
    return std::make_unique<EmbeddedSession>(engine::Options::parse(keys));
}

}  // namespace kap::ado::embedded
