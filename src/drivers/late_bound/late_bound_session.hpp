#pragma once

#include <kaputil/automation/object.hpp>

#include "data/table_session.hpp"

namespace kap::ado::late_bound {

// A session over a connection of another maker, which is known by the names of its members alone:
// a client's own, or one of the data-access objects of the system. The client keeps owning it.
//
// Scripts go to its Execute, and rows come back with what their fields tell. Rows are written by
// statements made of literals, for these objects differ in what else they can. Requests with
// parameters are not available. What fails is told with all that the connection's Errors hold.
class LateBoundSession final : public TableSession {
public:
    explicit LateBoundSession(Ref<Object> connection) : connection_(std::move(connection)) {}

    using Session::execute;
    void execute(Request& request, Reply& reply) override;
    ChangeOutcome apply(const RowChange& change) override;
    void append(const RowBatch& batch) override;
    [[nodiscard]] Result schema(SchemaEnum kind, const SchemaRestrictions& wanted) override;
    // Told by the provider's name, or by the types that the database has.
    [[nodiscard]] const SqlDialect& dialect() override;
    void setIsolation(IsolationLevelEnum level) override;
    void begin() override;
    void commit() override;
    void rollback() override;
    [[nodiscard]] int transactionDepth() const override { return depth_; }

private:
    // Runs `work`; what the other maker's objects raise is a driver's error here.
    template <class Work>
    auto asDriver(Work work) const;
    Variant run(const std::string& script, Variant& rowsAffected);
    // The same with a time limit of its own, which the connection has only meanwhile.
    Variant runWithin(std::chrono::seconds limit, const std::string& script, Variant& rowsAffected);
    std::int64_t write(const std::string& statement);
    [[nodiscard]] std::vector<Value> readBack(const RowChange& change);
    // Names the table behind the columns of a query, and its key.
    void describe(const std::string& script, Result& result);
    [[nodiscard]] std::vector<std::string> keyOf(const std::string& table);
    [[nodiscard]] std::vector<std::string> setByDatabase(const std::string& table);

    Ref<Object> connection_;
    int depth_ = 0;
};

}  // namespace kap::ado::late_bound
