#include "cli/commands/numbers/number_strip.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>

#include <kaputil/automation/plain_text.hpp>

#include "cli/output/html_page.hpp"

namespace kap::cli {
namespace {

using numbering::NumberState;
using numbering::RegisterLine;

constexpr std::int64_t kColumns = 100;
constexpr std::int64_t kMostCells = 3000;
constexpr int kCell = 10;  // units of the drawing
constexpr int kLabelWidth = 78;

// Of the numbers of one cell the state that somebody has to look at.
int weight(NumberState state) {
    switch (state) {
        case NumberState::Doubled:
            return 6;
        case NumberState::Missing:
            return 5;
        case NumberState::Beyond:
            return 4;
        case NumberState::Reserved:
            return 3;
        case NumberState::Provisional:
            return 2;
        case NumberState::Used:
            break;
    }
    return 1;
}

std::int64_t highestOf(const std::vector<RegisterLine>& lines) {
    return lines.empty() ? 0 : lines.back().last;
}

// The cells' states; nullopt where nobody carries a number above the counter.
std::vector<std::optional<NumberState>> cellsOf(const std::vector<RegisterLine>& lines,
                                                std::int64_t perCell) {
    const std::int64_t count = (highestOf(lines) + perCell - 1) / perCell;
    std::vector<std::optional<NumberState>> cells(static_cast<std::size_t>(count));
    for (const RegisterLine& line : lines) {
        if (line.last < 1) {
            continue;
        }
        const std::int64_t first = (std::max<std::int64_t>(line.first, 1) - 1) / perCell;
        const std::int64_t last = (line.last - 1) / perCell;
        for (std::int64_t i = first; i <= last; ++i) {
            auto& cell = cells[static_cast<std::size_t>(i)];
            if (!cell || weight(*cell) < weight(line.state)) {
                cell = line.state;
            }
        }
    }
    return cells;
}

std::string attribute(const char* name, std::int64_t value) {
    return std::string(" ") + name + "=\"" + plain::text(value) + "\"";
}

class Drawing {
public:
    Drawing(const std::vector<RegisterLine>& lines, Language language)
        : perCell_(numbersPerCell(lines)),
          highest_(highestOf(lines)),
          cells_(cellsOf(lines, perCell_)),
          language_(language) {}

    [[nodiscard]] std::string text() const {
        const auto rows = (static_cast<std::int64_t>(cells_.size()) + kColumns - 1) / kColumns;
        std::string svg = "<svg class=\"strip\" viewBox=\"0 0 " +
                          plain::text(kLabelWidth + kColumns * kCell) + " " +
                          plain::text(rows * kCell) + "\" role=\"img\">\n";
        for (std::int64_t row = 0; row < rows; ++row) {
            svg += label(row, rows) + cellsOfRow(row);
        }
        return svg + grid(rows) + "</svg>\n";
    }

private:
    // The first number of some rows, at most some twenty in all.
    [[nodiscard]] std::string label(std::int64_t row, std::int64_t rows) const {
        const std::int64_t every = rows <= 10 ? 1 : 5;
        if (row % every != 0) {
            return {};
        }
        return "<text" + attribute("x", kLabelWidth - 6) + attribute("y", row * kCell + kCell - 1) +
               ">" + grouped(row * kColumns * perCell_ + 1, language_) + "</text>\n";
    }

    [[nodiscard]] std::string cellsOfRow(std::int64_t row) const {
        const std::int64_t begin = row * kColumns;
        const std::int64_t end =
            std::min(begin + kColumns, static_cast<std::int64_t>(cells_.size()));
        std::string text;
        for (std::int64_t first = begin; first < end;) {
            std::int64_t last = first;
            while (last + 1 < end && at(last + 1) == at(first)) {
                ++last;
            }
            if (at(first)) {
                text += stretch(*at(first), first, last, begin, row);
            }
            first = last + 1;
        }
        return text;
    }

    [[nodiscard]] std::string stretch(NumberState state, std::int64_t first, std::int64_t last,
                                      std::int64_t begin, std::int64_t row) const {
        const std::int64_t from = first * perCell_ + 1;
        const std::int64_t to = std::min((last + 1) * perCell_, highest_);
        const std::string numbers = from == to
                                        ? grouped(from, language_)
                                        : grouped(from, language_) + "–" + grouped(to, language_);
        return "<rect class=\"" + std::string(numbering::nameOf(state)) + "\"" +
               attribute("x", kLabelWidth + (first - begin) * kCell) + attribute("y", row * kCell) +
               attribute("width", (last - first + 1) * kCell) + attribute("height", kCell - 1) +
               "><title>" + html(numbers + ": " + std::string(wordFor(state, language_))) +
               "</title></rect>\n";
    }

    // White lines part the cells.
    static std::string grid(std::int64_t rows) {
        std::string path;
        for (std::int64_t column = 1; column < kColumns; ++column) {
            path +=
                "M" + plain::text(kLabelWidth + column * kCell) + " 0V" + plain::text(rows * kCell);
        }
        return "<path class=\"grid\" d=\"" + path + "\"/>\n";
    }

    [[nodiscard]] const std::optional<NumberState>& at(std::int64_t cell) const {
        return cells_[static_cast<std::size_t>(cell)];
    }

    std::int64_t perCell_;
    std::int64_t highest_;
    std::vector<std::optional<NumberState>> cells_;
    Language language_;
};

}  // namespace

std::int64_t numbersPerCell(const std::vector<RegisterLine>& lines) {
    const std::int64_t highest = highestOf(lines);
    std::int64_t perCell = 1;
    // 1, 2, 5, 10, 20, 50, ...
    for (int step = 0; (highest - 1) / perCell >= kMostCells; ++step) {
        perCell = step % 3 == 1 ? perCell / 2 * 5 : perCell * 2;
    }
    return perCell;
}

std::string numberStrip(const std::vector<RegisterLine>& lines, Language language) {
    return highestOf(lines) < 1 ? std::string() : Drawing(lines, language).text();
}

std::string_view stripStyles() {
    return R"css(
.strip { width: 100%; min-width: 36rem; height: auto; display: block; margin: .8rem 0; }
.strip text { font: 9px sans-serif; text-anchor: end; fill: #5d6b7a; }
.grid { stroke: #fff; stroke-width: 1; fill: none; pointer-events: none; }
.used { fill: #7da7d9; --c: #7da7d9; } .reserved { fill: #f2c744; --c: #f2c744; }
.missing { fill: #d6293e; --c: #d6293e; } .doubled { fill: #6b2f93; --c: #6b2f93; }
.beyond { fill: #f08b1d; --c: #f08b1d; } .provisional { fill: #a9d8c4; --c: #a9d8c4; }
.legend { display: flex; flex-wrap: wrap; gap: .3rem 1.2rem; margin: .4rem 0 0; padding: 0; list-style: none; }
.legend li::before { content: ""; display: inline-block; width: .8em; height: .8em; margin-right: .4em; background: var(--c); }
)css";
}

}  // namespace kap::cli
