#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/text_encoding.hpp"

namespace kap::platform {

// The text of a profile file, line by line, so that what is not touched comes out as it went in.
class ProfileText {
public:
    explicit ProfileText(std::string_view bytes);

    // The value of a key in the first section of this name.
    [[nodiscard]] std::optional<std::u16string> value(std::u16string_view section,
                                                      std::u16string_view key) const;

    // Puts a value. False, and nothing changed, when a name or the value cannot stand in such a
    // file.
    [[nodiscard]] bool put(std::u16string_view section, std::u16string_view key,
                           std::u16string_view value);

    // The file; nullopt when its encoding lacks a character that was put, or when the file would be
    // taken for one in another encoding.
    [[nodiscard]] std::optional<std::string> bytes() const;

private:
    // The lines of a section behind its heading.
    struct Extent {
        std::size_t first;
        std::size_t end;
    };
    [[nodiscard]] std::optional<Extent> find(std::u16string_view section) const;
    [[nodiscard]] std::optional<std::size_t> findKey(Extent section, std::u16string_view key) const;
    void append(Extent section, std::u16string line);
    void appendSection(std::u16string_view section, std::u16string_view line);
    void endLastLine();

    TextEncoding encoding_;
    std::u16string lineEnd_;
    std::vector<std::u16string> lines_;  // each with its line end; the last may have none
};

}  // namespace kap::platform
