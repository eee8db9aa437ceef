#pragma once

#include <cstdint>
#include <exception>
#include <string>

#include <kaputil/automation/string.hpp>
#include <kaputil/base/export.hpp>

namespace kap {

// The numbers of the automation runtime that members raise. Clients compare them, so they are part
// of the behaviour.
namespace errors {
inline constexpr std::int32_t kInvalidArgument = 5;
inline constexpr std::int32_t kOverflow = 6;
inline constexpr std::int32_t kSubscriptOutOfRange = 9;
inline constexpr std::int32_t kDivisionByZero = 11;
inline constexpr std::int32_t kTypeMismatch = 13;
inline constexpr std::int32_t kOutOfStack = 28;
// Of files: what the file-system object raises.
inline constexpr std::int32_t kBadFileName = 52;
inline constexpr std::int32_t kFileNotFound = 53;
inline constexpr std::int32_t kBadFileMode = 54;
inline constexpr std::int32_t kDeviceError = 57;
inline constexpr std::int32_t kFileAlreadyExists = 58;
inline constexpr std::int32_t kDiskFull = 61;
inline constexpr std::int32_t kInputPastEnd = 62;
inline constexpr std::int32_t kPermissionDenied = 70;
inline constexpr std::int32_t kPathNotFound = 76;
inline constexpr std::int32_t kObjectNotSet = 91;
inline constexpr std::int32_t kInvalidUseOfNull = 94;
inline constexpr std::int32_t kObjectRequired = 424;
inline constexpr std::int32_t kCannotCreateObject = 429;
inline constexpr std::int32_t kMemberNotFound = 438;
inline constexpr std::int32_t kNamedArgumentNotFound = 448;
inline constexpr std::int32_t kArgumentNotOptional = 449;
inline constexpr std::int32_t kWrongNumberOfArguments = 450;
inline constexpr std::int32_t kDuplicateKey = 457;
// The first number that automation leaves to objects; the configuration classes raise it.
inline constexpr std::int32_t kObjectError = -2147221503;
}  // namespace errors

// A run-time error of the automation world: what a member raises and what a client catches.
//
// `number` is the code that clients compare (see `errors`, and the data-access codes in
// <kaputil/data/error_numbers.hpp>), `source` names the component that raised it and may be empty,
// `description` is the sentence for people.
class KAPUTIL_EXPORT AutomationError : public std::exception {
public:
    // An error with the runtime's own text for `number`.
    explicit AutomationError(std::int32_t number);
    AutomationError(std::int32_t number, String description, String source = {});

    [[nodiscard]] std::int32_t number() const noexcept { return number_; }
    [[nodiscard]] const String& source() const noexcept { return source_; }
    [[nodiscard]] const String& description() const noexcept { return description_; }
    // The description as UTF-8, with what UTF-8 cannot carry shown as U+FFFD.
    [[nodiscard]] const char* what() const noexcept override { return what_.c_str(); }

private:
    std::int32_t number_;
    String source_;
    String description_;
    std::string what_;
};

}  // namespace kap
