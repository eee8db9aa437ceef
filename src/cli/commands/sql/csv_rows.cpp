#include "cli/commands/sql/csv_rows.hpp"

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

#include "cli/output/csv_line.hpp"
#include "migrate/row_texts.hpp"

namespace kap::cli {
namespace {

constexpr std::size_t kPiece = std::size_t{64} * 1024;

void appendValue(std::string& lines, const migrate::RowTexts& texts, std::size_t column) {
    const std::size_t start = lines.size();
    if (!texts.append(lines, column)) {
        return;
    }
    if (lines.size() == start) {
        lines += "\"\"";
    } else if (texts.isFree(column)) {
        quoteForCsv(lines, start);
    }
}

std::string namesOf(const ado::Recordset& rows) {
    std::vector<std::string> names;
    const auto fields = rows.Fields();
    names.reserve(static_cast<std::size_t>(fields->Count()));
    for (std::int32_t i = 0; i < fields->Count(); ++i) {
        names.push_back(fields->Item(i)->Name().utf8());
    }
    return csvLine(names);
}

void send(std::ostream& out, std::string& lines) {
    out.write(lines.data(), static_cast<std::streamsize>(lines.size()));
    out.flush();
    lines.clear();
}

}  // namespace

void printCsv(std::ostream& out, ado::Recordset& rows) {
    const migrate::RowTexts texts(rows);
    std::string lines = namesOf(rows);
    try {
        for (; out && !rows.Eof(); rows.MoveNext()) {
            for (std::size_t i = 0; i < texts.columnCount(); ++i) {
                if (i > 0) {
                    lines += ',';
                }
                appendValue(lines, texts, i);
            }
            lines += "\r\n";
            if (lines.size() >= kPiece || texts.waitsForNext()) {
                send(out, lines);
            }
        }
    } catch (...) {
        send(out, lines);
        throw;
    }
    send(out, lines);
}

}  // namespace kap::cli
