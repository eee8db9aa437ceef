#pragma once

#include <string>

#include <kaputil/automation/variant.hpp>

// Where a recordset that was saved comes from.
namespace kap::ado {

// Whether a client names the provider of saved recordsets as the connection.
[[nodiscard]] bool isPersistProvider(const Variant& connection);

// Whether a source is a stream, or the name of a file that is there.
[[nodiscard]] bool isStream(const Variant& source);
[[nodiscard]] bool isFile(const Variant& source);

// The bytes that a source holds. Raises 3002 when it cannot be read.
[[nodiscard]] std::string savedContent(const Variant& source);

}  // namespace kap::ado
