#pragma once

#include <string>
#include <vector>

#include <kaputil/automation/variant.hpp>

// The words of `kaputil call`, read into calls.
namespace kap::cli {

struct GivenArgument {
    std::string name;  // empty: by position
    Variant value;
};

// One call: the names that lead to the member, "CProprieta.Leggi" cut at its points, and what it is
// called with.
struct GivenCall {
    std::vector<std::string> path;
    std::vector<GivenArgument> arguments;
};

// Reads MEMBER [ARG...] [+ MEMBER [ARG...]]... Arguments convert under the thread's locale.
//
// An argument is a literal (see readLiteral); "type:text", the text converted to that type ("date:
// 25/12/03", "string:12"); NAME:= before either, a named argument; or else a text. Throws
// UsageError for words that make no calls.
[[nodiscard]] std::vector<GivenCall> readCalls(const std::vector<std::string>& words);

}  // namespace kap::cli
