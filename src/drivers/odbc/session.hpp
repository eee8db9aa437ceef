#pragma once

#include <chrono>
#include <memory>

#include "data/driver.hpp"
#include "drivers/odbc/link.hpp"
#include "drivers/odbc/result_columns.hpp"
#include "drivers/odbc/row_changer.hpp"

namespace kap::ado::odbc {

// A connection to a database server.
class OdbcSession : public Session {
public:
    explicit OdbcSession(const ConnectText& text);
    ~OdbcSession() override;

    using Session::execute;
    void execute(Request& request, Reply& reply) override;
    ChangeOutcome apply(const RowChange& change) override;
    [[nodiscard]] Result schema(SchemaEnum kind, const SchemaRestrictions& wanted) override;
    [[nodiscard]] std::string quotedName(std::string_view name) const override;
    void setIsolation(IsolationLevelEnum level) override;
    void begin() override;
    void commit() override;
    void rollback() override;
    [[nodiscard]] int transactionDepth() const override { return depth_; }

private:
    void endTransaction(bool commit);
    void forgetTables();

    std::shared_ptr<Link> link_;
    TableCatalogue catalogue_;
    BaseTables tables_;
    KnownQueries queries_;
    RowChanger changer_;
    int depth_ = 0;
    // Of the last request, before the first that of the opening: what belongs to a recordset, and
    // transactions, have no limit of their own.
    std::chrono::seconds timeout_;
};

}  // namespace kap::ado::odbc
