#pragma once

#include <initializer_list>
#include <stdexcept>
#include <string>
#include <string_view>

#include "tsql/messages.hpp"

namespace kap::tsql {

// An error as the database server words it: what clients compare numbers and texts with.
//
// The message is UTF-8. `what()` is the message. `line` counts from 1 within the text that was
// sent, 0 when the error has no place in a text.
class ServerError : public std::runtime_error {
public:
    // One of the server's own messages.
    ServerError(Message message, std::initializer_list<std::string_view> arguments = {},
                int line = 0);
    // One that a client raises, or that another server has reported.
    ServerError(int number, const std::string& message, int line = 0, int severity = 16,
                int state = 1);

    [[nodiscard]] int number() const noexcept { return number_; }
    [[nodiscard]] int severity() const noexcept { return severity_; }
    [[nodiscard]] int state() const noexcept { return state_; }
    [[nodiscard]] int line() const noexcept { return line_; }
    [[nodiscard]] std::string message() const { return what(); }

    // The same error with another state than its message usually has.
    [[nodiscard]] ServerError withState(int state) const {
        return {number_, message(), line_, severity_, state};
    }

    // The same error at a line, unless it has one already.
    [[nodiscard]] ServerError at(int line) const {
        return {number_, message(), line_ == 0 ? line : line_, severity_, state_};
    }

private:
    int number_;
    int severity_;
    int state_;
    int line_;
};

// Error 102: the text cannot go on with `near`.
[[nodiscard]] ServerError syntaxError(const std::string& near, int line);

// Error 156: the text cannot go on with this keyword.
[[nodiscard]] ServerError keywordError(const std::string& keyword, int line);

// Error 40517: the construct is understood and deliberately refused.
[[nodiscard]] ServerError unsupported(const std::string& construct, int line);

// Error 191: brackets, subqueries or operators are nested beyond what is accepted.
[[nodiscard]] ServerError nestedTooDeeply(int line);

// Error 8631: something is nested deeper than the stack of the present thread can follow.
[[nodiscard]] ServerError outOfStack(int line);

}  // namespace kap::tsql
