#include "data/failures.hpp"

#include <utility>

#include <kaputil/automation/error.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "data/driver.hpp"

namespace kap::ado::fail {
namespace {

constexpr const char16_t* kSource = u"ADODB";

[[noreturn]] void raise(std::int32_t number, String description) {
    throw AutomationError(number, std::move(description), kSource);
}

// What concerns the database is kept with the connection's errors like the database's own.
[[noreturn]] void raiseForDatabase(std::int32_t number, const char* description) {
    throw DriverError({{0, number, "HY000", description, 0}}, kSource);
}

}  // namespace

void invalidArgument() {
    invalidArgument(
        u"Arguments are of the wrong type, are out of acceptable range, or are in conflict with "
        u"one another.");
}

void invalidArgument(String description) {
    raise(errors::kInvalidArgument, std::move(description));
}

void noCurrentRecord() {
    raise(errors::kNoCurrentRecord,
          u"Either BOF or EOF is True, or the current record has been deleted. Requested operation "
          u"requires a current record.");
}

void deletedRow() {
    raise(errors::kRowNotFound,
          u"Row handle referred to a deleted row or a row marked for deletion.");
}

void illegalOperation() {
    raise(errors::kIllegalOperation, u"Operation is not allowed in this context.");
}

void itemNotFound() {
    raise(errors::kItemNotFound,
          u"Item cannot be found in the collection corresponding to the requested name or "
          u"ordinal.");
}

void objectInCollection() {
    raise(errors::kObjectInCollection, u"Object is already in collection. Cannot append.");
}

void objectNotValid() {
    raise(errors::kObjectNotSet, u"Object is no longer valid.");
}

void noTransaction() {
    raiseForDatabase(errors::kNoTransaction, "No transaction is active.");
}

void objectClosed() {
    raise(errors::kObjectClosed, u"Operation is not allowed when the object is closed.");
}

void objectOpen() {
    raise(errors::kObjectOpen, u"Operation is not allowed when the object is open.");
}

void invalidConnection() {
    raise(errors::kInvalidConnection,
          u"The connection cannot be used to perform this operation. It is either closed or "
          u"invalid in this context.");
}

void connectionOfCommand() {
    raise(errors::kConnectionOfCommand,
          u"Cannot change the ActiveConnection property of a Recordset object which has a Command "
          u"object as its source.");
}

void inTransaction() {
    raise(errors::kInTransaction,
          u"Connection object cannot be explicitly closed while in a transaction.");
}

void noCommandText() {
    raise(errors::kNoCommandText, u"Command text was not set for the command object.");
}

void notUpdatable() {
    raise(errors::kFeatureNotAvailable,
          u"Current Recordset does not support updating. This may be a limitation of the provider, "
          u"or of the selected locktype.");
}

void notAvailable(String description) {
    raise(errors::kFeatureNotAvailable, std::move(description));
}

void openingFile(const String& file, const String& why) {
    raise(errors::kOpeningFile, u"File '" + file + u"' could not be opened: " + why.units() + u".");
}

void readingFile(const std::string& why) {
    raise(errors::kReadingFile, "File could not be read: " + why + ".");
}

void writingFile(const String& file, const String& why) {
    raise(errors::kWritingFile, u"Write to file '" + file + u"' failed: " + why.units() + u".");
}

void binaryForm() {
    notAvailable(
        u"The binary form of saved recordsets (adPersistADTG) is neither written nor read: save "
        u"with adPersistXML.");
}

void cancelled() {
    raise(errors::kCancelled, u"Operation was canceled.");
}

void operationCancelled() {
    raise(errors::kOperationCancelled, u"Operation has been cancelled by the user.");
}

void stillExecuting() {
    raise(errors::kStillExecuting,
          u"Operation cannot be performed while executing asynchronously.");
}

void stillConnecting() {
    raise(errors::kStillConnecting,
          u"Operation cannot be performed while connecting asynchronously.");
}

void badBookmark() {
    raise(errors::kBadBookmark, u"The bookmark is invalid.");
}

void cannotFetchBackward() {
    raise(errors::kCannotFetchBackward, u"Rowset does not support fetching backward.");
}

void incompleteParameter() {
    raise(errors::kIncompleteParameter,
          u"Parameter object is improperly defined. Inconsistent or incomplete information was "
          u"provided.");
}

void wrongType(const String& field) {
    raise(errors::kWrongValueType,
          u"Application uses a value of the wrong type for the current operation (field '" + field +
              u"').");
}

void doesNotFit(const String& field) {
    raise(errors::kMultipleStep,
          u"Multiple-step operation generated errors: the value does not fit in field '" + field +
              u"'.");
}

void concurrency() {
    raiseForDatabase(errors::kConcurrency,
                     "Row cannot be located for updating. Some values may have been changed since "
                     "it was last read.");
}

void rowGone() {
    raiseForDatabase(errors::kRowNotFound,
                     "Key value for this row was changed or deleted at the data store. The local "
                     "row is now deleted.");
}

void notOneTable() {
    raiseForDatabase(errors::kUnspecified,
                     "Insufficient base table information for updating or refreshing: the changed "
                     "fields do not belong to a table.");
}

}  // namespace kap::ado::fail
