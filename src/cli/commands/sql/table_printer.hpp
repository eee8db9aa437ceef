#pragma once

#include <iosfwd>
#include <memory>

#include "cli/commands/sql/answer_writer.hpp"
#include "cli/output/terminal.hpp"

namespace kap::cli {

// What prints answers for people: rows as a table with its columns' names above and the number of
// rows below, numbers at the right, Nulls as NULL; of a statement without rows how many it wrote.
// An empty line stands between them. On a terminal long texts are cut; elsewhere everything is
// printed. Rows are read twice, first for the widths of their columns.
[[nodiscard]] std::unique_ptr<AnswerWriter> tableAnswers(std::ostream& out,
                                                         const Terminal& terminal);

}  // namespace kap::cli
