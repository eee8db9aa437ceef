#pragma once

#include <string>

#include <kaputil/automation/string.hpp>

// The errors that the data-access objects raise of their own, with the texts that clients know.
namespace kap::ado::fail {

[[noreturn]] void invalidArgument();
[[noreturn]] void invalidArgument(String description);
[[noreturn]] void noCurrentRecord();
[[noreturn]] void deletedRow();
[[noreturn]] void illegalOperation();
[[noreturn]] void itemNotFound();
// A second object of a name that is taken.
[[noreturn]] void objectInCollection();
// A field whose recordset has been closed since.
[[noreturn]] void objectNotValid();
[[noreturn]] void noTransaction();
[[noreturn]] void objectClosed();
[[noreturn]] void objectOpen();
[[noreturn]] void invalidConnection();
[[noreturn]] void connectionOfCommand();
[[noreturn]] void inTransaction();
[[noreturn]] void noCommandText();
[[noreturn]] void notUpdatable();
[[noreturn]] void notAvailable(String description);
// Files that streams and recordsets are loaded from and saved to.
[[noreturn]] void openingFile(const String& file, const String& why);
[[noreturn]] void readingFile(const std::string& why);
[[noreturn]] void writingFile(const String& file, const String& why);
[[noreturn]] void binaryForm();
[[noreturn]] void badBookmark();
// A sink of events did not allow what a recordset or a connection was to do.
[[noreturn]] void cancelled();
[[noreturn]] void operationCancelled();
// What runs in the background has not ended yet.
[[noreturn]] void stillExecuting();
[[noreturn]] void stillConnecting();
[[noreturn]] void cannotFetchBackward();
[[noreturn]] void incompleteParameter();
[[noreturn]] void wrongType(const String& field);
[[noreturn]] void doesNotFit(const String& field);
[[noreturn]] void concurrency();
[[noreturn]] void rowGone();
[[noreturn]] void notOneTable();

}  // namespace kap::ado::fail
