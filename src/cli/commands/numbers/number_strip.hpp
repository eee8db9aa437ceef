#pragma once

#include <string>
#include <vector>

#include <kaputil/numbering/number_register.hpp>

#include "cli/commands/numbers/register_words.hpp"

namespace kap::cli {

// A drawing (SVG) of a year's numbers, a hundred cells a row, each in the colour of its state. One
// cell is one number as long as there are few thousand; beyond that it stands for several, and
// shows the state that matters most among them. Each stretch of one colour tells its numbers when
// pointed at. Empty when there are no numbers from 1 up.
[[nodiscard]] std::string numberStrip(const std::vector<numbering::RegisterLine>& lines,
                                      Language language);

// The numbers that a cell of such a drawing stands for.
[[nodiscard]] std::int64_t numbersPerCell(const std::vector<numbering::RegisterLine>& lines);

// The classes of the colours: ".used", ".missing", ..., for fills and for the legend.
[[nodiscard]] std::string_view stripStyles();

}  // namespace kap::cli
