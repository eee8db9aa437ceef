#include "platform/win32/wide.hpp"

namespace kap::platform {

std::string ansi(std::u16string_view text) {
    if (text.empty()) {
        return {};
    }
    const auto* units = reinterpret_cast<const wchar_t*>(text.data());
    const int length = static_cast<int>(text.size());
    std::string bytes(static_cast<std::size_t>(WideCharToMultiByte(CP_ACP, 0, units, length,
                                                                   nullptr, 0, nullptr, nullptr)),
                      '\0');
    WideCharToMultiByte(CP_ACP, 0, units, length, bytes.data(), static_cast<int>(bytes.size()),
                        nullptr, nullptr);
    return bytes;
}

String fromAnsi(std::string_view text) {
    if (text.empty()) {
        return {};
    }
    const int length = static_cast<int>(text.size());
    std::u16string units(
        static_cast<std::size_t>(MultiByteToWideChar(CP_ACP, 0, text.data(), length, nullptr, 0)),
        u'\0');
    MultiByteToWideChar(CP_ACP, 0, text.data(), length, reinterpret_cast<wchar_t*>(units.data()),
                        static_cast<int>(units.size()));
    return units;
}

}  // namespace kap::platform
