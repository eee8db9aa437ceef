#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <kaputil/automation/class_description.hpp>

// A member in words, as an object browser writes it.
namespace kap::cli {

// "Function", "Sub", "Property Get/Let", "Field".
[[nodiscard]] std::string kindText(const MemberDescription& member);

// The ways a property is accessed: "get", "let", "set".
[[nodiscard]] std::vector<std::string> accessOf(const MemberDescription& member);

// "Optional ByRef sDataType As String = \"Double\"".
[[nodiscard]] std::string parameterText(const ParameterDescription& parameter);

// " As Variant"; empty when the member has no result.
[[nodiscard]] std::string resultText(const MemberDescription& member);

// "0x6003001a".
[[nodiscard]] std::string hexText(std::int32_t identifier);

[[nodiscard]] std::string instancingText(Instancing instancing);

}  // namespace kap::cli
