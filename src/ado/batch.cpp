#include "ado/batch.hpp"

#include <kaputil/data/error_numbers.hpp>

#include "data/cell_value.hpp"

namespace kap::ado {
namespace {

std::int32_t failureBits(const DriverError& error) {
    switch (error.number()) {
        case errors::kConcurrency:
        case errors::kRowNotFound:
            return static_cast<std::int32_t>(RecordStatusEnum::adRecConcurrencyViolation);
        case errors::kIntegrity:
            return static_cast<std::int32_t>(RecordStatusEnum::adRecIntegrityViolation);
        case errors::kUnknownObject:
            return static_cast<std::int32_t>(RecordStatusEnum::adRecSchemaViolation);
        default:
            return static_cast<std::int32_t>(RecordStatusEnum::adRecInvalid);
    }
}

// The values that a waiting row shows in the columns that were changed; of a new row all.
PendingValues changesOf(const RowTable& table, std::size_t row, const PendingRow& waiting) {
    PendingValues changes(table.columns().size());
    for (std::size_t column = 0; column < changes.size(); ++column) {
        const ColumnInfo& info = table.columns()[column];
        const Value shown = databaseValue(info, table.store(column), row);
        const bool isNew = waiting.kind == PendingRow::Kind::New;
        // What was not given in a new row is left to the database's defaults.
        const bool given =
            isNew ? info.writable() && shown != Value{} : waiting.original[column].has_value();
        if (given) {
            changes[column] = shown;
        }
    }
    return changes;
}

void writeRow(RowTable& table, const RowWriter& writer, std::size_t row,
              const PendingRow& waiting) {
    const PendingValues changes = changesOf(table, row, waiting);
    table.makeRoom(changes, 0);
    switch (waiting.kind) {
        case PendingRow::Kind::Modified:
            table.put(row, writer.update(row, changes));
            break;
        case PendingRow::Kind::New:
            table.put(row, writer.insert(changes));
            break;
        case PendingRow::Kind::Deleted:
            writer.remove(row);
            break;
    }
}

// Takes note of what the database holds instead of what was to be found there. Of a row that is
// gone there is nothing to note; that it could not be written is told already.
void noteConflict(RowTable& table, const RowWriter& writer, std::size_t row,
                  std::vector<DriverError>& failures) {
    try {
        table.setUnderlying(row, writer.read(row));
    } catch (const DriverError& error) {
        if (error.number() != errors::kRowNotFound) {
            failures.push_back(error);
        }
    }
}

// Rows that are gone from the database are deleted here too.
void readRow(RowTable& table, const RowWriter& writer, std::size_t row, ResyncEnum values) {
    PendingValues found;
    try {
        found = writer.read(row);
    } catch (const DriverError& error) {
        const bool gone = error.number() == errors::kRowNotFound;
        if (gone && values == ResyncEnum::adResyncAllValues) {
            table.pending().erase(row);
            table.setDeleted(row, true);
        }
        throw;
    }
    if (values == ResyncEnum::adResyncAllValues) {
        table.makeRoom(found, 0);
        table.makeRoomForDeletion();
        table.pending().erase(row);
        table.forgetUnderlying(row);
        table.setDeleted(row, false);
        table.put(row, found);
    } else {
        table.setUnderlying(row, std::move(found));
    }
}

}  // namespace

std::vector<DriverError> updateBatch(RowCursor& cursor, Session& session,
                                     const std::vector<std::size_t>& rows) {
    RowTable& table = cursor.table();
    const RowWriter writer = cursor.writer(session);
    std::vector<DriverError> failures;
    table.affected().clear();
    for (const std::size_t row : rows) {
        const auto waiting = table.pending().find(row);
        if (waiting == table.pending().end()) {
            continue;
        }
        table.affected().push_back(row);
        try {
            writeRow(table, writer, row, waiting->second);
            table.pending().erase(waiting);
            table.forgetUnderlying(row);
        } catch (const DriverError& error) {
            waiting->second.failure = failureBits(error);
            failures.push_back(error);
            if (error.number() == errors::kConcurrency && cursor.options().writing.readsConflicts) {
                noteConflict(table, writer, row, failures);
            }
            if (error.number() == errors::kOperationCancelled) {
                break;  // the others keep waiting
            }
        }
    }
    return failures;
}

void cancelBatch(RowCursor& cursor, const std::vector<std::size_t>& rows) {
    RowTable& table = cursor.table();
    table.affected().clear();
    for (const std::size_t row : rows) {
        if (table.pending(row) != nullptr) {
            table.affected().push_back(row);
            table.revert(row);
        }
    }
}

std::vector<DriverError> resync(RowCursor& cursor, Session& session,
                                const std::vector<std::size_t>& rows, ResyncEnum values) {
    RowTable& table = cursor.table();
    const RowWriter writer = cursor.writer(session);
    std::vector<DriverError> failures;
    table.affected().clear();
    for (const std::size_t row : rows) {
        const PendingRow* waiting = table.pending(row);
        if (waiting != nullptr && waiting->kind == PendingRow::Kind::New) {
            continue;  // the database does not know it
        }
        table.affected().push_back(row);
        try {
            readRow(table, writer, row, values);
        } catch (const DriverError& error) {
            failures.push_back(error);
        }
    }
    return failures;
}

}  // namespace kap::ado
