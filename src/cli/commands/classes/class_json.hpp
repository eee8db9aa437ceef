#pragma once

#include <nlohmann/json.hpp>

#include "cli/commands/classes/class_lookup.hpp"

// The catalogue for programs.
namespace kap::cli {

// {"library":{...},"classes":[...],"enumerations":[...],"platform":[...]}; classes with
// the number of their members.
[[nodiscard]] nlohmann::ordered_json catalogueJson();

// A class with "members"; a member with "class"; an enumeration with "values".
[[nodiscard]] nlohmann::ordered_json classJson(const ShownClass& shown);
[[nodiscard]] nlohmann::ordered_json memberJson(const ShownClass& shown,
                                                const MemberDescription& member);
[[nodiscard]] nlohmann::ordered_json enumerationJson(const EnumerationDescription& enumeration);

}  // namespace kap::cli
