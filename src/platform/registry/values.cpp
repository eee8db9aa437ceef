#include <cstddef>

#include <kaputil/platform/registry.hpp>

#include "platform/text_encoding.hpp"

namespace kap::platform::registry {

Value textValue(std::u16string_view text) {
    const std::string bytes = utf16Bytes(std::u16string(text) + u'\0');
    return {kText, {bytes.begin(), bytes.end()}};
}

Value numberValue(std::int32_t number) {
    const auto bits = static_cast<std::uint32_t>(number);
    Value value{kNumber, {}};
    for (int shift = 0; shift < 32; shift += 8) {
        value.data.push_back(static_cast<std::uint8_t>(bits >> shift));
    }
    return value;
}

String textOf(const Value& value) {
    const std::string bytes(value.data.begin(), value.data.end());
    std::u16string text = fromUtf16Bytes(bytes);
    if (!text.empty()) {
        text.pop_back();
    }
    return text;
}

std::int32_t numberOf(const Value& value) {
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < value.data.size() && i < sizeof bits; ++i) {
        bits |= static_cast<std::uint32_t>(value.data[i]) << (8 * i);
    }
    return static_cast<std::int32_t>(bits);
}

std::string exportForEditors(std::u16string_view key) {
    const String text = exportText(key);
    std::u16string lines;
    for (const char16_t unit : text.view()) {
        lines += unit == u'\n' ? u"\r\n" : std::u16string(1, unit);
    }
    return *encodeText(TextEncoding::Utf16Marked, lines);
}

}  // namespace kap::platform::registry
