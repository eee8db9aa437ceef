#pragma once

#include "data/dialects/sql_dialect.hpp"
#include "data/driver.hpp"
#include "data/row_batch.hpp"

namespace kap::ado {

// A session with a database whose tables are described, made and filled by SQL. Text files, for
// one, have none.
class TableSession : public Session {
public:
    // The SQL of the database; holds for ever. Raises DriverError when the database must be asked
    // and fails.
    [[nodiscard]] virtual const SqlDialect& dialect() = 0;

    // Appends rows to a table, in the transaction that is open, as fast as the database takes them.
    // What became of each is not told; when it fails, nobody knows how many are there.
    virtual void append(const RowBatch& batch);

    // The session as one of these. Raises kFeatureNotAvailable when it is none.
    [[nodiscard]] static TableSession& of(Session& session);
};

}  // namespace kap::ado
