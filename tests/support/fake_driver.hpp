#pragma once

#include <chrono>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "data/driver.hpp"
#include "data/schema_rows.hpp"
#include "drivers/driver_registry.hpp"

namespace kap::test {

// A database of the tests' own: it remembers what it was asked, answers what it was told, and fails
// when it was told to.
struct FakeDatabase {
    struct Answer {
        std::optional<ado::ServerMessage> failure;
        std::vector<ado::Result> results;
        std::vector<ado::ServerMessage> messages;
        std::vector<ado::Value> comingBack;  // of the parameters that do, in their order
    };

    std::vector<std::string> scripts;
    std::vector<ado::Request> requests;
    std::vector<ado::RowChange> changes;
    std::deque<Answer> answers;                     // one a call of execute; the last one stays
    std::deque<ado::ServerMessage> refusedChanges;  // what the next changes fail with
    std::deque<int> rowsTouched;  // by the changes after these; 1 when none is told
    std::vector<std::pair<ado::SchemaEnum, ado::SchemaRestrictions>> schemasAsked;
    int opened = 0;
    std::vector<ado::ConnectionString> keys;  // that each opening was given
    std::chrono::seconds openTimeout{0};      // that the last opening was given
    int refusedOpenings = 0;                  // how many times opening is going to fail

    static ado::ServerMessage message(std::int32_t number, std::string text) {
        return {0, number, "HY000", std::move(text), 1};
    }
    void fail(std::int32_t number, const std::string& text, int times = 1) {
        for (int i = 0; i < times; ++i) {
            answers.push_back({message(number, text), {}, {}, {}});
        }
    }
    void answer(std::vector<ado::Result> results) {
        answers.push_back({{}, std::move(results), {}, {}});
    }
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

// Rows that come later, or never: fetching them fails so many times first.
class FakeRest final : public ado::RowSource {
public:
    FakeRest(int rows, int failures, std::int32_t number)
        : rows_(rows), failures_(failures), number_(number) {}
    void fetch(std::vector<ado::ColumnStore>& rows) override {
        if (failures_ > 0) {
            --failures_;
            throw ado::DriverError({FakeDatabase::message(number_, "Connection broken.")});
        }
        for (int i = 0; i < rows_; ++i) {
            rows.front().appendInteger(i + 2);
        }
    }

private:
    int rows_;
    int failures_;
    std::int32_t number_;
};

// The numbers from 1 to `count`, of which only the first comes at once.
inline ado::Result numbersInPieces(int count, int failures, std::int32_t number = -2147467259) {
    ado::Result result = oneNumber(1);
    result.rest = std::make_shared<FakeRest>(count - 1, failures, number);
    return result;
}

class FakeSession final : public ado::Session {
public:
    explicit FakeSession(FakeDatabase& database) : database_(database) {}

    using Session::execute;
    void execute(ado::Request& request, ado::Reply& reply) override {
        database_.scripts.emplace_back(request.text);
        database_.requests.push_back(request);
        FakeDatabase::Answer answer = database_.answers.front();
        if (database_.answers.size() > 1) {
            database_.answers.pop_front();
        }
        reply.results = std::move(answer.results);
        reply.messages = answer.messages;
        if (answer.failure) {
            answer.messages.push_back(*answer.failure);
            throw ado::DriverError(answer.messages, u"FakeSource");
        }
        takeBack(request, answer.comingBack);
    }
    ado::ChangeOutcome apply(const ado::RowChange& change) override {
        database_.changes.push_back(change);
        if (!database_.refusedChanges.empty()) {
            const ado::ServerMessage refusal = database_.refusedChanges.front();
            database_.refusedChanges.pop_front();
            throw ado::DriverError({refusal}, u"FakeSource");
        }
        if (database_.rowsTouched.empty()) {
            return {1, {}};
        }
        const int touched = database_.rowsTouched.front();
        database_.rowsTouched.pop_front();
        return {touched, {}};
    }
    [[nodiscard]] ado::Result schema(ado::SchemaEnum kind,
                                     const ado::SchemaRestrictions& wanted) override {
        database_.schemasAsked.emplace_back(kind, wanted);
        ado::SchemaRows rows(kind, wanted);
        rows.add({{"TABLE_NAME", "Clienti"}, {"COLUMN_NAME", "Codice"}});
        return rows.take();
    }
    void begin() override { ++depth_; }
    void commit() override { --depth_; }
    void rollback() override { depth_ = 0; }
    [[nodiscard]] int transactionDepth() const override { return depth_; }

private:
    static void takeBack(ado::Request& request, const std::vector<ado::Value>& values) {
        std::size_t next = 0;
        for (ado::RequestParameter& parameter : request.parameters) {
            if (parameter.direction != ado::ParameterDirectionEnum::adParamInput &&
                next < values.size()) {
                parameter.value = values[next++];
            }
        }
    }

    FakeDatabase& database_;
    int depth_ = 0;
};

// Offers a fake database as `Provider=Fake` for as long as it lives.
class FakeDriver final : public ado::Driver {
public:
    FakeDriver() : registration_("Fake", *this) {}

    [[nodiscard]] std::unique_ptr<ado::Session> open(const ado::ConnectionString& keys,
                                                     std::chrono::seconds timeout) const override {
        database.openTimeout = timeout;
        database.keys.push_back(keys);
        ++database.opened;
        if (database.refusedOpenings > 0) {
            --database.refusedOpenings;
            throw ado::DriverError({FakeDatabase::message(-2147467259, "No answer.")});
        }
        return std::make_unique<FakeSession>(database);
    }

    mutable FakeDatabase database;

private:
    ado::DriverRegistration registration_;
};

}  // namespace kap::test
