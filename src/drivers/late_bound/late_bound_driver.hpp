#pragma once

#include <chrono>
#include <functional>

#include <kaputil/automation/object.hpp>

#include "data/driver.hpp"

namespace kap::ado::late_bound {

// Opens connection strings by the connection objects of somebody else.
class LateBoundDriver final : public Driver {
public:
    // `make` gives a new connection object that is not open; null when there is none to be had.
    explicit LateBoundDriver(std::function<Ref<Object>()> make) : make_(std::move(make)) {}

    // Raises 3706 when there is no connection object, and what opening it raises.
    [[nodiscard]] std::unique_ptr<Session> open(const ConnectionString& keys,
                                                std::chrono::seconds timeout) const override;

private:
    std::function<Ref<Object>()> make_;
};

}  // namespace kap::ado::late_bound
