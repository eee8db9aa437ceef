#include <algorithm>
#include <ostream>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "cli/commands/numbers/number_strip.hpp"
#include "cli/commands/numbers/numbers_output.hpp"
#include "cli/output/html_page.hpp"

namespace kap::cli {
namespace {

using numbering::Anomaly;
using numbering::NumberRegister;
using numbering::NumberState;
using numbering::RegisterTotals;

// A page with more rows than anybody reads only makes browsers slow.
constexpr std::size_t kMostRows = 5000;

std::int64_t countOf(const RegisterTotals& totals, NumberState state) {
    switch (state) {
        case NumberState::Used:
            return totals.used;
        case NumberState::Provisional:
            return totals.provisional;
        case NumberState::Reserved:
            return totals.reserved + totals.ahead;
        case NumberState::Missing:
            return totals.missing;
        case NumberState::Doubled:
            return totals.doubled;
        case NumberState::Beyond:
            break;
    }
    return totals.beyond;
}

class RegisterPage {
public:
    RegisterPage(const NumbersView& view, Language language)
        : view_(view), language_(language), italian_(language == Language::Italian) {}

    std::string body(const std::string& source, const std::string& time) {
        add(element("h1", title()));
        add("<p class=\"soft\">" + html(source) + " · " + html(time) + "</p>\n");
        if (view_.registers.empty()) {
            add(element("p", word("Nessun contatore.", "No counters.")));
        } else {
            summary();
        }
        for (const NumberRegister& one : view_.registers) {
            section(one);
        }
        add("<footer>" + html(word("Generato da", "Made by")) + " kaputil numbers · " +
            html(source) + " · " + html(time) + "</footer>\n");
        return std::move(text_);
    }

    [[nodiscard]] std::string title() const {
        return word("Registro dei numeri dei documenti", "Register of document numbers");
    }

private:
    [[nodiscard]] std::string word(const char* italian, const char* english) const {
        return italian_ ? italian : english;
    }
    void add(const std::string& text) { text_ += text; }
    [[nodiscard]] std::string number(std::int64_t value) const { return grouped(value, language_); }
    [[nodiscard]] std::string number(const std::optional<std::int64_t>& value) const {
        return value ? number(*value) : "Null";
    }
    void cell(const std::string& text) { add(element("td", text, "n")); }

    static std::string nameOf(const NumberRegister& one) {
        return one.counter.utf8() + " " + plain::text(one.year);
    }
    static std::string anchorOf(const NumberRegister& one) {
        return html("c-" + one.counter.utf8() + "-" + plain::text(one.year));
    }

    void summary() {
        add("<div class=\"wide\"><table><thead><tr>" + element("th", word("Contatore", "Counter")) +
            element("th", word("Ultimo", "Last"), "n"));
        for (const NumberState state : kNumberStates) {
            add(element("th", std::string(wordFor(state, language_)), "n"));
        }
        add(element("th", word("Anomalie", "Anomalies"), "n") + "</tr></thead>\n<tbody>\n");
        for (const NumberRegister& one : view_.registers) {
            add("<tr><td><a href=\"#" + anchorOf(one) + "\">" + html(nameOf(one)) + "</a> " +
                element("span", one.description.utf8(), "soft") + "</td>");
            cell(one.hasCounter ? number(one.definitive) : "–");
            for (const NumberState state : kNumberStates) {
                const std::int64_t count = countOf(one.totals, state);
                cell(count == 0 ? "" : number(count));
            }
            const auto anomalies = static_cast<std::int64_t>(one.anomalies.size());
            cell(anomalies == 0 ? word("nessuna", "none") : number(anomalies));
            add("</tr>\n");
        }
        add("</tbody></table></div>\n");
    }

    void section(const NumberRegister& one) {
        std::string heading = nameOf(one);
        if (!one.description.empty()) {
            heading += " · " + one.description.utf8();
        }
        add("<h2 id=\"" + anchorOf(one) + "\">" + html(heading) + "</h2>\n");
        add(element("p", facts(one), "soft") + "\n");
        const auto lines = view_.linesOf(one);
        if (lines.empty()) {
            add(element("p", word("Nessun numero in questo anno.", "No numbers in this year.")) +
                "\n");
            return;
        }
        add("<div class=\"wide\">" + numberStrip(lines, language_) + "</div>\n");
        legend(one, numbersPerCell(lines));
        anomalies(one);
        if (view_.everyNumber) {
            everyNumber(one, lines);
        }
    }

    [[nodiscard]] std::string facts(const NumberRegister& one) const {
        if (!one.hasCounter) {
            return word(
                "Il contatore di questo anno non esiste; i numeri sono di documenti o "
                "prenotazioni.",
                "There is no counter of this year; the numbers are those of documents or "
                "reservations.");
        }
        std::string text =
            word("Ultimo numero definitivo ", "Last definitive number ") + number(one.definitive);
        if (one.keepsProvisional) {
            text += word(", provvisorio ", ", provisional ") + number(one.provisional);
        }
        return text + ".";
    }

    void legend(const NumberRegister& one, std::int64_t perCell) {
        add("<ul class=\"legend\">");
        for (const NumberState state : kNumberStates) {
            const std::int64_t count = countOf(one.totals, state);
            if (count != 0) {
                add("<li class=\"" + std::string(numbering::nameOf(state)) + "\">" + number(count) +
                    " " + html(wordFor(state, language_)) + "</li>");
            }
        }
        add("</ul>\n");
        if (perCell > 1) {
            add(element("p",
                        word("Ogni casella vale ", "Each cell stands for ") + number(perCell) +
                            word(" numeri e mostra il peggiore.", " numbers and shows the worst."),
                        "soft") +
                "\n");
        }
    }

    void anomalies(const NumberRegister& one) {
        const std::vector<Anomaly>& found = one.anomalies;
        if (found.empty()) {
            add(element("p", word("Nessuna anomalia: tutti i numeri sono giustificati.",
                                  "No anomalies: every number is accounted for.")) +
                "\n");
            return;
        }
        add(element("h3", word("Anomalie", "Anomalies") + " (" +
                              number(static_cast<std::int64_t>(found.size())) + ")") +
            "\n<div class=\"wide\"><table><thead><tr>" +
            element("th", word("Numero", "Number"), "n") +
            element("th", word("Anomalia", "Anomaly")) +
            element("th", word("Documenti", "Documents")) + "</tr></thead>\n<tbody>\n");
        for (std::size_t i = 0; i < std::min(found.size(), kMostRows); ++i) {
            const Anomaly& anomaly = found[i];
            add("<tr>" + element("td", range(anomaly.first, anomaly.last), "n") +
                element("td", std::string(wordFor(anomaly.kind, language_))) +
                element("td", anomalyText(one, anomaly, language_)) + "</tr>\n");
        }
        endTable(found.size());
    }

    void everyNumber(const NumberRegister& one, const std::vector<numbering::RegisterLine>& lines) {
        add(element("h3", word("Tutti i numeri", "Every number")) +
            "\n<div class=\"wide\"><table><thead><tr>" +
            element("th", word("Numero", "Number"), "n") + element("th", word("Stato", "State")) +
            element("th", word("Documenti", "Documents")) + "</tr></thead>\n<tbody>\n");
        for (std::size_t i = 0; i < std::min(lines.size(), kMostRows); ++i) {
            add("<tr>" + element("td", range(lines[i].first, lines[i].last), "n") +
                element("td", std::string(wordFor(lines[i].state, language_))) +
                element("td", carriersText(one, lines[i].carriers, language_)) + "</tr>\n");
        }
        endTable(lines.size());
    }

    void endTable(std::size_t rows) {
        add("</tbody></table></div>\n");
        if (rows > kMostRows) {
            add(element("p",
                        word("Altre righe: ", "More rows: ") +
                            number(static_cast<std::int64_t>(rows - kMostRows)) +
                            word("; l'elenco intero si ottiene con --csv.",
                                 "; the whole list comes with --csv."),
                        "soft") +
                "\n");
        }
    }

    [[nodiscard]] std::string range(std::int64_t first, std::int64_t last) const {
        return first == last ? number(first) : number(first) + "–" + number(last);
    }

    const NumbersView& view_;
    Language language_;
    bool italian_;
    std::string text_;
};

}  // namespace

void printNumbersHtml(std::ostream& out, const NumbersView& view, Language language,
                      const std::string& source, Date time) {
    RegisterPage page(view, language);
    const std::string title = page.title();
    out << htmlPage(language, title, stripStyles(), page.body(source, minuteFor(time, language)));
}

}  // namespace kap::cli
