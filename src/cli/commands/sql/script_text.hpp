#pragma once

#include <iosfwd>
#include <stdexcept>
#include <string>

namespace kap::cli {

// A script that cannot be used as it is; `what()` says which and why.
class ScriptError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The text of a script file, or of a stream called `name` in messages: UTF-8, without the byte
// order mark it may begin with. Throws ScriptError when it cannot be read or is not UTF-8.
[[nodiscard]] std::string readScript(const std::string& path);
[[nodiscard]] std::string readScript(std::istream& in, const std::string& name);

}  // namespace kap::cli
