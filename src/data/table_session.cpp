#include "data/table_session.hpp"

#include "data/failures.hpp"

namespace kap::ado {

void TableSession::append(const RowBatch& batch) {
    constexpr std::size_t kMostParameters = 900;
    appendByRequests(*this, batch, kMostParameters);
}

TableSession& TableSession::of(Session& session) {
    auto* found = dynamic_cast<TableSession*>(&session);
    if (found == nullptr) {
        fail::notAvailable(
            u"Object or provider is not capable of performing requested operation: its tables are "
            u"not made by SQL.");
    }
    return *found;
}

}  // namespace kap::ado
