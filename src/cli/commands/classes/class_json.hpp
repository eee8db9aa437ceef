#pragma once

#include <nlohmann/json.hpp>

#include "cli/commands/classes/class_lookup.hpp"
#include "cli/output/language.hpp"

// The catalogue for programs.
namespace kap::cli {

// {"library":{...},"classes":[...],"enumerations":[...],"platform":[...]}; classes with
// the number of their members.
[[nodiscard]] nlohmann::ordered_json catalogueJson(Language language);

// A class with "members"; a member with "class"; an enumeration with "values". Classes and members
// have their "documentation".
[[nodiscard]] nlohmann::ordered_json classJson(const ShownClass& shown, Language language);
[[nodiscard]] nlohmann::ordered_json memberJson(const ShownClass& shown,
                                                const MemberDescription& member, Language language);
[[nodiscard]] nlohmann::ordered_json enumerationJson(const EnumerationDescription& enumeration);

}  // namespace kap::cli
