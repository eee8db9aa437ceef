#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "cli/commands/sql/answer_writer.hpp"
#include "migrate/row_texts.hpp"

namespace kap::cli {

// Goes through the rows of answers once. The forms append their parts to a text, which is sent in
// pieces, and whenever the next row is still to come from the database.
class StreamedAnswers : public AnswerWriter {
public:
    explicit StreamedAnswers(std::ostream& out) : out_(out) {}

    std::int64_t write(ado::Recordset& answer) final;
    void finish() final;

protected:
    struct Column {
        std::string name;
        ado::DataTypeEnum type = ado::DataTypeEnum::adEmpty;
        std::string typeName;
        std::int32_t size = 0;
        bool number = false;
    };
    // Those of the answer that is being written.
    [[nodiscard]] const std::vector<Column>& columns() const noexcept { return columns_; }
    // Whether an answer with rows has begun.
    [[nodiscard]] bool any() const noexcept { return any_; }

    // What stands in front of the rows; `first`: no other answer stands before it.
    virtual void begin(std::string& text, bool first) = 0;
    virtual void row(std::string& text, const migrate::RowTexts& values) = 0;
    // What stands behind them; `written` is what the statement wrote, where it tells.
    virtual void end(std::string& /*text*/, std::int64_t /*rows*/,
                     std::optional<std::int64_t> /*written*/) {}
    // Behind the rows of an answer that could not be read to its end.
    virtual void breakOff(std::string& /*text*/) {}
    // A statement without rows.
    virtual void count(std::string& /*text*/, std::int64_t /*written*/) {}
    // Behind all answers.
    virtual void endAll(std::string& /*text*/) {}

private:
    void describe(const ado::Recordset& answer);
    std::int64_t writeRows(ado::Recordset& answer);
    void send();

    std::ostream& out_;
    std::string text_;
    std::vector<Column> columns_;
    bool any_ = false;
};

}  // namespace kap::cli
