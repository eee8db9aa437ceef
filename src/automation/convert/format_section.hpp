#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kap::convert {

// One step of a format: a literal text, or a format character's run.
struct FormatStep {
    std::u16string text;
    bool literal = false;
};

// What a format writes: the first character that means something tells.
enum class FormatKind : unsigned char { Literal, Date, Number, Text };

// The part of a format between two semicolons. All parts are of one kind.
struct FormatSection {
    FormatKind kind = FormatKind::Literal;
    std::vector<FormatStep> steps;
};

// Takes a format apart at the semicolons outside quotes, and each section into steps. Of the parts
// of a date each step is one ("yyyy", "AM/PM"); of the others, one character.
[[nodiscard]] std::vector<FormatSection> formatSections(std::u16string_view pattern);

}  // namespace kap::convert
