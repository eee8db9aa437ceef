#include <algorithm>
#include <array>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/binder/binder.hpp"
#include "engine/binder/system_values.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

using tsql::ServerError;
using tsql::SqlType;
using tsql::TypeSpec;

namespace {

constexpr int kIdentityPrecision = 38;
constexpr int kSystemNameLength = 128;
constexpr int kMessageLength = 4000;
constexpr int kVersionLength = 300;
constexpr int kRowVersionBytes = 8;
constexpr int kMostConnections = 32767;  // as a server allows that bounds them by nothing else
constexpr int kHostProcessLength = 10;
constexpr int kColumnBitsBytes = 128;
constexpr int kLockModeLength = 32;

constexpr TypeSpec kIdentityType{SqlType::Numeric, 0, kIdentityPrecision, 0};
constexpr TypeSpec kNameType{SqlType::NVarChar, kSystemNameLength};
constexpr TypeSpec kWholeNumber{SqlType::Int};
constexpr TypeSpec kVariant{SqlType::SqlVariant};

struct SystemVariable {
    std::string_view name;
    SystemValue value;
    TypeSpec type;
};

constexpr std::array kVariables = std::to_array<SystemVariable>({
    {"@@error", SystemValue::Error, kWholeNumber},
    {"@@rowcount", SystemValue::RowCount, kWholeNumber},
    {"@@trancount", SystemValue::TransactionCount, kWholeNumber},
    {"@@identity", SystemValue::Identity, kIdentityType},
    {"@@version", SystemValue::Version, {SqlType::NVarChar, kVersionLength}},
    {"@@servername", SystemValue::ServerName, kNameType},
    {"@@servicename", SystemValue::ServiceName, kNameType},
    {"@@spid", SystemValue::ProcessId, {SqlType::SmallInt}},
    {"@@dbts", SystemValue::LastRowVersion, {SqlType::VarBinary, kRowVersionBytes}},
    {"@@fetch_status", SystemValue::FetchStatus, kWholeNumber},
    {"@@nestlevel", SystemValue::NestLevel, kWholeNumber},
    {"@@procid", SystemValue::ProcedureId, kWholeNumber},
    {"@@datefirst", SystemValue::DateFirst, {SqlType::TinyInt}},
    {"@@lock_timeout", SystemValue::LockTimeout, kWholeNumber},
    {"@@options", SystemValue::Options, kWholeNumber},
    {"@@cursor_rows", SystemValue::CursorRows, kWholeNumber},
    {"@@language", SystemValue::Language, kNameType},
    {"@@langid", SystemValue::LanguageNumber, {SqlType::SmallInt}},
    {"@@textsize", SystemValue::TextSize, kWholeNumber},
});

// What the server has besides: it tells of a server's work and of nothing that a file has.
constexpr std::array kRefusedVariables = std::to_array<std::string_view>(
    {"@@connections", "@@cpu_busy", "@@def_sortorder_id", "@@default_langid", "@@idle", "@@io_busy",
     "@@microsoftversion", "@@pack_received", "@@pack_sent", "@@packet_errors", "@@timeticks",
     "@@total_errors", "@@total_read", "@@total_write"});

// How an argument goes to the session.
enum class Takes { Nothing, Text, Number, TwoTexts, NumberText, TextNumbers, NumbersText, Numbers };

struct SystemFunction {
    std::string_view name;
    int fewest;
    int most;
    Takes takes;
    SystemValue value;
    TypeSpec type;
    bool ofSchema = false;
};

constexpr TypeSpec kMessageType{SqlType::NVarChar, kMessageLength};

constexpr std::array kSystemFunctions = std::to_array<SystemFunction>({
    {"scope_identity", 0, 0, Takes::Nothing, SystemValue::ScopeIdentity, kIdentityType},
    {"ident_current", 1, 1, Takes::Text, SystemValue::IdentityOfTable, kIdentityType},
    {"ident_seed", 1, 1, Takes::Text, SystemValue::IdentitySeed, kIdentityType, true},
    {"ident_incr", 1, 1, Takes::Text, SystemValue::IdentityIncrement, kIdentityType, true},
    {"db_id", 0, 1, Takes::Text, SystemValue::DatabaseId, {SqlType::SmallInt}},
    {"databasepropertyex", 2, 2, Takes::TwoTexts, SystemValue::DatabaseProperty, kVariant},
    {"schema_id", 0, 1, Takes::Text, SystemValue::SchemaId, kWholeNumber, true},
    {"type_id", 1, 1, Takes::Text, SystemValue::TypeId, kWholeNumber, true},
    {"type_name", 1, 1, Takes::Number, SystemValue::TypeName, kNameType, true},
    {"object_definition", 1, 1, Takes::Number, SystemValue::ObjectDefinition, kMessageType, true},
    {"trigger_nestlevel", 0, 3, Takes::Number, SystemValue::TriggerLevel, kWholeNumber},
    {"error_number", 0, 0, Takes::Nothing, SystemValue::ErrorNumber, kWholeNumber},
    {"error_message", 0, 0, Takes::Nothing, SystemValue::ErrorMessage, kMessageType},
    {"error_severity", 0, 0, Takes::Nothing, SystemValue::ErrorSeverity, kWholeNumber},
    {"error_state", 0, 0, Takes::Nothing, SystemValue::ErrorState, kWholeNumber},
    {"error_line", 0, 0, Takes::Nothing, SystemValue::ErrorLine, kWholeNumber},
    {"error_procedure", 0, 0, Takes::Nothing, SystemValue::ErrorProcedure, kNameType},
    {"xact_state", 0, 0, Takes::Nothing, SystemValue::TransactionState, {SqlType::SmallInt}},
    {"rowcount_big", 0, 0, Takes::Nothing, SystemValue::RowCount, {SqlType::BigInt}},
    {"original_db_name", 0, 0, Takes::Nothing, SystemValue::DatabaseNameOf, kNameType},
    {"db_name", 0, 1, Takes::Number, SystemValue::DatabaseNameOf, kNameType},
    {"user_name", 0, 1, Takes::Number, SystemValue::UserName, kNameType},
    {"schema_name", 0, 1, Takes::Number, SystemValue::SchemaName, kNameType, true},
    {"suser_name", 0, 1, Takes::Number, SystemValue::LoginName, kNameType},
    {"suser_sname", 0, 1, Takes::Number, SystemValue::LoginName, kNameType},
    {"original_login", 0, 0, Takes::Nothing, SystemValue::LoginName, kNameType},
    {"host_name", 0, 0, Takes::Nothing, SystemValue::HostName, kNameType},
    {"app_name", 0, 0, Takes::Nothing, SystemValue::ApplicationName, kNameType},
    {"object_id", 1, 2, Takes::TwoTexts, SystemValue::ObjectId, kWholeNumber, true},
    {"object_name", 1, 2, Takes::Numbers, SystemValue::ObjectName, kNameType, true},
    {"object_schema_name", 1, 2, Takes::Numbers, SystemValue::ObjectSchema, kNameType, true},
    {"objectpropertyex", 2, 2, Takes::NumberText, SystemValue::ObjectPropertyEx, kVariant, true},
    {"index_col", 3, 3, Takes::TextNumbers, SystemValue::IndexColumn, kNameType, true},
    {"indexkey_property", 4, 4, Takes::NumbersText, SystemValue::IndexKeyProperty, kWholeNumber,
     true},
    {"indexproperty", 3, 3, Takes::NumberText, SystemValue::IndexProperty, kWholeNumber, true},
    {"typeproperty", 2, 2, Takes::TwoTexts, SystemValue::TypeProperty, kWholeNumber, true},
    {"databaseproperty", 2, 2, Takes::TwoTexts, SystemValue::DatabaseFlag, kWholeNumber},
    {"has_dbaccess", 1, 1, Takes::Text, SystemValue::DatabaseAccess, kWholeNumber},
    {"sessionproperty", 1, 1, Takes::Text, SystemValue::SessionProperty, kWholeNumber},
    {"fulltextserviceproperty", 1, 1, Takes::Text, SystemValue::FullTextProperty, kWholeNumber},
    {"collationproperty", 2, 2, Takes::TwoTexts, SystemValue::CollationProperty, kWholeNumber},
    {"context_info",
     0,
     0,
     Takes::Nothing,
     SystemValue::ContextInfo,
     {SqlType::VarBinary, kContextBytes}},
    {"host_id",
     0,
     0,
     Takes::Nothing,
     SystemValue::HostProcess,
     {SqlType::Char, kHostProcessLength}},
    {"columns_updated",
     0,
     0,
     Takes::Nothing,
     SystemValue::ColumnsUpdated,
     {SqlType::VarBinary, kColumnBitsBytes}},
    {"objectproperty", 2, 2, Takes::NumberText, SystemValue::ObjectProperty, kWholeNumber, true},
    {"col_length", 2, 2, Takes::TwoTexts, SystemValue::ColumnLength, {SqlType::SmallInt}, true},
    {"col_name", 2, 2, Takes::Numbers, SystemValue::ColumnName, kNameType, true},
    {"columnproperty", 3, 3, Takes::NumberText, SystemValue::ColumnProperty, kWholeNumber, true},
    {"serverproperty", 1, 1, Takes::Text, SystemValue::ServerProperty, kVariant},
    {"applock_mode",
     3,
     3,
     Takes::Text,
     SystemValue::ApplicationLockMode,
     {SqlType::NVarChar, kLockModeLength}},
    {"applock_test", 4, 4, Takes::Text, SystemValue::ApplicationLockTest, {SqlType::SmallInt}},
    {"session_context", 1, 1, Takes::Text, SystemValue::SessionContext, kVariant},
    {"cursor_status", 2, 2, Takes::TwoTexts, SystemValue::CursorStatus, {SqlType::SmallInt}},
});

// INDEXKEY_PROPERTY's, before the name of the property.
constexpr std::size_t kNumbersBeforeText = 3;

bool takesNumber(Takes takes, std::size_t index) {
    switch (takes) {
        case Takes::Number:
        case Takes::Numbers:
            return true;
        case Takes::NumberText:
            return index == 0;
        case Takes::TextNumbers:
            return index > 0;
        case Takes::NumbersText:
            return index < kNumbersBeforeText;
        default:
            return false;
    }
}

sql::Expression kindOf(SystemValue value) {
    return sql::number(static_cast<int>(value));
}

}  // namespace

const fn::Function& Binder::systemCall() const {
    return computedColumn_ ? fn::kColumnSystem : fn::kSystem;
}

BoundExpression systemVariable(std::string_view name, const fn::Function& function, int line) {
    const std::string lower = asciiLower(name);
    if (lower == "@@max_precision") {
        return BoundExpression::literal(std::int64_t{kIdentityPrecision}, {SqlType::TinyInt});
    }
    if (lower == "@@max_connections") {
        return BoundExpression::literal(std::int64_t{kMostConnections}, kWholeNumber);
    }
    if (lower == "@@remserver") return BoundExpression::nullOf(kNameType);
    const auto* const found =
        std::find_if(kVariables.begin(), kVariables.end(),
                     [&](const SystemVariable& each) { return each.name == lower; });
    if (found == kVariables.end()) {
        if (std::ranges::find(kRefusedVariables, lower) != kRefusedVariables.end()) {
            throw tsql::unsupported(std::string(name), line);
        }
        throw ServerError(tsql::Message::UndeclaredVariable, {name}, line);
    }
    return BoundExpression::expression(sql::call(function, kindOf(found->value)), found->type,
                                       true);
}

std::optional<BoundExpression> Binder::systemFunction(const tsql::FunctionCall& call, int line,
                                                      Scope& scope) {
    const std::string lower = asciiLower(call.name.last());
    if (lower == "update" && call.arguments.size() == 1) {
        const auto* column = std::get_if<tsql::ColumnReference>(&call.arguments[0]->node);
        if (column == nullptr) throw tsql::syntaxError("UPDATE", line);
        return BoundExpression::expression(
            sql::call(systemCall(), kindOf(SystemValue::ColumnUpdated),
                      sql::text(column->name.last())),
            kWholeNumber, false);
    }
    const auto* const found =
        std::find_if(kSystemFunctions.begin(), kSystemFunctions.end(),
                     [&](const SystemFunction& each) { return each.name == lower; });
    if (found == kSystemFunctions.end()) return std::nullopt;
    const int count = static_cast<int>(call.arguments.size());
    if (count < found->fewest || count > found->most) {
        throw ServerError(tsql::Message::WrongArgumentCount, {lower, plain::text(found->fewest)},
                          line);
    }
    if (found->ofSchema) noteSchema();
    sql::Call asked{systemCall(), {}};
    asked.arguments.reserve(call.arguments.size() + 1);
    asked.arguments.push_back(kindOf(found->value));
    for (std::size_t i = 0; i < call.arguments.size(); ++i) {
        const TypeSpec type = takesNumber(found->takes, i) ? kWholeNumber : kMessageType;
        asked.arguments.push_back(convertTo(value(*call.arguments[i], scope), type, line).tree);
    }
    // The session answers with a number or a name; what it was given to keep has its type already.
    const bool typed =
        tsql::isVariant(found->type.type) && found->value != SystemValue::SessionContext;
    if (typed) {
        return BoundExpression::expression(
            sql::call(fn::kVariant, sql::Expression(std::move(asked))), found->type, true);
    }
    return BoundExpression::expression(std::move(asked), found->type, true);
}

}  // namespace kap::engine
