#include "ado/embedded/embedded_driver.hpp"

#include "ado/embedded/options.hpp"
#include "ado/embedded/session.hpp"

namespace kap::ado::embedded {

std::unique_ptr<Session> EmbeddedDriver::open(const ConnectionString& keys,
                                              std::chrono::seconds /*timeout: no server*/) const {
    return std::make_unique<EmbeddedSession>(Options::parse(keys));
}

}  // namespace kap::ado::embedded
