#include <ostream>
#include <string_view>

#include <kaputil/automation/plain_text.hpp>

#include "cli/commands/numbers/numbers_output.hpp"
#include "cli/output/shown_text.hpp"

namespace kap::cli {
namespace {

using numbering::NumberRegister;
using numbering::RegisterTotals;

constexpr Language kLanguage = Language::English;

std::string textOf(const std::optional<std::int64_t>& number) {
    return number ? plain::text(*number) : "Null";
}

// "6 used, 1 reserved"; what there is none of is left out.
class Counts {
public:
    void add(std::int64_t count, std::string_view word) {
        if (count != 0) {
            text_ += (text_.empty() ? "" : ", ") + plain::text(count) + " " + std::string(word);
        }
    }
    [[nodiscard]] const std::string& text() const { return text_; }

private:
    std::string text_;
};

std::string within(const RegisterTotals& totals) {
    Counts counts;
    counts.add(totals.used, "used");
    counts.add(totals.reserved, "reserved");
    counts.add(totals.missing, "missing");
    counts.add(totals.doubled, "doubled");
    return counts.text();
}

std::string outside(const RegisterTotals& totals) {
    Counts counts;
    counts.add(totals.provisional, "provisional");
    counts.add(totals.ahead, "reserved ahead");
    counts.add(totals.beyond, "beyond the counter");
    return counts.text();
}

class RegisterPrinter {
public:
    RegisterPrinter(std::ostream& out, const NumbersView& view, const Terminal& terminal)
        : out_(out), view_(view), terminal_(terminal) {}

    void print(const NumberRegister& one) {
        heading(one);
        line("numbers", within(one.totals));
        line("outside", outside(one.totals));
        if (view_.everyNumber) {
            lines(one);
        } else {
            reservations(one);
        }
        anomalies(one);
    }

private:
    void heading(const NumberRegister& one) {
        out_ << terminal_.styled(Style::Bold,
                                 shownText(one.counter.utf8()) + " " + plain::text(one.year));
        if (!one.description.empty()) {
            out_ << "  " << shownText(one.description.utf8());
        }
        if (one.hasCounter) {
            out_ << "  definitive " << textOf(one.definitive) << ", provisional "
                 << textOf(one.provisional) << '\n';
        } else {
            out_ << "  no such counter\n";
        }
    }

    // Nothing for an empty text.
    void line(std::string_view label, const std::string& text) {
        constexpr std::size_t kLabelColumns = 10;
        if (!text.empty()) {
            out_ << "  " << padded(label, kLabelColumns) << text << '\n';
        }
    }

    void lines(const NumberRegister& one) {
        constexpr std::size_t kNumberColumns = 11;
        constexpr std::size_t kStateColumns = 13;
        for (const auto& each : view_.linesOf(one)) {
            std::string text = rightAligned(rangeText(each.first, each.last), kNumberColumns) +
                               "  " + padded(numbering::nameOf(each.state), kStateColumns) +
                               shownText(carriersText(one, each.carriers, kLanguage));
            text.erase(text.find_last_not_of(' ') + 1);
            out_ << text << '\n';
        }
    }

    void reservations(const NumberRegister& one) {
        std::string_view label = "reserved";
        for (const numbering::Carrier& carrier : view_.reservationsOf(one)) {
            line(label, plain::text(carrier.number) + "  " +
                            reservationState(one.labelOf(carrier).utf8(), kLanguage));
            label = {};
        }
    }

    void anomalies(const NumberRegister& one) {
        constexpr std::size_t kNumberColumns = 9;
        for (const auto& anomaly : one.anomalies) {
            const std::string numbers = rangeText(anomaly.first, anomaly.last);
            out_ << "  " << terminal_.styled(Style::Yellow, padded(numbers, kNumberColumns)) << ' '
                 << wordFor(anomaly.kind, kLanguage) << ": "
                 << shownText(anomalyText(one, anomaly, kLanguage)) << '\n';
        }
    }

    std::ostream& out_;
    const NumbersView& view_;
    const Terminal& terminal_;
};

}  // namespace

void printNumbers(std::ostream& out, const NumbersView& view, const Terminal& terminal) {
    RegisterPrinter printer(out, view, terminal);
    for (const NumberRegister& one : view.registers) {
        printer.print(one);
    }
    if (view.registers.empty()) {
        out << "No counters.\n";
    }
}

}  // namespace kap::cli
