#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include <kaputil/automation/error.hpp>
#include <kaputil/automation/object.hpp>
#include <kaputil/automation/string.hpp>

#include "data/driver.hpp"

// What another maker's connection object is asked and told about itself, by the names of its
// members. What it raises passes through.
namespace kap::ado::late_bound {

// Whether an object can be worked with as a connection: it runs scripts and has transactions.
[[nodiscard]] bool isConnection(const Object& object);

[[nodiscard]] bool isOpen(const Ref<Object>& connection);
[[nodiscard]] String connectionStringOf(const Ref<Object>& connection);
void setConnectionString(const Ref<Object>& connection, const String& value);
void open(const Ref<Object>& connection, const String& connectionString, const String& userId,
          const String& password, std::int32_t options);
void close(const Ref<Object>& connection);

// Seconds that its scripts may run, 0: no limit; nullopt when it has no such property.
[[nodiscard]] std::optional<std::int32_t> commandTimeoutOf(const Ref<Object>& connection);
void setCommandTimeout(const Ref<Object>& connection, std::int32_t seconds);

// What its Errors hold after it has raised `raised`: that alone when it keeps none or they cannot
// be read.
[[nodiscard]] std::vector<ServerMessage> messagesOf(const Ref<Object>& connection,
                                                    const AutomationError& raised);

}  // namespace kap::ado::late_bound
