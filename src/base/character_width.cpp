#include "base/character_width.hpp"

#include <utf8proc.h>

namespace kap::unicode {

MeasuredCharacter firstCharacter(std::string_view utf8) noexcept {
    constexpr unsigned char kFirstBeyondAscii = 0x80;
    const auto first = static_cast<unsigned char>(utf8.front());
    if (first < kFirstBeyondAscii) {
        return {1, 1};
    }
    utf8proc_int32_t character = -1;
    const utf8proc_ssize_t bytes =
        utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(utf8.data()),
                         static_cast<utf8proc_ssize_t>(utf8.size()), &character);
    if (bytes <= 0) {
        return {1, 1};
    }
    return {static_cast<std::size_t>(bytes),
            static_cast<std::size_t>(utf8proc_charwidth(character))};
}

}  // namespace kap::unicode
