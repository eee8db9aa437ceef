#include "cli/commands/describe/relation_drawing.hpp"

#include <algorithm>
#include <cstddef>
#include <map>
#include <set>
#include <tuple>
#include <utility>
#include <vector>

#include <kaputil/automation/plain_text.hpp>

#include "cli/output/html_page.hpp"
#include "cli/output/shown_text.hpp"

namespace kap::cli {
namespace {

// Units of the drawing.
constexpr int kHeight = 44;
constexpr int kBoxGap = 26;
constexpr int kWidestGap = 90;
constexpr int kRise = 66;  // between two rows
constexpr int kCharacter = 8;
constexpr int kPadding = 24;
constexpr int kDrawingWidth = 1080;  // of a row

struct Box {
    std::string name;
    std::int64_t rows = 0;
    std::set<std::string> targets;  // other tables only
    bool refersToItself = false;
    int level = 0;  // 0 for a table that refers to no other
    int x = 0;
    int y = 0;
    int width = 0;
};

using Boxes = std::map<std::string, Box>;

Boxes boxesOf(const DatabaseFacts& facts) {
    Boxes boxes;
    std::set<std::string> related;
    for (const TableFact& table : facts.tables) {
        Box& box = boxes[table.name];
        box.name = table.name;
        box.rows = table.rows;
        for (const ForeignKeyFact& key : table.foreignKeys) {
            related.insert({table.name, key.target});
            if (key.target == table.name) {
                box.refersToItself = true;
            } else {
                box.targets.insert(key.target);
            }
        }
    }
    std::erase_if(boxes, [&related](const auto& one) { return !related.contains(one.first); });
    return boxes;
}

// The longest way to a table that refers to no other; a circle is cut where it closes.
int levelOf(Boxes& boxes, const std::string& name, std::map<std::string, int>& known,
            std::set<std::string>& open) {
    if (const auto found = known.find(name); found != known.end()) {
        return found->second;
    }
    if (!boxes.contains(name) || !open.insert(name).second) {
        return -1;
    }
    int level = 0;
    for (const std::string& target : boxes.at(name).targets) {
        level = std::max(level, levelOf(boxes, target, known, open) + 1);
    }
    open.erase(name);
    return known[name] = level;
}

// The rows of the drawing from above: a level is one row, or several when it is wide.
std::vector<std::vector<Box*>> rowsOf(Boxes& boxes) {
    std::map<std::string, int> known;
    std::set<std::string> open;
    std::map<int, std::vector<Box*>> levels;
    for (auto& [name, box] : boxes) {
        const auto columns = static_cast<int>(std::max<std::size_t>(columnsOf(name), 6));
        box.width = columns * kCharacter + kPadding;
        box.level = levelOf(boxes, name, known, open);
        levels[box.level].push_back(&box);
    }
    std::vector<std::vector<Box*>> rows;
    for (const auto& [level, members] : levels) {
        int width = kDrawingWidth;
        for (Box* box : members) {
            if (width + box->width > kDrawingWidth) {
                rows.emplace_back();
                width = 0;
            }
            rows.back().push_back(box);
            width += box->width + kBoxGap;
        }
    }
    return rows;
}

// Each box as near below what it refers to as its row allows, all rows in the middle.
void place(std::vector<std::vector<Box*>>& rows, const Boxes& boxes) {
    int y = 1;
    for (std::vector<Box*>& row : rows) {
        std::map<const Box*, double> wish;
        int width = -kBoxGap;
        for (const Box* box : row) {
            double sum = 0;
            int count = 0;
            for (const std::string& target : box->targets) {
                const auto found = boxes.find(target);
                if (found != boxes.end() && found->second.level < box->level) {
                    sum += found->second.x + found->second.width / 2.0;
                    ++count;
                }
            }
            wish[box] = count == 0 ? kDrawingWidth / 2.0 : sum / count;
            width += box->width + kBoxGap;
        }
        std::ranges::stable_sort(row, {}, [&wish](const Box* box) { return wish[box]; });
        // What is left of the width goes between the boxes, as far as lines need it.
        const int gaps = static_cast<int>(row.size()) - 1;
        const int wider = gaps == 0 ? 0 : std::min((kDrawingWidth - width) / gaps, kWidestGap);
        int x = (kDrawingWidth - width - wider * gaps) / 2;
        for (Box* box : row) {
            box->x = x;
            box->y = y;
            x += box->width + kBoxGap + wider;
        }
        y += kHeight + kRise;
    }
}

std::string point(int x, int y) {
    return plain::text(x) + " " + plain::text(y);
}

// The place on an edge of a box of one of several lines.
int onEdge(const Box& box, int position, int count) {
    return box.x + box.width * (position + 1) / (count + 1);
}

// Lines from the top of each table that refers to the bottom of the one that is referred to; those
// that meet at a box lie side by side.
std::string linesText(const Boxes& boxes) {
    // By the place of what is referred to, so that lines from one box do not cross.
    const auto place = [&boxes](const std::string& name) {
        const Box& box = boxes.at(name);
        return std::tuple(box.x, box.y, name);
    };
    std::map<std::tuple<int, int, std::string>, std::vector<const Box*>> referring;
    for (const auto& [name, box] : boxes) {
        for (const std::string& target : box.targets) {
            if (boxes.contains(target)) {
                referring[place(target)].push_back(&box);
            }
        }
    }
    std::map<const Box*, int> drawn;
    std::string text;
    for (auto& [target, sources] : referring) {
        const Box& to = boxes.at(std::get<std::string>(target));
        std::ranges::sort(sources, {}, &Box::x);
        for (std::size_t i = 0; i < sources.size(); ++i) {
            const Box& from = *sources[i];
            const int x1 = onEdge(from, drawn[&from]++, static_cast<int>(from.targets.size()));
            const int x2 = onEdge(to, static_cast<int>(i), static_cast<int>(sources.size()));
            const int y1 = from.y;
            const int y2 = to.y + kHeight;
            const int bend = std::max(kRise / 2, (y1 - y2) / 2);
            text += "<path class=\"ref\" marker-end=\"url(#tip)\" d=\"M" + point(x1, y1) + "C" +
                    point(x1, y1 - bend) + " " + point(x2, y2 + bend) + " " + point(x2, y2) +
                    "\"><title>" + html(from.name + " → " + to.name) + "</title></path>\n";
        }
    }
    return text;
}

std::string boxText(const Box& box, Language language) {
    const std::string middle = plain::text(box.x + box.width / 2);
    std::string text = "<a href=\"#t-" + html(box.name) + "\"><rect class=\"box\" x=\"" +
                       plain::text(box.x) + "\" y=\"" + plain::text(box.y) + "\" width=\"" +
                       plain::text(box.width) + "\" height=\"" + plain::text(kHeight) +
                       "\" rx=\"5\"/><text x=\"" + middle + "\" y=\"" + plain::text(box.y + 19) +
                       "\">" + html(box.name) + "</text><text class=\"rows\" x=\"" + middle +
                       "\" y=\"" + plain::text(box.y + 35) + "\">" + grouped(box.rows, language) +
                       (box.refersToItself ? " ↻" : "") + "</text></a>\n";
    return text;
}

}  // namespace

std::string relationDrawing(const DatabaseFacts& facts, Language language) {
    Boxes boxes = boxesOf(facts);
    if (boxes.empty()) {
        return {};
    }
    auto rows = rowsOf(boxes);
    place(rows, boxes);
    const auto height = static_cast<int>(rows.size()) * (kHeight + kRise) - kRise + 2;
    std::string svg = "<svg class=\"relations\" viewBox=\"0 0 " + point(kDrawingWidth, height) +
                      "\" role=\"img\">\n<defs><marker id=\"tip\" viewBox=\"0 0 8 8\" refX=\"7\" "
                      "refY=\"4\" markerWidth=\"7\" markerHeight=\"7\" orient=\"auto\"><path "
                      "d=\"M0 0L8 4L0 8Z\"/></marker></defs>\n";
    svg += linesText(boxes);
    for (const auto& [name, box] : boxes) {
        svg += boxText(box, language);
    }
    return svg + "</svg>\n";
}

std::string_view drawingStyles() {
    return R"css(
.relations { width: 100%; min-width: 36rem; height: auto; display: block; margin: 1rem 0; }
.relations .box { fill: #f4f6f9; stroke: #7d8a99; }
.relations text { font: 13px system-ui, sans-serif; text-anchor: middle; fill: #1d2733; }
.relations .rows { font-size: 11px; fill: #5d6b7a; }
.relations .ref { fill: none; stroke: #7da7d9; stroke-width: 1.5; }
.relations marker path { fill: #7da7d9; }
pre { background: #f4f6f9; padding: .6rem .8rem; overflow-x: auto; font-size: .85rem; white-space: pre-wrap; }
@media print { h2 { break-before: auto; margin-top: 1.6rem; } }
)css";
}

}  // namespace kap::cli
