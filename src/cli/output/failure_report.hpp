#pragma once

#include <cstdint>
#include <iosfwd>
#include <vector>

#include <kaputil/ado/connection.hpp>
#include <kaputil/automation/error.hpp>

namespace kap::cli {

// One error as it is told to people and programs.
struct Failure {
    std::int32_t number = 0;  // the code that clients compare
    std::int32_t native = 0;  // the database's own number, 0 when it comes from elsewhere
    std::int32_t line = 0;    // of the script, from 1; 0 when the error has no place in it
    String description;

    // What a script prints, and notes of the database: nothing has failed.
    [[nodiscard]] bool isMessage() const { return number == 0; }
};

// What the connection reported, in its order. Lines count from `firstLine`, the line on which the
// text that was run begins.
[[nodiscard]] std::vector<Failure> messagesOf(const ado::Connection& connection,
                                              std::int32_t firstLine = 1);

// The same about `raised`, or `raised` itself when the connection reported nothing.
[[nodiscard]] std::vector<Failure> failuresOf(const ado::Connection& connection,
                                              const AutomationError& raised,
                                              std::int32_t firstLine = 1);

// "error 208, line 3: Invalid object name 'X'.", or with `json` one object a line:
// {"error":{"number":-2147217865,"native":208,"line":3,"description":"..."}}
// A message is its text alone, or {"message":"..."}.
void printFailure(std::ostream& out, const Failure& failure, bool json);

// All of them on the standard error, behind what the standard output holds so far.
void reportFailures(const std::vector<Failure>& failures, bool json);

}  // namespace kap::cli
