#include <kaputil/automation/error.hpp>

#include <utility>

#include "base/unicode.hpp"

namespace kap {
namespace {

const char16_t* runtimeText(std::int32_t number) {
    switch (number) {
        case errors::kInvalidArgument:
            return u"Invalid procedure call or argument";
        case errors::kOverflow:
            return u"Overflow";
        case errors::kSubscriptOutOfRange:
            return u"Subscript out of range";
        case errors::kDivisionByZero:
            return u"Division by zero";
        case errors::kTypeMismatch:
            return u"Type mismatch";
        case errors::kOutOfStack:
            return u"Out of stack space";
        case errors::kBadFileName:
            return u"Bad file name or number";
        case errors::kFileNotFound:
            return u"File not found";
        case errors::kBadFileMode:
            return u"Bad file mode";
        case errors::kDeviceError:
            return u"Device I/O error";
        case errors::kFileAlreadyExists:
            return u"File already exists";
        case errors::kDiskFull:
            return u"Disk full";
        case errors::kInputPastEnd:
            return u"Input past end of file";
        case errors::kPermissionDenied:
            return u"Permission denied";
        case errors::kPathNotFound:
            return u"Path not found";
        case errors::kObjectNotSet:
            return u"Object variable or With block variable not set";
        case errors::kInvalidUseOfNull:
            return u"Invalid use of Null";
        case errors::kObjectRequired:
            return u"Object required";
        case errors::kCannotCreateObject:
            return u"ActiveX component can't create object";
        case errors::kMemberNotFound:
            return u"Object doesn't support this property or method";
        case errors::kNamedArgumentNotFound:
            return u"Named argument not found";
        case errors::kArgumentNotOptional:
            return u"Argument not optional";
        case errors::kWrongNumberOfArguments:
            return u"Wrong number of arguments or invalid property assignment";
        case errors::kDuplicateKey:
            return u"This key is already associated with an element of this collection";
        default:
            return u"Application-defined or object-defined error";
    }
}

}  // namespace

AutomationError::AutomationError(std::int32_t number)
    : AutomationError(number, runtimeText(number)) {}

AutomationError::AutomationError(std::int32_t number, String description, String source)
    : number_(number),
      source_(std::move(source)),
      description_(std::move(description)),
      what_(unicode::displayUtf8(description_)) {}

}  // namespace kap
