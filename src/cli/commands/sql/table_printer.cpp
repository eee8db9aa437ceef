#include "cli/commands/sql/table_printer.hpp"

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

#include "cli/output/shown_text.hpp"
#include "migrate/cell_text.hpp"
#include "migrate/row_texts.hpp"

namespace kap::cli {
namespace {

constexpr std::string_view kGap = "  ";
constexpr std::size_t kWidestOnTerminal = 40;

struct TableColumn {
    std::string title;
    bool right = false;
    std::size_t width = 0;
};

// A value as it is shown, and whether it is one.
struct ShownCell {
    std::string text;
    bool filled = false;
};

ShownCell shownCell(const migrate::RowTexts& values, std::size_t column) {
    std::string text;
    const bool filled = values.append(text, column);
    return {filled ? shownText(text) : "NULL", filled};
}

std::vector<TableColumn> columnsOfRows(const ado::Recordset& rows) {
    std::vector<TableColumn> columns;
    const auto fields = rows.Fields();
    for (std::int32_t i = 0; i < fields->Count(); ++i) {
        const Ref<ado::Field> field = fields->Item(i);
        TableColumn column;
        column.title = shownText(field->Name().utf8());
        if (column.title.empty()) {
            column.title = "(no name)";
        }
        column.right = migrate::isNumber(*field);
        column.width = columnsOf(column.title);
        columns.push_back(std::move(column));
    }
    return columns;
}

template <class Visit>
void forEachRow(ado::Recordset& rows, Visit visit) {
    if (rows.RecordCount() > 0) {
        rows.MoveFirst();
    }
    for (; !rows.Eof(); rows.MoveNext()) {
        visit();
    }
}

void measure(ado::Recordset& rows, const migrate::RowTexts& values,
             std::vector<TableColumn>& columns, const Terminal& terminal) {
    forEachRow(rows, [&] {
        for (std::size_t i = 0; i < columns.size(); ++i) {
            columns[i].width = std::max(columns[i].width, columnsOf(shownCell(values, i).text));
        }
    });
    if (terminal.width() == 0) {
        return;
    }
    for (TableColumn& column : columns) {
        column.width = std::min(column.width, std::max(kWidestOnTerminal, terminal.width() / 2));
    }
}

// One cell of a line; the last one of a line is not filled up with blanks behind it.
std::string laidOut(const std::string& text, const TableColumn& column, bool last) {
    const std::string cut = cutTo(text, column.width);
    if (column.right) {
        return rightAligned(cut, column.width);
    }
    return last ? cut : padded(cut, column.width);
}

template <class CellOf>
void printLine(std::ostream& out, const std::vector<TableColumn>& columns, CellOf cellOf) {
    for (std::size_t i = 0; i < columns.size(); ++i) {
        out << (i == 0 ? std::string_view() : kGap) << cellOf(i, i + 1 == columns.size());
    }
    out << '\n';
}

void printTable(std::ostream& out, ado::Recordset& rows, const Terminal& terminal) {
    const migrate::RowTexts values(rows);
    std::vector<TableColumn> columns = columnsOfRows(rows);
    measure(rows, values, columns, terminal);

    printLine(out, columns, [&](std::size_t i, bool last) {
        return terminal.styled(Style::Bold, laidOut(columns[i].title, columns[i], last));
    });
    printLine(out, columns, [&](std::size_t i, bool) {
        return terminal.styled(Style::Dim, std::string(columns[i].width, '-'));
    });
    forEachRow(rows, [&] {
        printLine(out, columns, [&](std::size_t i, bool last) {
            const ShownCell cell = shownCell(values, i);
            const std::string text = laidOut(cell.text, columns[i], last);
            return cell.filled ? text : terminal.styled(Style::Dim, text);
        });
    });
    const std::int32_t count = rows.RecordCount();
    out << '(' << count << (count == 1 ? " row)\n" : " rows)\n");
}

class TableAnswers final : public AnswerWriter {
public:
    TableAnswers(std::ostream& out, const Terminal& terminal) : out_(out), terminal_(terminal) {}

    std::int64_t write(ado::Recordset& answer) override {
        const bool rows = answer.State() == ado::ObjectStateEnum::adStateOpen;
        const auto written = answer.rowsAffected();
        if (!rows && !written) {
            return 0;  // CREATE TABLE, SET: there is nothing to tell
        }
        out_ << (any_ ? "\n" : "");
        any_ = true;
        if (rows) {
            printTable(out_, answer, terminal_);
            return answer.RecordCount();
        }
        out_ << '(' << *written << (*written == 1 ? " row affected)\n" : " rows affected)\n");
        return 0;
    }
    [[nodiscard]] bool readsOnce() const override { return false; }

private:
    std::ostream& out_;
    Terminal terminal_;
    bool any_ = false;
};

}  // namespace

std::unique_ptr<AnswerWriter> tableAnswers(std::ostream& out, const Terminal& terminal) {
    return std::make_unique<TableAnswers>(out, terminal);
}

}  // namespace kap::cli
