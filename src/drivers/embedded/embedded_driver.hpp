#pragma once

#include "data/driver.hpp"

namespace kap::ado::embedded {

inline constexpr const char* kProviderName = "KapLocal";

// The driver of databases that live in one file (see Options for what a connection string says).
class EmbeddedDriver : public Driver {
public:
    [[nodiscard]] std::unique_ptr<Session> open(const ConnectionString& keys,
                                                std::chrono::seconds timeout) const override;
};

}  // namespace kap::ado::embedded
