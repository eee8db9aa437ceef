#pragma once

#include <cstdint>

// The error numbers of the data-access objects.
namespace kap::ado::errors {

// Raised by the objects themselves.
inline constexpr std::int32_t kInvalidArgument = -2146825287;      // 800A0BB9
inline constexpr std::int32_t kOpeningFile = -2146825286;          // 800A0BBA
inline constexpr std::int32_t kReadingFile = -2146825285;          // 800A0BBB
inline constexpr std::int32_t kWritingFile = -2146825284;          // 800A0BBC
inline constexpr std::int32_t kNoCurrentRecord = -2146825267;      // 800A0BCD
inline constexpr std::int32_t kIllegalOperation = -2146825069;     // 800A0C93: in this context
inline constexpr std::int32_t kInTransaction = -2146825042;        // 800A0CAE
inline constexpr std::int32_t kItemNotFound = -2146825023;         // 800A0CC1
inline constexpr std::int32_t kObjectInCollection = -2146824921;   // 800A0D27
inline constexpr std::int32_t kObjectNotSet = -2146824868;         // 800A0D5C: no longer valid
inline constexpr std::int32_t kWrongValueType = -2146824867;       // 800A0D5D
inline constexpr std::int32_t kObjectClosed = -2146824584;         // 800A0E78
inline constexpr std::int32_t kObjectOpen = -2146824583;           // 800A0E79
inline constexpr std::int32_t kConnectionOfCommand = -2146824581;  // 800A0E7B
inline constexpr std::int32_t kIncompleteParameter = -2146824580;  // 800A0E7C
inline constexpr std::int32_t kProviderNotFound = -2146824582;     // 800A0E7A
inline constexpr std::int32_t kInvalidConnection = -2146824579;    // 800A0E7D
inline constexpr std::int32_t kStillExecuting = -2146824577;       // 800A0E7F
inline constexpr std::int32_t kOperationCancelled = -2146824576;   // 800A0E80
inline constexpr std::int32_t kStillConnecting = -2146824575;      // 800A0E81
inline constexpr std::int32_t kFeatureNotAvailable = -2146825037;  // 800A0CB3

// Raised by the driver and passed on.
inline constexpr std::int32_t kCancelled = -2147217842;            // 80040E4E: a sink said no
inline constexpr std::int32_t kUnspecified = -2147467259;          // 80004005
inline constexpr std::int32_t kDataTypeMismatch = -2147217913;     // 80040E07: value cannot convert
inline constexpr std::int32_t kBadBookmark = -2147217906;          // 80040E0E
inline constexpr std::int32_t kCannotFetchBackward = -2147217884;  // 80040E24
inline constexpr std::int32_t kRowNotFound = -2147217885;          // 80040E23: row was deleted
inline constexpr std::int32_t kCommandText = -2147217900;          // 80040E14
inline constexpr std::int32_t kNoCommandText = -2147217908;        // 80040E0C
inline constexpr std::int32_t kMultipleStep = -2147217887;         // 80040E21
inline constexpr std::int32_t kIntegrity = -2147217873;            // 80040E2F
inline constexpr std::int32_t kTimeout = -2147217871;              // 80040E31
inline constexpr std::int32_t kUnknownObject = -2147217865;        // 80040E37
inline constexpr std::int32_t kConcurrency = -2147217864;          // 80040E38
inline constexpr std::int32_t kTruncated = -2147217833;            // 80040E57
inline constexpr std::int32_t kNoTransaction = -2147168242;        // 8004D00E
inline constexpr std::int32_t kLogin = -2147217843;                // 80040E4D: database not opened

}  // namespace kap::ado::errors
