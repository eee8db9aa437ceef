#include "cli/commands/registry/registry_value_text.hpp"

#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <string_view>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "base/hexadecimal.hpp"
#include "cli/names.hpp"
#include "cli/output/usage_error.hpp"

namespace kap::cli {
namespace {

namespace registry = platform::registry;

constexpr std::uint32_t kExpandedText = 2;
constexpr std::array<std::pair<std::uint32_t, std::string_view>, 7> kRegistryTypes = {{
    {0, "REG_NONE"},
    {registry::kText, "REG_SZ"},
    {kExpandedText, "REG_EXPAND_SZ"},
    {3, "REG_BINARY"},
    {registry::kNumber, "REG_DWORD"},
    {7, "REG_MULTI_SZ"},
    {11, "REG_QWORD"},
}};

bool isText(std::uint32_t type) {
    return type == registry::kText || type == kExpandedText;
}

bool isWholeNumber(const registry::Value& value) {
    return value.type == registry::kNumber && value.data.size() == sizeof(std::int32_t);
}

std::uint32_t typeNumber(const std::string& type) {
    for (const auto& [number, name] : kRegistryTypes) {
        if (equalsIgnoringCase(name, type)) {
            return number;
        }
    }
    const auto number = plain::readWhole(type);
    if (!number || *number < 0 || *number > std::numeric_limits<std::uint32_t>::max()) {
        throw UsageError("there is no type " + type +
                         "; name REG_SZ, REG_EXPAND_SZ, REG_DWORD, REG_BINARY or a number");
    }
    return static_cast<std::uint32_t>(*number);
}

std::optional<std::int64_t> hexNumber(std::string_view digits) {
    constexpr std::size_t kMost = 8;
    std::int64_t number = 0;
    for (const char one : digits) {
        const int digit = hex::valueOf(static_cast<unsigned char>(one));
        if (digit < 0) {
            return std::nullopt;
        }
        number = number * 16 + digit;
    }
    return digits.empty() || digits.size() > kMost ? std::nullopt : std::optional(number);
}

registry::Value numberOf(const std::string& data) {
    const std::optional<std::int64_t> number = data.starts_with("0x")
                                                   ? hexNumber(std::string_view(data).substr(2))
                                                   : plain::readWhole(data);
    if (!number || *number < std::numeric_limits<std::int32_t>::min() ||
        *number > std::numeric_limits<std::uint32_t>::max()) {
        throw UsageError("\"" + data + "\" is no number of 32 bits");
    }
    return registry::numberValue(static_cast<std::int32_t>(*number));
}

// Pairs of digits; blanks, commas and colons between them do not matter.
registry::Value bytesOf(std::uint32_t type, const std::string& data) {
    std::string digits = data;
    std::erase_if(digits, [](char one) { return one == ' ' || one == ',' || one == ':'; });
    registry::Value value{type, {}};
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        const auto byte =
            i + 1 < digits.size() ? hexNumber(std::string_view(digits).substr(i, 2)) : std::nullopt;
        if (!byte) {
            throw UsageError("\"" + data + "\" is no row of bytes; write them as 01 0a ff");
        }
        value.data.push_back(static_cast<std::uint8_t>(*byte));
    }
    return value;
}

}  // namespace

std::string registryTypeText(std::uint32_t type) {
    const auto* found =
        std::ranges::find(kRegistryTypes, type, &std::pair<std::uint32_t, std::string_view>::first);
    return found == kRegistryTypes.end() ? plain::text(type) : std::string(found->second);
}

std::string registryDataText(const registry::Value& value) {
    if (isText(value.type)) {
        return registry::textOf(value).utf8();
    }
    if (isWholeNumber(value)) {
        return plain::text(static_cast<std::uint32_t>(registry::numberOf(value)));
    }
    std::string text;
    for (const std::uint8_t byte : value.data) {
        text += text.empty() ? "" : " ";
        text += hex::ofNumber(byte, hex::Case::Lower, 2);
    }
    return text;
}

nlohmann::ordered_json registryDataJson(const registry::Value& value) {
    if (isText(value.type)) {
        return registryDataText(value);
    }
    if (isWholeNumber(value)) {
        return static_cast<std::uint32_t>(registry::numberOf(value));
    }
    return value.data;
}

registry::Value registryValue(const std::string& type, const std::string& data) {
    const std::uint32_t number = typeNumber(type);
    if (isText(number)) {
        registry::Value value = registry::textValue(String(data));
        value.type = number;
        return value;
    }
    return number == registry::kNumber ? numberOf(data) : bytesOf(number, data);
}

}  // namespace kap::cli
