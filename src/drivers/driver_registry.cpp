#include "drivers/driver_registry.hpp"

#include <atomic>
#include <map>
#include <mutex>
#include <string>
#include <utility>

#include <kaputil/data/error_numbers.hpp>

#include "base/unicode.hpp"
#include "drivers/embedded/embedded_driver.hpp"
#include "drivers/server_driver.hpp"

namespace kap::ado {
namespace {

// The drivers by upper-cased provider name. Connections are opened on every thread.
class Registry {
public:
    static Registry& get() {
        static Registry registry;
        return registry;
    }

    const Driver* find(const std::string& provider) {
        const std::lock_guard lock(guard_);
        const auto found = drivers_.find(key(provider));
        return found == drivers_.end() ? nullptr : found->second;
    }

    void add(const std::string& provider, const Driver& driver) {
        const std::lock_guard lock(guard_);
        if (!drivers_.emplace(key(provider), &driver).second) {
            throw AutomationError(kap::errors::kDuplicateKey);
        }
    }

    void remove(const std::string& provider) {
        const std::lock_guard lock(guard_);
        drivers_.erase(key(provider));
    }

private:
    Registry() { drivers_.emplace(key(std::string(embedded::kProviderName)), &embedded_); }

    static std::u16string key(const std::string& provider) {
        return unicode::upper(String(provider).view());
    }

    std::mutex guard_;
    embedded::EmbeddedDriver embedded_;
    std::map<std::u16string, const Driver*> drivers_;
};

std::atomic<const Driver*> driverForOthers{nullptr};

[[noreturn]] void providerNotFound(const std::string& description) {
    throw AutomationError(errors::kProviderNotFound, description, u"ADODB");
}

}  // namespace

void setDriverForOthers(const Driver* driver) {
    driverForOthers = driver;
}

const Driver& driverFor(const ConnectionString& keys) {
    auto provider = keys.find("Provider");
    if (!provider) {
        provider = keys.find("Driver");  // some are known by that name only
    }
    if (provider) {
        if (const Driver* driver = Registry::get().find(*provider)) {
            return *driver;
        }
    }
    if (const Driver* servers = serverDriver(keys)) {
        return *servers;
    }
    if (const Driver* others = driverForOthers) {
        return *others;
    }
    if (!provider) {
        providerNotFound(
            "The connection string names no provider. Begin it with "
            "Provider=KapLocal;Data Source=<file>, or for a database server with "
            "Provider=SQLOLEDB;Data Source=<server>, Driver={<ODBC driver>} or DSN=<name>.");
    }
    providerNotFound("Provider '" + *provider +
                     "' cannot be found. There are KapLocal (a database in one file) and the "
                     "providers of database servers: SQLOLEDB, MSOLEDBSQL, SQLNCLI, MSDASQL.");
}

DriverRegistration::DriverRegistration(std::string provider, const Driver& driver)
    : provider_(std::move(provider)) {
    Registry::get().add(provider_, driver);
}

DriverRegistration::~DriverRegistration() {
    Registry::get().remove(provider_);
}

}  // namespace kap::ado
