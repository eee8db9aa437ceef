#pragma once

#include <string>
#include <string_view>

#include "engine/binder/bound_expression.hpp"

// What a session tells of itself: @@error, SCOPE_IDENTITY(), OBJECT_ID('t')... Each becomes a call
// of kap_system(kind, arguments...), which the session answers.
namespace kap::engine {

// What SET CONTEXT_INFO keeps: shorter bytes are filled up with zeros.
inline constexpr int kContextBytes = 128;

// Definitions in the file hold these numbers: new ones come last.
enum class SystemValue {
    Error,
    RowCount,
    TransactionCount,
    Identity,
    ScopeIdentity,
    IdentityOfTable,
    Version,
    ServerName,
    ServiceName,
    ProcessId,
    LastRowVersion,
    FetchStatus,
    NestLevel,
    ProcedureId,
    DateFirst,
    LockTimeout,
    ErrorNumber,
    ErrorMessage,
    ErrorSeverity,
    ErrorState,
    ErrorLine,
    ErrorProcedure,
    TransactionState,
    DatabaseName,
    UserName,
    LoginName,
    HostName,
    ApplicationName,
    ObjectId,
    ObjectName,
    ObjectProperty,
    ColumnLength,
    ColumnName,
    ColumnProperty,
    ServerProperty,
    ColumnUpdated,
    CursorStatus,
    Options,
    CursorRows,
    Language,
    IdentitySeed,
    IdentityIncrement,
    DatabaseId,
    DatabaseNameOf,
    DatabaseProperty,
    SchemaId,
    TypeId,
    TypeName,
    ObjectDefinition,
    TriggerLevel,
    LanguageNumber,
    TextSize,
    ContextInfo,
    HostProcess,
    ObjectSchema,
    ObjectPropertyEx,
    IndexColumn,
    IndexKeyProperty,
    IndexProperty,
    TypeProperty,
    DatabaseFlag,
    DatabaseAccess,
    SessionProperty,
    FullTextProperty,
    CollationProperty,
    ColumnsUpdated,
    SchemaName,
    SessionContext,
    ApplicationLockMode,
    ApplicationLockTest,
};

// @@name, asked of the session by that function. Error 137 for one that does not exist.
[[nodiscard]] BoundExpression systemVariable(std::string_view name, const fn::Function& function,
                                             int line);

// kap_system and kap_call as the definitions of computed columns call them: what they answer is
// asked again for each row, though SQLite takes it for steady.
inline constexpr const char* kColumnSystemCall = fn::kColumnSystem.name.data();
inline constexpr const char* kColumnStoredCall = fn::kColumnCall.name.data();

}  // namespace kap::engine
