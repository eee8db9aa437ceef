#pragma once

#include <chrono>
#include <memory>
#include <mutex>
#include <string>

#include "data/table_session.hpp"
#include "drivers/odbc/batch_insertion.hpp"
#include "drivers/odbc/kept_statements.hpp"
#include "drivers/odbc/odbc_connection.hpp"
#include "drivers/odbc/result_columns.hpp"
#include "drivers/odbc/row_changer.hpp"

namespace kap::ado::odbc {

// A connection to a database server.
class OdbcSession : public TableSession {
public:
    explicit OdbcSession(const ConnectText& text);
    ~OdbcSession() override;

    using Session::execute;
    void execute(Request& request, Reply& reply) override;
    void cancel() noexcept override;
    ChangeOutcome apply(const RowChange& change) override;
    void append(const RowBatch& batch) override;
    [[nodiscard]] Result schema(SchemaEnum kind, const SchemaRestrictions& wanted) override;
    [[nodiscard]] std::string quotedName(std::string_view name) const override;
    [[nodiscard]] Product product() override;
    [[nodiscard]] const SqlDialect& dialect() override {
        return work_->connection->dialect().sql();
    }
    void setIsolation(IsolationLevelEnum level) override;
    void begin() override;
    void commit() override;
    void rollback() override;
    [[nodiscard]] int transactionDepth() const override;

private:
    // The connection and what is known of its server's tables.
    struct Work {
        explicit Work(std::shared_ptr<OdbcConnection> opened);

        std::shared_ptr<OdbcConnection> connection;
        TableCatalogue catalogue;
        BaseTables tables;
        KnownQueries queries;
        KeptStatements statements;
        OdbcRowChanger changer;
        BatchInsertion insertion;
    };

    // The connection for a call that begins. Where the server has ended it while nobody used it,
    // and it was blank, it is another one; with a pool only, for else a loss is told.
    OdbcConnection& connection();
    // The statement that has run the query before, or else a new one.
    [[nodiscard]] std::shared_ptr<BoundStatement> statementFor(const KnownQuery& query);
    // The text of a request as the server reads it.
    [[nodiscard]] std::string said(const Request& request, KnownQuery& query) const;
    void endTransaction(bool commit);
    // Whether the server says that there is no transaction any more.
    [[nodiscard]] bool hasNoTransaction();
    void forgetTables();

    ConnectText text_;
    std::unique_ptr<Work> work_;
    std::mutex replacing_;  // another thread that cancels meets a whole one
    int depth_ = 0;
    // Of the last request, before the first that of the opening: what belongs to a recordset, and
    // transactions, have no limit of their own.
    std::chrono::seconds timeout_;
};

}  // namespace kap::ado::odbc
