#include "tools/numbers_command.hpp"

#include <cstddef>
#include <iostream>
#include <string_view>

#include <nlohmann/json.hpp>

#include <kaputil/frame/plain_text.hpp>

#include "tools/counter_state.hpp"
#include "tools/exit_codes.hpp"
#include "tools/shown_text.hpp"
#include "tools/terminal.hpp"
#include "tools/with_database.hpp"

namespace kap::tools {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kLabelColumns = 10;

// What became of a reservation, for people and for programs.
const char* stateName(const Reservation& reservation) {
    if (reservation.state == "D") {
        return "read";
    }
    if (reservation.state == "U") {
        return "taken";
    }
    return reservation.state == "M" ? "taken for the accounts" : "untouched";
}

Json jsonOf(const std::optional<std::int64_t>& number) {
    return number ? Json(*number) : Json(nullptr);
}

Json jsonOf(const NumberedDocument& document) {
    return {{"number", document.number}, {"type", document.type}};
}

Json jsonOf(const std::optional<NumberedDocument>& document) {
    return document ? jsonOf(*document) : Json(nullptr);
}

Json jsonOf(const CounterState& counter) {
    Json reservations = Json::array();
    for (const Reservation& one : counter.reservations) {
        reservations.push_back(
            {{"number", one.number}, {"code", one.state}, {"state", stateName(one)}});
    }
    Json beyond = Json::array();
    for (const NumberedDocument& document : counter.beyond) {
        beyond.push_back(jsonOf(document));
    }
    Json gaps = Json::array();
    for (const Gap& gap : counter.gaps) {
        gaps.push_back({{"first", gap.first},
                        {"last", gap.last},
                        {"before", jsonOf(gap.before)},
                        {"behind", jsonOf(gap.behind)}});
    }
    return {{"counter", counter.code},
            {"year", counter.year},
            {"definitive", jsonOf(counter.definitive)},
            {"provisional", jsonOf(counter.provisional)},
            {"reservations", std::move(reservations)},
            {"beyond", std::move(beyond)},
            {"gaps", std::move(gaps)}};
}

std::string textOf(const std::optional<std::int64_t>& number) {
    return number ? plain::text(*number) : "Null";
}

std::string textOf(const NumberedDocument& document) {
    return shownText(document.type) + " " + plain::text(document.number);
}

std::string placeOf(const Gap& gap) {
    if (gap.before && gap.behind) {
        return "between " + textOf(*gap.before) + " and " + textOf(*gap.behind);
    }
    if (gap.before) {
        return "behind " + textOf(*gap.before);
    }
    return gap.behind ? "before " + textOf(*gap.behind) : "no document at all";
}

// One line of a counter; the label stands before the first one of its kind only.
void printLine(std::string_view label, bool first, const std::string& text) {
    std::cout << "  " << padded(first ? label : std::string_view(), kLabelColumns) << text << '\n';
}

void print(const CounterState& counter, const Terminal& terminal) {
    std::cout << terminal.styled(Style::Bold,
                                 shownText(counter.code) + " " + plain::text(counter.year))
              << "  definitive " << textOf(counter.definitive) << ", provisional "
              << textOf(counter.provisional) << '\n';
    bool first = true;
    for (const Reservation& one : counter.reservations) {
        printLine("reserved", first, plain::text(one.number) + "  " + stateName(one));
        first = false;
    }
    first = true;
    for (const NumberedDocument& document : counter.beyond) {
        printLine("beyond", first, textOf(document));
        first = false;
    }
    first = true;
    for (const Gap& gap : counter.gaps) {
        const std::string numbers = gap.first == gap.last
                                        ? plain::text(gap.first)
                                        : plain::text(gap.first) + "-" + plain::text(gap.last);
        printLine("missing", first, numbers + "  " + placeOf(gap));
        first = false;
    }
}

}  // namespace

int NumbersCommand::run() const {
    return withDatabase(connection, json, [this](ado::Connection& database) {
        const auto counters = readCounters(database, counter, year);
        if (json) {
            Json all = Json::array();
            for (const CounterState& one : counters) {
                all.push_back(jsonOf(one));
            }
            std::cout << Json{{"counters", std::move(all)}}.dump(2) << '\n';
            return kSuccess;
        }
        for (const CounterState& one : counters) {
            print(one, Terminal::ofStandardOutput());
        }
        if (counters.empty()) {
            std::cout << "No counters.\n";
        }
        return kSuccess;
    });
}

}  // namespace kap::tools
