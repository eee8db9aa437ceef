#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kap::engine {

// A value for a place in a message.
struct MessageArgument {
    std::string text;  // as it is written
    bool number = false;
    bool null = false;
};

// The text of RAISERROR: each %s, %d, %i, %u, %o, %x and %X takes the next argument, with the flags
// - 0 + #, a width and a precision as in C; %% is a percent sign. A missing argument is "(null)".
// Beyond 2,047 characters the text ends in three points. Errors 2786 for an argument of another
// kind and 2787 for a place that is not one of these.
[[nodiscard]] std::string messageText(std::string_view pattern,
                                      const std::vector<MessageArgument>& arguments);

}  // namespace kap::engine
