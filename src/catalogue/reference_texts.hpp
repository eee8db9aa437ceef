#pragma once

#include <span>
#include <string_view>

// The files of src/catalogue/reference, which the build puts into the library.
namespace kap {

struct ReferenceText {
    std::string_view className;
    std::string_view text;
};

// By class name.
[[nodiscard]] std::span<const ReferenceText> referenceTexts();

}  // namespace kap
