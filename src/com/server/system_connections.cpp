#include "com/server/system_connections.hpp"

#include <kaputil/platform/creatable_objects.hpp>

#include "drivers/driver_registry.hpp"
#include "drivers/late_bound/late_bound_driver.hpp"

namespace kap::com {

void offerSystemConnections() {
    static const ado::late_bound::LateBoundDriver driver(
        [] { return platform::createHostObject(u"ADODB.Connection"); });
    ado::setDriverForOthers(&driver);
}

}  // namespace kap::com
