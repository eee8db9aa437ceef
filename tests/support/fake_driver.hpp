#pragma once

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ado/driver.hpp"

namespace kap::test {

// A database of the tests' own: it remembers what it was asked and answers what it was told.
struct FakeDatabase {
    struct Answer {
        std::optional<ado::ServerMessage> failure;
        std::vector<ado::Result> results;
    };

    std::vector<std::string> scripts;
    std::vector<ado::RowChange> changes;
    std::deque<Answer> answers;  // one a call of execute; the last one stays
    int opened = 0;

    void fail(std::int32_t number, std::string text, int times = 1) {
        for (int i = 0; i < times; ++i) {
            answers.push_back({ado::ServerMessage{0, number, "HY000", text, 1}, {}});
        }
    }
    void answer(std::vector<ado::Result> results) { answers.push_back({{}, std::move(results)}); }
};

// One row with one Long column.
inline ado::Result oneNumber(std::int64_t value) {
    ado::Result result;
    ado::ColumnInfo column;
    column.name = "N";
    column.type = ado::DataTypeEnum::adInteger;
    column.definedSize = 4;
    result.columns.push_back(column);
    result.rows.emplace_back().appendInteger(value);
    return result;
}

class FakeSession final : public ado::Session {
public:
    explicit FakeSession(FakeDatabase& database) : database_(database) {}

    using Session::execute;
    void execute(ado::Request& request, ado::Reply& reply) override {
        database_.scripts.emplace_back(request.text);
        FakeDatabase::Answer answer = database_.answers.front();
        if (database_.answers.size() > 1) {
            database_.answers.pop_front();
        }
        if (answer.failure) {
            throw ado::DriverError({*answer.failure}, u"FakeSource");
        }
        reply.results = std::move(answer.results);
    }
    ado::ChangeOutcome apply(const ado::RowChange& change) override {
        database_.changes.push_back(change);
        return {1, {}};
    }
    void begin() override { ++depth_; }
    void commit() override { --depth_; }
    void rollback() override { depth_ = 0; }
    [[nodiscard]] int transactionDepth() const override { return depth_; }

private:
    FakeDatabase& database_;
    int depth_ = 0;
};

// Offers a fake database as `Provider=Fake` for as long as it lives.
class FakeDriver final : public ado::Driver {
public:
    FakeDriver() : registration_("Fake", *this) {}

    [[nodiscard]] std::unique_ptr<ado::Session> open(
        const ado::ConnectionString& /*keys*/) const override {
        ++database.opened;
        return std::make_unique<FakeSession>(database);
    }

    mutable FakeDatabase database;

private:
    ado::DriverRegistration registration_;
};

}  // namespace kap::test
