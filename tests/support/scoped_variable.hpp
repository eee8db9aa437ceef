#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace kap::test {

// Sets a variable of the environment, or takes it away, for as long as it lives.
class ScopedVariable {
public:
    ScopedVariable(const std::string& name, const std::optional<std::string>& value) : name_(name) {
        if (const char* before = std::getenv(name.c_str())) {
            before_ = before;
        }
        put(value);
    }
    ~ScopedVariable() { put(before_); }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

private:
    void put(const std::optional<std::string>& value) const {
        if (value) {
            setenv(name_.c_str(), value->c_str(), 1);
        } else {
            unsetenv(name_.c_str());
        }
    }

    std::string name_;
    std::optional<std::string> before_;
};

}  // namespace kap::test
