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
    adRecConcurrencyViolation = 2048,
    adRecDBDeleted = 262144,
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
