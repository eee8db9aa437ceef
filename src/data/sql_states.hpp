#pragma once

#include <cstdint>
#include <string_view>

namespace kap::ado {

// The data-access code of a SQLSTATE:
//
//     42S02 42P01 3F000     an object that does not exist        kUnknownObject
//     23...  44000          a constraint                         kIntegrity
//     40001 40P01           given up in favour of another user   kConcurrency
//     HYT.. 57014 S1T00     out of time                          kTimeout
//     28...                 login refused                        kLogin
//     08... 57P.. 01002     no connection, or no longer          kUnspecified
//     22001 22003 22008     a value that does not fit            kTruncated
//     22007 22018 22P02     a value that does not convert        kDataTypeMismatch
//     HYC00 IM001           what the server or driver cannot do  kFeatureNotAvailable
//     other HY... IM...     the driver's own failures            kUnspecified
//     42... and others      the text of the command              kCommandText
[[nodiscard]] std::int32_t numberOfState(std::string_view state);

}  // namespace kap::ado
