#pragma once

#include <string>

#include "data/driver.hpp"

namespace kap::ado {

// The driver that a connection string asks for; raises kProviderNotFound when there is none.
[[nodiscard]] const Driver& driverFor(const ConnectionString& keys);

// Offers a driver under a provider's name for as long as the object lives, on every thread; the
// embedded database's name cannot be taken. Raises 457 for a name that is taken.
class DriverRegistration {
public:
    DriverRegistration(std::string provider, const Driver& driver);
    ~DriverRegistration();
    DriverRegistration(const DriverRegistration&) = delete;
    DriverRegistration& operator=(const DriverRegistration&) = delete;

private:
    std::string provider_;
};

// The driver for every connection string that no other one answers for; null takes it away again.
// For a host with data-access objects of its own.
void setDriverForOthers(const Driver* driver);

}  // namespace kap::ado
