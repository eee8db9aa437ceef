#pragma once

#include <string>

#include <nlohmann/json.hpp>

#include <kaputil/platform/registry.hpp>

// Registry values as people type and read them.
namespace kap::cli {

// "REG_SZ", or the number of a type that has no name.
[[nodiscard]] std::string registryTypeText(std::uint32_t type);

// Texts as they are, numbers in decimal, everything else as bytes in hexadecimal ("01 0a ff").
[[nodiscard]] std::string registryDataText(const platform::registry::Value& value);

// The same for programs: a text, a number, a list of bytes.
[[nodiscard]] nlohmann::ordered_json registryDataJson(const platform::registry::Value& value);

// The value of a type by its name or number: a text; a number in decimal or, behind 0x, in
// hexadecimal; bytes in hexadecimal. Throws UsageError for data that is none.
[[nodiscard]] platform::registry::Value registryValue(const std::string& type,
                                                      const std::string& data);

}  // namespace kap::cli
