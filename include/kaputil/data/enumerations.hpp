#pragma once

#include <cstdint>

// The enumerations of the data-access objects, with the names and values that every user of
// recordsets knows.
namespace kap::ado {

enum class CursorTypeEnum : std::int32_t {
    adOpenUnspecified = -1,
    adOpenForwardOnly = 0,
    adOpenKeyset = 1,
    adOpenDynamic = 2,
    adOpenStatic = 3,
};

enum class LockTypeEnum : std::int32_t {
    adLockUnspecified = -1,
    adLockReadOnly = 1,
    adLockPessimistic = 2,
    adLockOptimistic = 3,
    adLockBatchOptimistic = 4,
};

enum class CursorLocationEnum : std::int32_t {
    adUseServer = 2,
    adUseClient = 3,
};

enum class CommandTypeEnum : std::int32_t {
    adCmdUnspecified = -1,
    adCmdText = 1,
    adCmdTable = 2,
    adCmdStoredProc = 4,
    adCmdUnknown = 8,
    adCmdTableDirect = 512,
};

enum class ParameterDirectionEnum : std::int32_t {
    adParamUnknown = 0,
    adParamInput = 1,
    adParamOutput = 2,
    adParamInputOutput = 3,
    adParamReturnValue = 4,
};

enum class ExecuteOptionEnum : std::int32_t {
    adOptionUnspecified = -1,
    adExecuteNoRecords = 128,
};

enum class ObjectStateEnum : std::int32_t {
    adStateClosed = 0,
    adStateOpen = 1,
};

enum class EditModeEnum : std::int32_t {
    adEditNone = 0,
    adEditInProgress = 1,
    adEditAdd = 2,
    adEditDelete = 4,
};

enum class PositionEnum : std::int32_t {
    adPosUnknown = -1,
    adPosBOF = -2,
    adPosEOF = -3,
};

enum class BookmarkEnum : std::int32_t {
    adBookmarkCurrent = 0,
    adBookmarkFirst = 1,
    adBookmarkLast = 2,
};

enum class AffectEnum : std::int32_t {
    adAffectCurrent = 1,
    adAffectGroup = 2,
    adAffectAll = 3,
    adAffectAllChapters = 4,
};

enum class ResyncEnum : std::int32_t {
    adResyncUnderlyingValues = 1,
    adResyncAllValues = 2,
};

enum class RecordStatusEnum : std::int32_t {
    adRecOK = 0,
    adRecNew = 1,
    adRecModified = 2,
    adRecDeleted = 4,
    adRecUnmodified = 8,
    adRecInvalid = 16,
    adRecConcurrencyViolation = 2048,
    adRecIntegrityViolation = 4096,
    adRecSchemaViolation = 131072,
    adRecDBDeleted = 262144,
};

enum class FilterGroupEnum : std::int32_t {
    adFilterNone = 0,
    adFilterPendingRecords = 1,
    adFilterAffectedRecords = 2,
    adFilterFetchedRecords = 3,
    adFilterConflictingRecords = 5,
};

enum class SearchDirectionEnum : std::int32_t {
    adSearchBackward = -1,
    adSearchForward = 1,
};

enum class CompareEnum : std::int32_t {
    adCompareLessThan = 0,
    adCompareEqual = 1,
    adCompareGreaterThan = 2,
    adCompareNotEqual = 3,
    adCompareNotComparable = 4,
};

enum class StringFormatEnum : std::int32_t {
    adClipString = 2,
};

enum class MarshalOptionsEnum : std::int32_t {
    adMarshalAll = 0,
    adMarshalModifiedOnly = 1,
};

// What a sink of events is told of an operation, and answers.
enum class EventStatusEnum : std::int32_t {
    adStatusOK = 1,
    adStatusErrorsOccurred = 2,
    adStatusCantDeny = 3,
    adStatusCancel = 4,
    adStatusUnwantedEvent = 5,
};

// Why an event of a recordset is raised.
enum class EventReasonEnum : std::int32_t {
    adRsnAddNew = 1,
    adRsnDelete = 2,
    adRsnUpdate = 3,
    adRsnUndoUpdate = 4,
    adRsnUndoAddNew = 5,
    adRsnUndoDelete = 6,
    adRsnRequery = 7,
    adRsnResynch = 8,
    adRsnClose = 9,
    adRsnMove = 10,
    adRsnFirstChange = 11,
    adRsnMoveFirst = 12,
    adRsnMoveNext = 13,
    adRsnMovePrevious = 14,
    adRsnMoveLast = 15,
};

// What a recordset can do, for Recordset.Supports.
enum class CursorOptionEnum : std::int32_t {
    adHoldRecords = 0x100,
    adMovePrevious = 0x200,
    adBookmark = 0x2000,
    adApproxPosition = 0x4000,
    adUpdateBatch = 0x10000,
    adResync = 0x20000,
    adNotify = 0x40000,
    adFind = 0x80000,
    adSeek = 0x400000,
    adIndex = 0x800000,
    adAddNew = 0x1000400,
    adDelete = 0x1000800,
    adUpdate = 0x1008000,
};

// Descriptions of what is in a database, for Connection.OpenSchema.
enum class SchemaEnum : std::int32_t {
    adSchemaColumns = 4,
    adSchemaIndexes = 12,
    adSchemaTables = 20,
    adSchemaProviderTypes = 22,
    adSchemaPrimaryKeys = 28,
};

enum class ConnectModeEnum : std::int32_t {
    adModeUnknown = 0,
    adModeRead = 1,
    adModeWrite = 2,
    adModeReadWrite = 3,
    adModeShareDenyRead = 4,
    adModeShareDenyWrite = 8,
    adModeShareExclusive = 12,
    adModeShareDenyNone = 16,
};

enum class IsolationLevelEnum : std::int32_t {
    adXactUnspecified = -1,
    adXactChaos = 16,
    adXactReadUncommitted = 256,
    adXactReadCommitted = 4096,
    adXactRepeatableRead = 65536,
    adXactSerializable = 1048576,
};

enum class DataTypeEnum : std::int32_t {
    adEmpty = 0,
    adSmallInt = 2,
    adInteger = 3,
    adSingle = 4,
    adDouble = 5,
    adCurrency = 6,
    adDate = 7,
    adBSTR = 8,
    adError = 10,
    adBoolean = 11,
    adVariant = 12,
    adDecimal = 14,
    adTinyInt = 16,
    adUnsignedTinyInt = 17,
    adUnsignedSmallInt = 18,
    adUnsignedInt = 19,
    adBigInt = 20,
    adGUID = 72,
    adBinary = 128,
    adChar = 129,
    adWChar = 130,
    adNumeric = 131,
    adDBDate = 133,
    adDBTime = 134,
    adDBTimeStamp = 135,
    adVarChar = 200,
    adLongVarChar = 201,
    adVarWChar = 202,
    adLongVarWChar = 203,
    adVarBinary = 204,
    adLongVarBinary = 205,
};

// Bits of a field's attributes.
enum class FieldAttributeEnum : std::int32_t {
    adFldUnspecified = -1,
    adFldMayDefer = 2,
    adFldUpdatable = 4,
    adFldUnknownUpdatable = 8,
    adFldFixed = 16,
    adFldIsNullable = 32,
    adFldMayBeNull = 64,
    adFldLong = 128,
    adFldRowID = 256,
    adFldRowVersion = 512,
    adFldKeyColumn = 32768,
};

}  // namespace kap::ado
