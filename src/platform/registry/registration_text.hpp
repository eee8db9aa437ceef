#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

#include "platform/registry/tree.hpp"

// The text form of a registry that registry editors import and export.
namespace kap::platform::registry {

// A text that is none, and where.
class MalformedText : public std::runtime_error {
public:
    MalformedText(std::size_t line, const std::string& reason)
        : std::runtime_error(reason), line_(line) {}
    [[nodiscard]] std::size_t line() const noexcept { return line_; }

private:
    std::size_t line_;
};

// Does to the tree what the text says. Throws MalformedText; the tree is then half changed.
void applyText(std::string_view bytes, Tree& tree);

// The tree, or of it the key `below` and what is below that, as such a text; lines end in LF.
[[nodiscard]] std::u16string textOf(const Tree& tree, std::u16string_view below = {});

}  // namespace kap::platform::registry
