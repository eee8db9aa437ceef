#pragma once

#include <windows.h>

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>

#include <kaputil/automation/string.hpp>

// Texts and errors as the system takes them.
namespace kap::platform {

static_assert(sizeof(wchar_t) == sizeof(char16_t), "the system's texts are UTF-16");

// A text that ends with NUL, for as long as it lives.
[[nodiscard]] inline const wchar_t* wide(const std::u16string& text) noexcept {
    return reinterpret_cast<const wchar_t*>(text.c_str());
}
[[nodiscard]] inline const wchar_t* wide(const String& text) noexcept {
    return wide(text.units());
}

// A descriptor of this library as the system's handle, which has no more than 32 bits.
[[nodiscard]] inline HANDLE handleOf(int descriptor) noexcept {
    return LongToHandle(descriptor);
}

[[nodiscard]] inline std::u16string_view narrowView(const wchar_t* text,
                                                    std::size_t length) noexcept {
    return {reinterpret_cast<const char16_t*>(text), length};
}
[[nodiscard]] inline std::u16string_view narrowView(std::wstring_view text) noexcept {
    return narrowView(text.data(), text.size());
}

// The text in the system's own 8-bit code page, with '?' for what that lacks, and back.
[[nodiscard]] std::string ansi(std::u16string_view text);
[[nodiscard]] String fromAnsi(std::string_view text);

[[nodiscard]] inline std::error_code systemError(DWORD code) noexcept {
    return {static_cast<int>(code), std::system_category()};
}
// What the system's last call on this thread failed with.
[[nodiscard]] inline std::error_code lastError() noexcept {
    return systemError(GetLastError());
}

struct HandleCloser {
    void operator()(void* handle) const noexcept { CloseHandle(handle); }
};
// A handle of the system's, closed at its end; null when there is none.
using Handle = std::unique_ptr<void, HandleCloser>;

}  // namespace kap::platform
