#include "numbering/register_analysis.hpp"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <tuple>
#include <utility>

namespace kap::numbering {
namespace {

using Carriers = std::span<const Carrier>;

// Days count from here.
constexpr std::chrono::sys_days kDayZero = std::chrono::year{1899} / 12 / 30;

bool isOpen(const String& state) {
    return state != String(u"U") && state != String(u"M");
}

// How often a number is carried, and by what.
struct Claims {
    int unregistered = 0;  // documents that are not in the accounts
    int registered = 0;    // documents that are
    int invoices = 0;      // those without a document of the same type and number
    int entries = 0;
    int reservations = 0;

    [[nodiscard]] int papers() const { return unregistered + registered + invoices; }
    [[nodiscard]] bool used() const { return papers() + entries > 0; }
    // An entry is the other side of what is registered, and of an invoice; a document that is not
    // registered has none.
    [[nodiscard]] bool doubled() const {
        const bool twoThings = entries == 1 && unregistered == 1;
        return papers() > 1 || entries > 1 || twoThings || reservations > 1;
    }
};

bool hasDocument(Carriers carriers, std::uint32_t type) {
    return std::ranges::any_of(carriers, [type](const Carrier& one) {
        return one.kind == CarrierKind::Document && one.label == type;
    });
}

Claims claimsOf(Carriers carriers) {
    Claims claims;
    for (const Carrier& one : carriers) {
        switch (one.kind) {
            case CarrierKind::Document:
                ++(one.registered ? claims.registered : claims.unregistered);
                break;
            case CarrierKind::Invoice:
                claims.invoices += one.ofDocument && hasDocument(carriers, one.label) ? 0 : 1;
                break;
            case CarrierKind::Entry:
                ++claims.entries;
                break;
            case CarrierKind::Reservation:
                ++claims.reservations;
                break;
        }
    }
    return claims;
}

std::int64_t endOf(const NumberRegister& numberRegister) {
    return numberRegister.definitive.value_or(0);
}

bool inside(const NumberRegister& numberRegister, std::int64_t number) {
    return number >= 1 && number <= endOf(numberRegister);
}

NumberState stateOf(const NumberRegister& numberRegister, Carriers carriers) {
    const Claims claims = claimsOf(carriers);
    const std::int64_t number = carriers.front().number;
    if (claims.doubled()) {
        return NumberState::Doubled;
    }
    if (!claims.used()) {
        return NumberState::Reserved;
    }
    if (inside(numberRegister, number)) {
        return NumberState::Used;
    }
    const bool provisional = numberRegister.keepsProvisional && number >= 1 &&
                             number <= numberRegister.provisional.value_or(0);
    return provisional ? NumberState::Provisional : NumberState::Beyond;
}

// The carriers at the front that have the same number.
Carriers sameNumber(Carriers carriers) {
    const auto end = std::ranges::find_if(
        carriers, [&](const Carrier& one) { return one.number != carriers.front().number; });
    return {carriers.begin(), end};
}

std::int64_t& totalOf(RegisterTotals& totals, NumberState state, bool inside) {
    switch (state) {
        case NumberState::Used:
            return totals.used;
        case NumberState::Provisional:
            return totals.provisional;
        case NumberState::Reserved:
            return inside ? totals.reserved : totals.ahead;
        case NumberState::Missing:
            return totals.missing;
        case NumberState::Doubled:
            return inside ? totals.doubled : totals.beyond;
        case NumberState::Beyond:
            break;
    }
    return totals.beyond;
}

class Analysis {
public:
    Analysis(NumberRegister& numberRegister, const RegisterFacts& facts)
        : register_(numberRegister), facts_(facts) {}

    void run() {
        const std::vector<RegisterLine> lines = linesOf(register_);
        for (std::size_t i = 0; i < lines.size(); ++i) {
            const RegisterLine& line = lines[i];
            totalOf(register_.totals, line.state, inside(register_, line.first)) +=
                line.last - line.first + 1;
            if (line.state == NumberState::Missing) {
                missing(lines, i);
            } else {
                look(line);
            }
        }
        std::ranges::stable_sort(register_.anomalies, {}, [](const Anomaly& one) {
            return std::tuple(one.first, one.kind);
        });
    }

private:
    void add(AnomalyKind kind, std::int64_t number, std::vector<Carrier> carriers) {
        register_.anomalies.push_back({kind, number, number, std::move(carriers), {}});
    }

    // The lines beside one whose numbers are missing are never missing themselves.
    void missing(const std::vector<RegisterLine>& lines, std::size_t position) {
        const RegisterLine& line = lines[position];
        std::vector<Carrier> beside;
        if (position > 0) {
            beside.push_back(lines[position - 1].carriers.front());
        }
        if (position + 1 < lines.size()) {
            beside.push_back(lines[position + 1].carriers.front());
        }
        register_.anomalies.push_back(
            {AnomalyKind::Missing, line.first, line.last, std::move(beside), {}});
    }

    void look(const RegisterLine& line) {
        const Claims claims = claimsOf(line.carriers);
        const std::int64_t number = line.first;
        if (line.state == NumberState::Doubled) {
            add(AnomalyKind::Doubled, number, all(line));
        }
        // What was given out while the tables were read is not beyond the counter.
        if (claims.used() && !inside(register_, number) && line.state != NumberState::Provisional &&
            (number < 1 || number > facts_.highest)) {
            add(AnomalyKind::Beyond, number, all(line));
        }
        if (claims.entries > 0 && claims.papers() == 0 && facts_.typesDraw) {
            add(AnomalyKind::EntryWithoutDocument, number, all(line));
        }
        if (claims.registered > 0 && claims.entries == 0 && facts_.entriesRead) {
            add(AnomalyKind::DocumentWithoutEntry, number,
                those(line, [](const Carrier& one) { return one.registered; }));
        }
        if (claims.reservations > 0) {
            lookAtReservations(line, claims.used());
        }
        lookAtDates(line);
    }

    void lookAtReservations(const RegisterLine& line, bool used) {
        const auto reservations =
            those(line, [](const Carrier& one) { return one.kind == CarrierKind::Reservation; });
        const bool open = std::ranges::any_of(
            reservations, [this](const Carrier& one) { return isOpen(register_.labelOf(one)); });
        if (used && open) {
            add(AnomalyKind::ReservedInUse, line.first, all(line));
        } else if (!used && !open) {
            add(AnomalyKind::ReservationUnused, line.first, reservations);
        } else if (open && yearOf(facts_.today) > register_.year) {
            add(AnomalyKind::ReservationExpired, line.first, reservations);
        }
    }

    void lookAtDates(const RegisterLine& line) {
        Carrier latest = latest_;
        for (const Carrier& one : line.carriers) {
            if (one.kind != CarrierKind::Document || one.day == 0) {
                continue;
            }
            if (one.day < latest_.day) {
                add(AnomalyKind::DateBack, one.number, {one, latest_});
            }
            if (yearOf(one.day) != register_.year) {
                add(AnomalyKind::OtherYear, one.number, {one});
            }
            if (one.day > latest.day) {
                latest = one;
            }
        }
        latest_ = latest;
    }

    static std::vector<Carrier> all(const RegisterLine& line) {
        return {line.carriers.begin(), line.carriers.end()};
    }

    template <class Predicate>
    static std::vector<Carrier> those(const RegisterLine& line, Predicate wanted) {
        std::vector<Carrier> found;
        std::ranges::copy_if(line.carriers, std::back_inserter(found), wanted);
        return found;
    }

    NumberRegister& register_;
    const RegisterFacts& facts_;
    Carrier latest_;  // of the documents with lower numbers, the one with the latest date
};

}  // namespace

int yearOf(std::int32_t day) {
    const std::chrono::year_month_day date(kDayZero + std::chrono::days(day));
    return static_cast<int>(date.year());
}

void analyse(NumberRegister& numberRegister, const RegisterFacts& facts) {
    std::ranges::stable_sort(numberRegister.carriers, {},
                             [](const Carrier& one) { return std::tuple(one.number, one.kind); });
    Analysis(numberRegister, facts).run();
}

std::vector<RegisterLine> linesOf(const NumberRegister& numberRegister) {
    std::vector<RegisterLine> lines;
    const std::int64_t end = endOf(numberRegister);
    std::int64_t next = 1;  // the first number that no line tells of yet
    const auto addMissing = [&](std::int64_t last) {
        if (next <= last) {
            lines.push_back({next, last, NumberState::Missing, {}});
        }
    };
    for (Carriers rest = numberRegister.carriers; !rest.empty();) {
        const Carriers carriers = sameNumber(rest);
        const std::int64_t number = carriers.front().number;
        if (number >= 1) {
            addMissing(std::min(number - 1, end));
            next = number + 1;
        }
        lines.push_back({number, number, stateOf(numberRegister, carriers), carriers});
        rest = rest.subspan(carriers.size());
    }
    addMissing(end);
    return lines;
}

}  // namespace kap::numbering
