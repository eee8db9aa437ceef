#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include <kaputil/ado/connection.hpp>

#include "support/fake_driver.hpp"

namespace kap::test {

// A database that remembers every statement sent to it, byte for byte, and answers as it is told.
class RecordingDatabase {
public:
    using Row = std::vector<std::optional<std::string>>;  // nullopt is Null

    RecordingDatabase() : connection_(make<ado::Connection>()) {
        connection_->Open(u"Provider=Fake");
    }

    [[nodiscard]] const Ref<ado::Connection>& connection() const { return connection_; }
    [[nodiscard]] const std::vector<std::string>& statements() const {
        return driver_.database.scripts;
    }
    // The rows that were written, each as "KIND TABLE COLUMN=TEXT COLUMN=TEXT".
    [[nodiscard]] std::vector<std::string> writtenRows() const {
        std::vector<std::string> all;
        for (const ado::RowChange& change : driver_.database.changes) {
            std::string row = kindOf(change.plan->kind()) + " " + change.plan->table();
            for (std::size_t i = 0; i < change.values.size(); ++i) {
                row += " " + change.plan->values()[i].name + "=" +
                       std::get<std::string>(change.values[i]);
            }
            all.push_back(std::move(row));
        }
        return all;
    }

    // The next statement is answered by these rows of a table's text columns.
    void answer(const std::vector<std::string>& columns, const std::vector<Row>& rows) {
        ado::Result result;
        for (std::size_t i = 0; i < columns.size(); ++i) {
            ado::ColumnInfo column;
            column.name = columns[i];
            column.type = ado::DataTypeEnum::adVarChar;
            column.definedSize = 200;
            column.baseTable = "T";
            column.baseColumn = columns[i];
            result.columns.push_back(column);
            auto& cells = result.rows.emplace_back();
            for (const Row& row : rows) {
                if (row[i]) {
                    cells.appendBytes(*row[i]);
                } else {
                    cells.appendNull();
                }
            }
        }
        driver_.database.answer({result});
    }
    // The next statement gives no rows.
    void answerNothing() { driver_.database.answer({}); }
    void fail(std::int32_t number, const std::string& text) { driver_.database.fail(number, text); }

private:
    static std::string kindOf(ado::RowPlan::Kind kind) {
        switch (kind) {
            case ado::RowPlan::Kind::Insert:
                return "insert";
            case ado::RowPlan::Kind::Update:
                return "update";
            case ado::RowPlan::Kind::Delete:
                return "delete";
            case ado::RowPlan::Kind::Read:
                break;
        }
        return "read";
    }

    FakeDriver driver_;
    Ref<ado::Connection> connection_;
};

}  // namespace kap::test
