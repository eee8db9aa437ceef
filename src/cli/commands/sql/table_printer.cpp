#include "cli/commands/sql/table_printer.hpp"

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

#include "cli/output/shown_text.hpp"
#include "migrate/cell_text.hpp"

namespace kap::cli {
namespace {

constexpr std::string_view kGap = "  ";
constexpr std::size_t kWidestOnTerminal = 40;

struct Column {
    Ref<ado::Field> field;
    std::string title;
    bool right = false;
    std::size_t width = 0;
};

std::string shownCell(const ado::Field& field) {
    const auto text = migrate::cellText(field);
    return text ? shownText(*text) : "NULL";
}

std::vector<Column> columnsOfRows(ado::Recordset& rows) {
    std::vector<Column> columns;
    const auto fields = rows.Fields();
    for (std::int32_t i = 0; i < fields->Count(); ++i) {
        Column column;
        column.field = fields->Item(i);
        column.title = shownText(column.field->Name().utf8());
        if (column.title.empty()) {
            column.title = "(no name)";
        }
        column.right = migrate::isNumber(*column.field);
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

void measure(ado::Recordset& rows, std::vector<Column>& columns, const Terminal& terminal) {
    forEachRow(rows, [&] {
        for (Column& column : columns) {
            column.width = std::max(column.width, columnsOf(shownCell(*column.field)));
        }
    });
    if (terminal.width() == 0) {
        return;
    }
    for (Column& column : columns) {
        column.width = std::min(column.width, std::max(kWidestOnTerminal, terminal.width() / 2));
    }
}

// One cell of a line; the last one of a line is not filled up with blanks behind it.
std::string laidOut(const std::string& text, const Column& column, bool last) {
    const std::string cut = cutTo(text, column.width);
    if (column.right) {
        return rightAligned(cut, column.width);
    }
    return last ? cut : padded(cut, column.width);
}

template <class CellOf>
void printLine(std::ostream& out, const std::vector<Column>& columns, CellOf cellOf) {
    for (std::size_t i = 0; i < columns.size(); ++i) {
        out << (i == 0 ? std::string_view() : kGap) << cellOf(columns[i], i + 1 == columns.size());
    }
    out << '\n';
}

}  // namespace

void printTable(std::ostream& out, ado::Recordset& rows, const Terminal& terminal) {
    std::vector<Column> columns = columnsOfRows(rows);
    measure(rows, columns, terminal);

    printLine(out, columns, [&](const Column& column, bool last) {
        return terminal.styled(Style::Bold, laidOut(column.title, column, last));
    });
    printLine(out, columns, [&](const Column& column, bool) {
        return terminal.styled(Style::Dim, std::string(column.width, '-'));
    });
    forEachRow(rows, [&] {
        printLine(out, columns, [&](const Column& column, bool last) {
            const std::string text = laidOut(shownCell(*column.field), column, last);
            return column.field->Value().isNull() ? terminal.styled(Style::Dim, text) : text;
        });
    });
    const std::int32_t count = rows.RecordCount();
    out << '(' << count << (count == 1 ? " row)\n" : " rows)\n");
}

}  // namespace kap::cli
