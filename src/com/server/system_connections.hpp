#pragma once

namespace kap::com {

// Connection strings of other databases than the library's own are opened by the data-access
// objects of the system.
void offerSystemConnections();

}  // namespace kap::com
