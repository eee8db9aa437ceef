#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include <kaputil/numbering/number_register.hpp>

#include "cli/commands/numbers/register_words.hpp"
#include "cli/output/terminal.hpp"

// What `kaputil numbers` writes, in its four forms.
namespace kap::cli {

// The registers, or what of them lies within the numbers that are asked for; the totals are those
// of the whole counter.
struct NumbersView {
    std::vector<numbering::NumberRegister> registers;
    bool everyNumber = false;  // the whole register, not only what is amiss
    std::int64_t from = INT64_MIN;
    std::int64_t to = INT64_MAX;

    // Leaves the anomalies within the numbers, cut at their ends.
    void cutAnomalies();
    // The lines within the numbers, cut at their ends.
    [[nodiscard]] std::vector<numbering::RegisterLine> linesOf(
        const numbering::NumberRegister& one) const;
    [[nodiscard]] std::vector<numbering::Carrier> reservationsOf(
        const numbering::NumberRegister& one) const;
};

void printNumbers(std::ostream& out, const NumbersView& view, const Terminal& terminal);

// One object: {"counters": [{"counter", "year", "totals", "anomalies", ...}]}.
void printNumbersJson(std::ostream& out, const NumbersView& view);

// The whole register, one line a carrier (one a range of missing numbers), headings first. As
// spreadsheets read it: commas, quotes where a text needs them, lines that end in CR LF.
void printNumbersCsv(std::ostream& out, const NumbersView& view);

// One page that stands by itself: a summary, and each counter and year on pages of their own when
// it is printed. `source` names the database, `time` is when it was read.
void printNumbersHtml(std::ostream& out, const NumbersView& view, Language language,
                      const std::string& source, Date time);

}  // namespace kap::cli
