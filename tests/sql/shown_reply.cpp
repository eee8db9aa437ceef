#include "shown_reply.hpp"

#include <cstdint>

#include "data/cell_text.hpp"

namespace kap::test {
namespace {

std::string columnLine(const ado::ColumnInfo& column) {
    return column.name + " " + std::to_string(static_cast<int>(column.type)) + "/" +
           std::to_string(column.definedSize) + "/" + std::to_string(column.precision) + "/" +
           std::to_string(column.numericScale) + (column.nullable ? "?" : "") + " " +
           column.baseTable + "." + column.baseColumn + (column.key ? " key" : "") + "\n";
}

std::string rowLines(const ado::Result& result) {
    std::string shown;
    const std::size_t count = result.rows.empty() ? 0 : result.rows.front().size();
    for (std::size_t row = 0; row < count; ++row) {
        for (std::size_t i = 0; i < result.rows.size(); ++i) {
            if (i > 0) shown += " | ";
            if (!appendCellText(result.columns[i], result.rows[i], row, shown)) shown += "NULL";
        }
        shown += "\n";
    }
    return shown;
}

}  // namespace

std::string shownReply(ado::Session& session, const std::string& batch) {
    ado::Request request;
    request.text = batch;
    request.streaming = ado::Request::Streaming::Never;
    ado::Reply reply;
    std::vector<ado::ServerMessage> messages;
    try {
        session.execute(request, reply);
        messages = reply.messages;
    } catch (const ado::DriverError& error) {
        messages = error.messages();
    }
    std::string shown;
    for (const ado::Result& result : reply.results) {
        if (result.rowsAffected) shown += std::to_string(*result.rowsAffected) + " rows\n";
        for (const ado::ColumnInfo& column : result.columns)
            shown += columnLine(column);
        shown += rowLines(result);
    }
    for (const ado::ServerMessage& message : messages) {
        shown += std::to_string(message.nativeNumber) + " at " + std::to_string(message.line) +
                 ": " + message.text + "\n";
    }
    return shown;
}

}  // namespace kap::test
