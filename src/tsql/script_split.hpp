#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kap::tsql {

// One batch of a script file: what is sent at once.
struct Batch {
    std::string text;
    int firstLine = 1;  // the line of the file on which the text begins
    int count = 1;      // how many times it is run
};

// Cuts the text of a script file at its GO lines.
//
// A line that holds nothing but GO (in any case), perhaps with a count ("GO 5") and a `--`
// comment, ends a batch and is not part of it. GO inside a text, a quoted name or a `/* */`
// comment ends nothing. Batches without any text are left out. Throws ServerError 102 for a count
// that is not a whole number.
[[nodiscard]] std::vector<Batch> splitScript(std::string_view text);

}  // namespace kap::tsql
