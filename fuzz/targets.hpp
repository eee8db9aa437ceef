#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

// What is fuzzed: each target takes any text, lone surrogates included, and checks what must hold
// for every one. A check that fails ends the program.
namespace kap::fuzz {

struct Target {
    std::string_view name;
    void (*run)(std::u16string_view text);
    int slowness = 1;  // how many times as long as a text of the quick ones takes
};

[[nodiscard]] std::span<const Target> targets();

// Longer texts are cut: what they could show, shorter ones do.
inline constexpr std::size_t kMaxUnits = 2048;

// Bytes as the code units of a text, low byte first, at most kMaxUnits of them.
[[nodiscard]] std::u16string textOf(std::span<const unsigned char> bytes);

}  // namespace kap::fuzz
