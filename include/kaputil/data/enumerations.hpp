#pragma once

#include <cstdint>

// The enumerations of the data-access objects, with the names and values that everybody knows.
// length: one list, which the catalogue repeats by name and a test compares with it
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
    adUseNone = 1,
    adUseClientBatch = 3,
};

enum class CommandTypeEnum : std::int32_t {
    adCmdUnspecified = -1,
    adCmdText = 1,
    adCmdTable = 2,
    adCmdStoredProc = 4,
    adCmdUnknown = 8,
    adCmdTableDirect = 512,
    adCmdFile = 256,
};

enum class ParameterDirectionEnum : std::int32_t {
    adParamUnknown = 0,
    adParamInput = 1,
    adParamOutput = 2,
    adParamInputOutput = 3,
    adParamReturnValue = 4,
};

// Bits of a parameter's attributes.
enum class ParameterAttributesEnum : std::int32_t {
    adParamSigned = 16,
    adParamNullable = 64,
    adParamLong = 128,
};

enum class ExecuteOptionEnum : std::int32_t {
    adOptionUnspecified = -1,
    adExecuteNoRecords = 128,
    adAsyncExecute = 16,
    adAsyncFetch = 32,
    adAsyncFetchNonBlocking = 64,
    adExecuteStream = 1024,
    adExecuteRecord = 2048,
};

// How a connection is opened.
enum class ConnectOptionEnum : std::int32_t {
    adConnectUnspecified = -1,
    adAsyncConnect = 16,
};

// Whether a user is asked for what a connection string leaves out.
enum class ConnectPromptEnum : std::int32_t {
    adPromptAlways = 1,
    adPromptComplete = 2,
    adPromptCompleteRequired = 3,
    adPromptNever = 4,
};

enum class ObjectStateEnum : std::int32_t {
    adStateClosed = 0,
    adStateOpen = 1,
    adStateConnecting = 2,
    adStateExecuting = 4,
    adStateFetching = 8,
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

// What a record must still hold to be written: the property "Update Criteria" of a recordset.
enum class UpdateCriteriaEnum : std::int32_t {
    adCriteriaKey = 0,
    adCriteriaAllCols = 1,
    adCriteriaUpdCols = 2,
    adCriteriaTimeStamp = 3,
};

// What is read again of written records: the property "Update Resync" of a recordset.
enum class UpdateResyncEnum : std::int32_t {
    adResyncNone = 0,
    adResyncAutoIncrement = 1,
    adResyncConflicts = 2,
    adResyncUpdates = 4,
    adResyncInserts = 8,
    adResyncAll = 15,
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
    adRecMultipleChanges = 64,
    adRecPendingChanges = 128,
    adRecCanceled = 256,
    adRecCantRelease = 1024,
    adRecMaxChangesExceeded = 8192,
    adRecObjectOpen = 16384,
    adRecOutOfMemory = 32768,
    adRecPermissionDenied = 65536,
};

enum class FilterGroupEnum : std::int32_t {
    adFilterNone = 0,
    adFilterPendingRecords = 1,
    adFilterAffectedRecords = 2,
    adFilterFetchedRecords = 3,
    adFilterConflictingRecords = 5,
    adFilterPredicate = 4,
};

enum class SearchDirectionEnum : std::int32_t {
    adSearchBackward = -1,
    adSearchForward = 1,
};

// Which record a search by an index finds.
enum class SeekEnum : std::int32_t {
    adSeekFirstEQ = 1,
    adSeekLastEQ = 2,
    adSeekAfterEQ = 4,
    adSeekAfter = 8,
    adSeekBeforeEQ = 16,
    adSeekBefore = 32,
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

enum class GetRowsOptionEnum : std::int32_t {
    adGetRowsRest = -1,
};

enum class MarshalOptionsEnum : std::int32_t {
    adMarshalAll = 0,
    adMarshalModifiedOnly = 1,
};

// How a recordset is saved.
enum class PersistFormatEnum : std::int32_t {
    adPersistADTG = 0,
    adPersistXML = 1,
    adPersistADO = 1,
    adPersistProviderSpecific = 2,
};

// What a stream holds.
enum class StreamTypeEnum : std::int32_t {
    adTypeBinary = 1,
    adTypeText = 2,
};

// How much of a stream is read.
enum class StreamReadEnum : std::int32_t {
    adReadAll = -1,
    adReadLine = -2,
};

// What follows a text that is written to a stream.
enum class StreamWriteEnum : std::int32_t {
    adWriteChar = 0,
    adWriteLine = 1,
};

// What ends the lines of a stream.
enum class LineSeparatorEnum : std::int32_t {
    adCRLF = -1,
    adLF = 10,
    adCR = 13,
};

// Whether a stream may be saved over a file.
enum class SaveOptionsEnum : std::int32_t {
    adSaveCreateNotExist = 1,
    adSaveCreateOverWrite = 2,
};

// How a stream is opened.
enum class StreamOpenOptionsEnum : std::int32_t {
    adOpenStreamUnspecified = -1,
    adOpenStreamAsync = 1,
    adOpenStreamFromRecord = 4,
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

// The last digits of the error numbers: a number is -2146828288 more.
enum class ErrorValueEnum : std::int32_t {
    adErrInvalidArgument = 3001,
    adErrOpeningFile = 3002,
    adErrReadFile = 3003,
    adErrWriteFile = 3004,
    adErrNoCurrentRecord = 3021,
    adErrIllegalOperation = 3219,
    adErrCantChangeProvider = 3220,
    adErrInTransaction = 3246,
    adErrFeatureNotAvailable = 3251,
    adErrItemNotFound = 3265,
    adErrObjectInCollection = 3367,
    adErrObjectNotSet = 3420,
    adErrDataConversion = 3421,
    adErrObjectClosed = 3704,
    adErrObjectOpen = 3705,
    adErrProviderNotFound = 3706,
    adErrBoundToCommand = 3707,
    adErrInvalidParamInfo = 3708,
    adErrInvalidConnection = 3709,
    adErrNotReentrant = 3710,
    adErrStillExecuting = 3711,
    adErrOperationCancelled = 3712,
    adErrStillConnecting = 3713,
    adErrInvalidTransaction = 3714,
    adErrNotExecuting = 3715,
    adErrUnsafeOperation = 3716,
    adErrPermissionDenied = 3720,
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
    adSchemaProviderSpecific = -1,
    adSchemaAsserts = 0,
    adSchemaCatalogs = 1,
    adSchemaCharacterSets = 2,
    adSchemaCollations = 3,
    adSchemaCheckConstraints = 5,
    adSchemaConstraintColumnUsage = 6,
    adSchemaConstraintTableUsage = 7,
    adSchemaKeyColumnUsage = 8,
    adSchemaReferentialConstraints = 9,
    adSchemaTableConstraints = 10,
    adSchemaColumnsDomainUsage = 11,
    adSchemaColumnPrivileges = 13,
    adSchemaTablePrivileges = 14,
    adSchemaUsagePrivileges = 15,
    adSchemaProcedures = 16,
    adSchemaSchemata = 17,
    adSchemaSQLLanguages = 18,
    adSchemaStatistics = 19,
    adSchemaTranslations = 21,
    adSchemaViews = 23,
    adSchemaViewColumnUsage = 24,
    adSchemaViewTableUsage = 25,
    adSchemaProcedureParameters = 26,
    adSchemaForeignKeys = 27,
    adSchemaProcedureColumns = 29,
    adSchemaDBInfoKeywords = 30,
    adSchemaDBInfoLiterals = 31,
    adSchemaCubes = 32,
    adSchemaDimensions = 33,
    adSchemaHierarchies = 34,
    adSchemaLevels = 35,
    adSchemaMeasures = 36,
    adSchemaProperties = 37,
    adSchemaMembers = 38,
    adSchemaTrustees = 39,
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
    adModeRecursive = 4194304,
};

enum class IsolationLevelEnum : std::int32_t {
    adXactUnspecified = -1,
    adXactChaos = 16,
    adXactReadUncommitted = 256,
    adXactReadCommitted = 4096,
    adXactRepeatableRead = 65536,
    adXactSerializable = 1048576,
    adXactBrowse = 256,
    adXactCursorStability = 4096,
    adXactIsolated = 1048576,
};

// What follows the end of a transaction: bits of Connection.Attributes.
enum class XactAttributeEnum : std::int32_t {
    adXactCommitRetaining = 131072,
    adXactAbortRetaining = 262144,
    adXactAsyncPhaseOne = 524288,
    adXactSyncPhaseOne = 1048576,
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
    adIDispatch = 9,
    adIUnknown = 13,
    adUnsignedBigInt = 21,
    adFileTime = 64,
    adUserDefined = 132,
    adChapter = 136,
    adPropVariant = 138,
    adVarNumeric = 139,
    adArray = 8192,
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
    adFldCacheDeferred = 4096,
    adFldIsChapter = 8192,
    adFldNegativeScale = 16384,
    adFldIsRowURL = 65536,
    adFldIsDefaultStream = 131072,
    adFldIsCollection = 262144,
};

// What became of a field.
enum class FieldStatusEnum : std::int32_t {
    adFieldOK = 0,
    adFieldCantConvertValue = 2,
    adFieldIsNull = 3,
    adFieldTruncated = 4,
    adFieldSignMismatch = 5,
    adFieldDataOverflow = 6,
    adFieldCantCreate = 7,
    adFieldUnavailable = 8,
    adFieldPermissionDenied = 9,
    adFieldIntegrityViolation = 10,
    adFieldSchemaViolation = 11,
    adFieldBadStatus = 12,
    adFieldDefault = 13,
    adFieldIgnore = 15,
    adFieldDoesNotExist = 16,
    adFieldInvalidURL = 17,
    adFieldResourceLocked = 18,
    adFieldResourceExists = 19,
    adFieldCannotComplete = 20,
    adFieldVolumeNotFound = 21,
    adFieldOutOfSpace = 22,
    adFieldCannotDeleteSource = 23,
    adFieldReadOnly = 24,
    adFieldResourceOutOfScope = 25,
    adFieldAlreadyExists = 26,
    adFieldPendingInsert = 65536,
    adFieldPendingDelete = 131072,
    adFieldPendingChange = 262144,
    adFieldPendingUnknown = 524288,
    adFieldPendingUnknownDelete = 1048576,
};

// Bits of a property's attributes.
enum class PropertyAttributesEnum : std::int32_t {
    adPropNotSupported = 0,
    adPropRequired = 1,
    adPropOptional = 2,
    adPropRead = 512,
    adPropWrite = 1024,
};

}  // namespace kap::ado
