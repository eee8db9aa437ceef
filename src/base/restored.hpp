#pragma once

#include <type_traits>
#include <utility>

namespace kap {

// Gives a variable its value back at the end of a scope, and another one until then when it is
// given one.
template <class Value>
class Restored {
public:
    explicit Restored(Value& variable) : variable_(variable), before_(variable) {}
    Restored(Value& variable, std::type_identity_t<Value> value)
        : variable_(variable), before_(std::exchange(variable, std::move(value))) {}
    ~Restored() { variable_ = std::move(before_); }
    Restored(const Restored&) = delete;
    Restored& operator=(const Restored&) = delete;

private:
    Value& variable_;
    Value before_;
};

}  // namespace kap
