#include "engine/script/session_functions.hpp"

#include <algorithm>
#include <utility>

#include "base/ascii.hpp"
#include "engine/binder/system_values.hpp"
#include "engine/catalog/object_ids.hpp"
#include "engine/catalog/object_names.hpp"
#include "engine/catalog/object_properties.hpp"
#include "engine/catalog/server_identity.hpp"
#include "engine/executor/function_arguments.hpp"
#include "engine/sqlite/functions/c_border.hpp"
#include "engine/sqlite/functions/function_support.hpp"
#include "engine/values/json_text.hpp"
#include "engine/values/split_text.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {
namespace {

Value orNull(const std::optional<std::int64_t>& number) {
    return number ? Value(*number) : Value();
}

Value versionBytes(std::int64_t version) {
    constexpr std::size_t kBytes = 8;
    std::string bytes(kBytes, '\0');
    auto rest = static_cast<std::uint64_t>(version);
    for (auto at = bytes.rbegin(); at != bytes.rend(); ++at) {
        *at = static_cast<char>(rest & 0xFFU);
        rest >>= 8;
    }
    return Blob{std::move(bytes)};
}

}  // namespace

SessionFunctions::SessionFunctions(const EngineContext& engine, ScriptRunner& scripts)
    : connection_(engine.connection),
      catalogue_(engine.catalogue),
      counters_(engine.counters),
      transactions_(engine.transactions),
      state_(engine.state),
      scripts_(scripts) {
    provide("kap_system", -1, &SessionFunctions::system);
    provide("kap_variable", 1, &SessionFunctions::variable);
    provide("kap_assign", 2, &SessionFunctions::assign);
    provide("kap_first", 2, &SessionFunctions::first);
    provide("kap_call", -1, &SessionFunctions::call);
    provide(kColumnSystemCall, -1, &SessionFunctions::system, true);
    provide(kColumnStoredCall, -1, &SessionFunctions::call, true);
    provide("kap_capturing", 1, &SessionFunctions::capturing);
    provide("kap_current_row", -1, &SessionFunctions::currentRow);
    provide("kap_offered", 1, &SessionFunctions::offered);
    provideSequences();
    provideFiles();
    registerRowFunctions(connection_.handle(), connection_.errorSlot(),
                         [this](const std::string& function, const Arguments& arguments) {
                             return rowsBy(function, arguments);
                         });
}

// OPENJSON(text, path), and behind them the paths of its own columns.
GivenRows SessionFunctions::rowsOfJson(const Arguments& arguments) {
    std::vector<std::string> columns;
    for (std::size_t i = 2; i < arguments.size(); ++i)
        columns.push_back(textAt(arguments, i));
    const std::string json = textAt(arguments, 0);
    const std::string path = textAt(arguments, 1);
    return columns.empty() ? openedJson(json, path) : openedJson(json, path, columns);
}

// The server's own functions have a point before their names.
GivenRows SessionFunctions::rowsBy(const std::string& function, const Arguments& arguments) {
    if (!function.starts_with('.')) return scripts_.rowsOf(function, arguments);
    GivenRows rows;
    if (isNull(arguments.at(0))) return rows;
    if (function == ".openjson") return rowsOfJson(arguments);
    for (std::string& part : splitText(textAt(arguments, 0), textAt(arguments, 1)))
        rows.push_back({std::move(part)});
    return rows;
}

void SessionFunctions::provide(const char* name, int count, Member member, bool steady) {
    Entry& entry = entries_.emplace_back(Entry{this, member});
    const int flags = SQLITE_UTF8 | (steady ? SQLITE_DETERMINISTIC : 0);
    if (sqlite3_create_function_v2(connection_.handle(), name, count, flags, &entry,
                                   &SessionFunctions::called, nullptr, nullptr,
                                   nullptr) != SQLITE_OK) {
        throw lastError(connection_.handle());
    }
}

void SessionFunctions::called(sqlite3_context* context, int count, sqlite3_value** values) {
    const Entry& entry = *static_cast<const Entry*>(sqlite3_user_data(context));
    SessionFunctions& self = *entry.self;
    atCBorder(context, self.connection_.errorSlot(), [&] {
        Arguments arguments;
        arguments.reserve(static_cast<std::size_t>(count));
        for (int i = 0; i < count; ++i) {
            arguments.push_back(argumentValue(values[i]));
        }
        setResult(context, (self.*entry.member)(arguments));
    });
}

Value SessionFunctions::variable(const Arguments& arguments) {
    return state_.frame().values.at(static_cast<std::size_t>(wholeAt(arguments, 0)));
}

Value SessionFunctions::assign(const Arguments& arguments) {
    state_.frame().values.at(static_cast<std::size_t>(wholeAt(arguments, 0))) = arguments[1];
    return arguments[1];
}

Value SessionFunctions::first(const Arguments& arguments) {
    return arguments[0];
}

Value SessionFunctions::offered(const Arguments& arguments) {
    ++state_.offeredRows;
    return arguments[0];
}

Value SessionFunctions::call(const Arguments& arguments) {
    return scripts_.call(textAt(arguments, 0), {arguments.begin() + 1, arguments.end()});
}

Value SessionFunctions::capturing(const Arguments& arguments) {
    return std::int64_t{state_.capturing == textAt(arguments, 0) ? 1 : 0};
}

// kap_current_row(cursor, table, written columns...).
Value SessionFunctions::currentRow(const Arguments& arguments) {
    std::vector<std::string> written;
    for (std::size_t i = 2; i < arguments.size(); ++i) {
        written.push_back(textAt(arguments, i));
    }
    return scripts_.currentRow(textAt(arguments, 0), textAt(arguments, 1), written);
}

Value SessionFunctions::system(const Arguments& arguments) {
    const auto value = static_cast<SystemValue>(wholeAt(arguments, 0));
    if (value >= SystemValue::ErrorNumber && value <= SystemValue::ErrorProcedure) {
        return ofError(value);
    }
    if (value >= SystemValue::ObjectId && value <= SystemValue::ColumnProperty) {
        return ofSchema(value, arguments);
    }
    if (value == SystemValue::ColumnUpdated) {
        return columnUpdated(textAt(arguments, 1));
    }
    if (value == SystemValue::CursorStatus) {
        return scripts_.cursorStatus(textAt(arguments, 1), textAt(arguments, 2));
    }
    if (value >= SystemValue::ApplicationLockMode) return ofLocks(value, arguments);
    if (value >= SystemValue::CursorRows) return ofNames(value, arguments);
    return ofStatement(value, arguments);
}

Value SessionFunctions::ofStatement(SystemValue value, const Arguments& arguments) {
    switch (value) {
        case SystemValue::Error:
            return std::int64_t{state_.error};
        case SystemValue::RowCount:
            return state_.rowCount;
        case SystemValue::TransactionCount:
            return std::int64_t{transactions_.depth()};
        case SystemValue::Identity:
            return orNull(state_.identity);
        case SystemValue::ScopeIdentity:
            // A single row is written outside of any script, and may ask in a default.
            return orNull(state_.frames.empty() ? state_.identity : state_.frame().scopeIdentity);
        case SystemValue::IdentityOfTable: {
            const Table* table = catalogue_.find(objectNamed(catalogue_, textAt(arguments, 1)));
            const bool has =
                table != nullptr && std::ranges::any_of(table->columns, [](const Column& column) {
                    return column.identity.has_value();
                });
            return has ? Value(counters_.currentIdentity(table->name)) : Value();
        }
        case SystemValue::LastRowVersion:
            return versionBytes(counters_.currentRowVersion());
        case SystemValue::FetchStatus:
            return std::int64_t{state_.fetchStatus};
        case SystemValue::NestLevel:
            return std::max(static_cast<std::int64_t>(state_.frames.size()) - 1, std::int64_t{0});
        case SystemValue::ProcedureId: {
            const std::string name = state_.frames.empty() ? "" : state_.frame().procedure();
            return name.empty() ? Value(std::int64_t{0}) : Value(objectId(name));
        }
        case SystemValue::DateFirst:
            return std::int64_t{state_.dates.firstDay};
        case SystemValue::LockTimeout:
            return std::int64_t{state_.lockTimeout};
        case SystemValue::TransactionState:
            if (state_.doomed) return std::int64_t{-1};
            return std::int64_t{transactions_.depth() > 0 ? 1 : 0};
        case SystemValue::Options:
            return options();
        default:
            return ofServer(value, arguments);
    }
}

// Of the error that the innermost CATCH block handles; null outside of one.
Value SessionFunctions::ofError(SystemValue value) const {
    const RaisedError* raised = nullptr;
    for (auto frame = state_.frames.rbegin(); frame != state_.frames.rend() && raised == nullptr;
         ++frame) {
        if (!(*frame)->handled.empty()) raised = &(*frame)->handled.back();
    }
    if (raised == nullptr) return std::monostate{};
    switch (value) {
        case SystemValue::ErrorNumber:
            return std::int64_t{raised->error.number()};
        case SystemValue::ErrorMessage:
            return raised->error.message();
        case SystemValue::ErrorSeverity:
            return std::int64_t{raised->error.severity()};
        case SystemValue::ErrorState:
            return std::int64_t{raised->error.state()};
        case SystemValue::ErrorLine:
            return std::int64_t{raised->error.line()};
        default:
            return raised->procedure.empty() ? Value() : Value(raised->procedure);
    }
}

// The bits of what SET has switched on; most is always on here.
std::int64_t SessionFunctions::options() const {
    constexpr std::int64_t kAnsiWarnings = 8;
    constexpr std::int64_t kAnsiPadding = 16;
    constexpr std::int64_t kAnsiNulls = 32;
    constexpr std::int64_t kArithmeticAbort = 64;
    constexpr std::int64_t kQuotedNames = 256;
    constexpr std::int64_t kNoCount = 512;
    constexpr std::int64_t kNullByDefault = 1024;
    constexpr std::int64_t kNullJoinsToNull = 4096;
    constexpr std::int64_t kAbortOnError = 16384;
    return (kAnsiWarnings | kAnsiPadding | kAnsiNulls | kArithmeticAbort | kNullByDefault |
            kNullJoinsToNull) +
           (state_.quotedNames ? kQuotedNames : 0) + (state_.noCount ? kNoCount : 0) +
           (state_.abortOnError ? kAbortOnError : 0);
}

Value SessionFunctions::ofServer(SystemValue value, const Arguments& arguments) const {
    switch (value) {
        case SystemValue::Version:
            return versionText();
        case SystemValue::ServerName:
        case SystemValue::HostName:
            return hostName();
        case SystemValue::ServiceName:
            return std::string("KapLocal");
        case SystemValue::ProcessId:
            return sessionNumber();
        case SystemValue::DatabaseName:
            return catalogue_.databaseName();
        case SystemValue::UserName:
            return std::string("dbo");
        case SystemValue::LoginName:
            return loginName();
        case SystemValue::ApplicationName:
            return std::string("KapUtil");
        case SystemValue::ServerProperty:
            return serverProperty(textAt(arguments, 1));
        default:
            return std::monostate{};
    }
}

Value SessionFunctions::nameOfObject(std::int64_t id) const {
    const auto name = storedNameOf(catalogue_, id);
    return name ? Value(std::string(bareName(*name))) : Value();
}

Value SessionFunctions::ofSchema(SystemValue value, const Arguments& arguments) const {
    switch (value) {
        case SystemValue::ObjectId:
            return idOfObject(catalogue_, textAt(arguments, 1), textAt(arguments, 2));
        case SystemValue::ObjectName:
            return nameOfObject(wholeAt(arguments, 1));
        case SystemValue::ObjectProperty:
            return objectProperty(catalogue_, wholeAt(arguments, 1), textAt(arguments, 2));
        case SystemValue::ColumnLength:
            return columnLength(catalogue_, textAt(arguments, 1), textAt(arguments, 2));
        case SystemValue::ColumnName:
            return columnName(catalogue_, wholeAt(arguments, 1), wholeAt(arguments, 2));
        default:
            return columnProperty(catalogue_, wholeAt(arguments, 1), textAt(arguments, 2),
                                  textAt(arguments, 3));
    }
}

const FiringTrigger& SessionFunctions::firingTrigger(const char* asked) const {
    if (state_.frames.empty() || !state_.frame().trigger) {
        throw tsql::ServerError(tsql::Message::OnlyWithinTrigger, {asked});
    }
    return *state_.frame().trigger;
}

// UPDATE(column) in a trigger: whether the statement assigns the column. An INSERT assigns all.
Value SessionFunctions::columnUpdated(const std::string& column) const {
    const FiringTrigger& trigger = firingTrigger("UPDATE(column)");
    return std::int64_t{trigger.assigns(column) ? 1 : 0};
}

// COLUMNS_UPDATED(): a bit a column in the order of the table, the first one lowest in the first
// byte.
Value SessionFunctions::columnsUpdated() const {
    const FiringTrigger& trigger = firingTrigger("COLUMNS_UPDATED()");
    constexpr std::size_t kBits = 8;
    // The rows of the trigger have the columns of its table or view.
    const Table* table = state_.frame().program.names().localTable("inserted");
    if (table == nullptr) return {};
    std::string bytes((table->columns.size() + kBits - 1) / kBits, '\0');
    for (std::size_t i = 0; i < table->columns.size(); ++i) {
        if (!trigger.assigns(table->columns[i].name)) continue;
        char& byte = bytes[i / kBits];
        byte = static_cast<char>(static_cast<unsigned char>(byte) | (1U << (i % kBits)));
    }
    return Blob{std::move(bytes)};
}

}  // namespace kap::engine
