#include "engine/sqlite/row_functions.hpp"

#include <array>
#include <memory>
#include <new>
#include <optional>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "engine/sqlite/function_names.hpp"
#include "engine/sqlite/functions/c_border.hpp"
#include "engine/sqlite/functions/function_support.hpp"

namespace kap::engine {
namespace {

// What SQLite gives back at each call, one for both functions.
struct RowModule {
    ErrorSlot& slot;
    RowHost host;
    bool ofQueries = false;
};

struct RowTable : sqlite3_vtab {
    RowModule* module = nullptr;
    sqlite3* connection = nullptr;
};

// The hidden columns come behind the others: the query or function, and its arguments.
constexpr int kFirstHidden = static_cast<int>(kRowFunctionColumns);
constexpr std::size_t kHiddenColumns = kRowFunctionArguments + 1;

class RowCursorOf : public sqlite3_vtab_cursor {
public:
    explicit RowCursorOf(RowTable& table) : sqlite3_vtab_cursor{&table}, table_(table) {}

    void begin(int count, sqlite3_value** values) {
        std::string source(textBytes(values[0]));
        number_ = 0;
        if (table_.module->ofQueries) {
            if (!query_ || source_ != source) {
                query_.emplace(table_.connection, source, StatementLife::Kept);
                source_ = std::move(source);
            }
            query_->reset();
            for (int i = 1; i < count; ++i) {
                if (sqlite3_bind_value(query_->handle(), i, values[i]) != SQLITE_OK) {
                    throw lastError(table_.connection);
                }
            }
            ended_ = !query_->step();
            return;
        }
        std::vector<Value> arguments;
        for (int i = 1; i < count; ++i)
            arguments.push_back(argumentValue(values[i]));
        rows_ = table_.module->host(source, arguments);
        ended_ = rows_.empty();
    }

    void next() {
        ++number_;
        ended_ = query_ ? !query_->step() : number_ >= rows_.size();
    }

    [[nodiscard]] bool ended() const { return ended_; }
    [[nodiscard]] std::size_t number() const { return number_; }
    [[nodiscard]] ErrorSlot& slot() const { return table_.module->slot; }

    void column(sqlite3_context* context, int place) const {
        if (query_) {
            if (place < sqlite3_column_count(query_->handle())) {
                sqlite3_result_value(context, sqlite3_column_value(query_->handle(), place));
            }
            return;
        }
        const std::vector<Value>& row = rows_[number_];
        if (static_cast<std::size_t>(place) < row.size()) {
            setResult(context, row[static_cast<std::size_t>(place)]);
        }
    }

private:
    RowTable& table_;
    std::string source_;
    std::optional<PreparedStatement> query_;
    GivenRows rows_;
    std::size_t number_ = 0;
    bool ended_ = true;
};

RowCursorOf& cursorOf(sqlite3_vtab_cursor* cursor) {
    return *static_cast<RowCursorOf*>(cursor);
}

// Does the work of a call of SQLite's; what it raises becomes the call's error.
template <class Work>
int atTableBorder(sqlite3_vtab* table, ErrorSlot& slot, Work work) noexcept {
    const auto fail = [&](int code, const char* message) {
        sqlite3_free(table->zErrMsg);
        table->zErrMsg = sqlite3_mprintf("%s", message);
        return code;
    };
    try {
        try {
            work();
            return SQLITE_OK;
        } catch (const tsql::ServerError& error) {
            slot.error = error;
            return fail(SQLITE_ERROR, error.what());
        } catch (const SqliteError& error) {
            return fail(error.code(), error.what());
        }
    } catch (const std::bad_alloc&) {
        return SQLITE_NOMEM;
    }
}

std::string declaration() {
    std::string columns;
    for (std::size_t i = 1; i <= kRowFunctionColumns; ++i)
        columns += "c" + plain::text(static_cast<std::int64_t>(i)) + " COLLATE KAP_CI, ";
    columns += "source HIDDEN";
    for (std::size_t i = 1; i <= kRowFunctionArguments; ++i)
        columns += ", a" + plain::text(static_cast<std::int64_t>(i)) + " HIDDEN";
    return "CREATE TABLE rows (" + columns + ")";
}

int connectRows(sqlite3* connection, void* module, int /*count*/, const char* const* /*names*/,
                sqlite3_vtab** table, char** /*message*/) {
    try {
        const int code = sqlite3_declare_vtab(connection, declaration().c_str());
        if (code != SQLITE_OK) return code;
        auto made = std::make_unique<RowTable>();
        made->module = static_cast<RowModule*>(module);
        made->connection = connection;
        *table = made.release();
        return SQLITE_OK;
    } catch (const std::bad_alloc&) {
        return SQLITE_NOMEM;
    }
}

int disconnectRows(sqlite3_vtab* table) {
    delete static_cast<RowTable*>(table);
    return SQLITE_OK;
}

// Every argument must be known before the rows are: that puts what they are of before them.
int planRows(sqlite3_vtab* /*table*/, sqlite3_index_info* info) {
    std::array<int, kHiddenColumns> given{};
    for (int i = 0; i < info->nConstraint; ++i) {
        const auto& constraint = info->aConstraint[i];
        if (constraint.iColumn < kFirstHidden || constraint.op != SQLITE_INDEX_CONSTRAINT_EQ) {
            continue;
        }
        if (constraint.usable == 0) return SQLITE_CONSTRAINT;
        given[static_cast<std::size_t>(constraint.iColumn - kFirstHidden)] = i + 1;
    }
    int count = 0;
    for (const int constraint : given) {
        if (constraint == 0) break;
        auto& usage = info->aConstraintUsage[constraint - 1];
        usage.argvIndex = ++count;
        usage.omit = 1;
    }
    constexpr double kCost = 1000;
    constexpr sqlite3_int64 kRows = 25;
    info->idxNum = count;
    info->estimatedCost = kCost;
    info->estimatedRows = kRows;
    return SQLITE_OK;
}

int openRows(sqlite3_vtab* table, sqlite3_vtab_cursor** cursor) {
    auto& own = *static_cast<RowTable*>(table);
    return atTableBorder(table, own.module->slot,
                         [&] { *cursor = std::make_unique<RowCursorOf>(own).release(); });
}

int closeRows(sqlite3_vtab_cursor* cursor) {
    delete static_cast<RowCursorOf*>(cursor);
    return SQLITE_OK;
}

int filterRows(sqlite3_vtab_cursor* cursor, int /*plan*/, const char* /*text*/, int count,
               sqlite3_value** values) {
    RowCursorOf& own = cursorOf(cursor);
    return atTableBorder(cursor->pVtab, own.slot(), [&] { own.begin(count, values); });
}

int nextRow(sqlite3_vtab_cursor* cursor) {
    RowCursorOf& own = cursorOf(cursor);
    return atTableBorder(cursor->pVtab, own.slot(), [&] { own.next(); });
}

int rowsEnded(sqlite3_vtab_cursor* cursor) {
    return cursorOf(cursor).ended() ? 1 : 0;
}

int rowColumn(sqlite3_vtab_cursor* cursor, sqlite3_context* context, int place) {
    const RowCursorOf& own = cursorOf(cursor);
    if (place < kFirstHidden) {
        atCBorder(context, own.slot(), [&] { own.column(context, place); });
    }
    return SQLITE_OK;
}

int rowNumberOfCursor(sqlite3_vtab_cursor* cursor, sqlite3_int64* number) {
    *number = static_cast<sqlite3_int64>(cursorOf(cursor).number());
    return SQLITE_OK;
}

// Without xCreate the tables are there by their names alone.
sqlite3_module rowModule() {
    sqlite3_module module{};
    module.xConnect = connectRows;
    module.xDisconnect = disconnectRows;
    module.xBestIndex = planRows;
    module.xOpen = openRows;
    module.xClose = closeRows;
    module.xFilter = filterRows;
    module.xNext = nextRow;
    module.xEof = rowsEnded;
    module.xColumn = rowColumn;
    module.xRowid = rowNumberOfCursor;
    return module;
}

void destroyModule(void* module) {
    delete static_cast<RowModule*>(module);
}

}  // namespace

void registerRowFunctions(sqlite3* connection, ErrorSlot& slot, RowHost host) {
    static const sqlite3_module kModule = rowModule();
    const auto provide = [&](const fn::Function& function, RowModule made) {
        // SQLite takes the module over, also when it fails.
        if (sqlite3_create_module_v2(connection, function.name.data(), &kModule,
                                     new RowModule(std::move(made)), destroyModule) != SQLITE_OK) {
            throw lastError(connection);
        }
    };
    provide(fn::kRowsOfQuery, {slot, nullptr, true});
    provide(fn::kRowsOfFunction, {slot, std::move(host), false});
}

}  // namespace kap::engine
