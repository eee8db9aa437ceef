#include <ostream>

#include <kaputil/automation/plain_text.hpp>

#include "cli/commands/numbers/numbers_output.hpp"
#include "cli/output/csv_line.hpp"

namespace kap::cli {
namespace {

using numbering::Carrier;
using numbering::NumberRegister;
using numbering::RegisterLine;

class CsvPrinter {
public:
    CsvPrinter(std::ostream& out, const NumbersView& view) : out_(out), view_(view) {}

    void print(const NumberRegister& one) {
        auto next = one.anomalies.begin();
        for (const RegisterLine& line : view_.linesOf(one)) {
            // Both are in the order of their numbers.
            std::string kinds;
            for (; next != one.anomalies.end() && next->first <= line.first; ++next) {
                kinds += (kinds.empty() ? "" : " ") + std::string(numbering::nameOf(next->kind));
            }
            print(one, line, kinds);
        }
        // Numbers of a type that changed its counter may lie behind the last line.
        for (; next != one.anomalies.end(); ++next) {
            out_ << csvLine({one.counter.utf8(), plain::text(one.year), plain::text(next->first),
                             plain::text(next->last), "",
                             std::string(numbering::nameOf(next->kind)), "", "", "", ""});
        }
    }

private:
    void print(const NumberRegister& one, const RegisterLine& line, const std::string& kinds) {
        std::vector<std::string> values = {one.counter.utf8(),
                                           plain::text(one.year),
                                           plain::text(line.first),
                                           plain::text(line.last),
                                           std::string(numbering::nameOf(line.state)),
                                           kinds};
        const std::size_t common = values.size();
        if (line.carriers.empty()) {
            values.resize(common + 4);
            out_ << csvLine(values);
        }
        for (const Carrier& carrier : line.carriers) {
            values.resize(common);
            values.emplace_back(numbering::nameOf(carrier.kind));
            values.push_back(one.labelOf(carrier).utf8());
            values.push_back(carrier.day == 0 ? std::string() : isoDay(carrier.day));
            values.emplace_back(carrier.registered ? "1" : "0");
            out_ << csvLine(values);
        }
    }

    std::ostream& out_;
    const NumbersView& view_;
};

}  // namespace

void printNumbersCsv(std::ostream& out, const NumbersView& view) {
    out << csvLine({"counter", "year", "first", "last", "state", "anomalies", "carrier", "type",
                    "date", "registered"});
    CsvPrinter printer(out, view);
    for (const NumberRegister& one : view.registers) {
        printer.print(one);
    }
}

}  // namespace kap::cli
