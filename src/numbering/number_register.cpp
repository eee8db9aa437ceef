#include <kaputil/numbering/number_register.hpp>

#include <algorithm>
#include <cmath>
#include <map>
#include <tuple>
#include <utility>

#include <kaputil/db/recordsets.hpp>

#include "automation/clock.hpp"
#include "base/unicode.hpp"
#include "numbering/register_analysis.hpp"
#include "numbering/register_rows.hpp"

namespace kap::numbering {
namespace {

using Registers = std::map<CounterYear, NumberRegister>;

bool byNumber(const Carrier& left, const Carrier& right) {
    return left.number < right.number;
}

bool has(const std::vector<Carrier>& carriers, std::int64_t number, bool entry) {
    Carrier wanted;
    wanted.number = number;
    const auto [first, last] = std::equal_range(carriers.begin(), carriers.end(), wanted, byNumber);
    return std::any_of(first, last, [entry](const Carrier& one) {
        return one.kind != CarrierKind::Reservation && (one.kind == CarrierKind::Entry) == entry;
    });
}

// Puts the rows of all tables together, a register a counter and year.
class Composition {
public:
    Composition(RegisterRows rows, const RegisterRequest& request)
        : rows_(std::move(rows)),
          labels_(std::make_shared<std::vector<String>>(rows_.labels.texts())),
          today_(static_cast<std::int32_t>(std::floor(request.today.value_or(localNow()).days))) {}

    std::vector<NumberRegister> compose(const std::optional<String>& counter) {
        for (const CounterRow& row : rows_.rows) {
            addCounter(row);
        }
        for (const CountedRow& row : rows_.papers) {
            addCarrier(row);
        }
        // Registers of the accounts that no counter belongs to are none of ours.
        std::erase_if(rows_.entries,
                      [this](const CountedRow& row) { return !registers_.contains(row.of); });
        for (const CountedRow& row : rows_.entries) {
            addCarrier(row);
        }
        for (auto& [of, one] : registers_) {
            std::ranges::sort(one.carriers, byNumber);
        }
        findChangedTypes();
        return finished(counter);
    }

private:
    // A document type that drew from another counter before.
    struct Change {
        CounterYear now;
        CounterYear before;
        std::uint32_t type = 0;

        friend bool operator<(const Change& left, const Change& right) {
            return std::tie(left.now, left.before, left.type) <
                   std::tie(right.now, right.before, right.type);
        }
    };

    NumberRegister& registerOf(CounterYear of) {
        const auto [place, isNew] = registers_.try_emplace(of);
        NumberRegister& found = place->second;
        if (isNew) {
            found.counter = rows_.counters.texts()[of.counter];
            found.year = of.year;
            found.hasCounter = false;
            found.labels = labels_;
        }
        return found;
    }

    void addCounter(const CounterRow& row) {
        NumberRegister& added = registerOf(row.of);
        added.hasCounter = true;
        added.description = row.description;
        added.definitive = row.definitive;
        added.provisional = row.provisional;
        added.keepsProvisional = row.keepsProvisional;
    }

    void addCarrier(const CountedRow& row) { registerOf(row.of).carriers.push_back(row.carrier); }

    // A document that is registered, though its counter has no entry with its number: when one
    // other counter of the year has the entry and no document for it, the type drew from that one
    // before.
    void findChangedTypes() {
        if (!rows_.entriesRead) {
            return;
        }
        std::map<Change, std::vector<Carrier>> changes;
        for (const auto& [of, now] : registers_) {
            for (const Carrier& one : now.carriers) {
                if (!one.registered || has(now.carriers, one.number, /*entry=*/true)) {
                    continue;
                }
                if (const auto before = counterBefore(of, one.number)) {
                    changes[{of, *before, one.label}].push_back(one);
                }
            }
        }
        for (const auto& [change, documents] : changes) {
            move(documents, registers_.at(change.now), registers_.at(change.before));
        }
    }

    [[nodiscard]] std::optional<CounterYear> counterBefore(CounterYear now,
                                                           std::int64_t number) const {
        std::optional<CounterYear> before;
        for (const auto& [of, one] : registers_) {
            if (of.year != now.year || of == now || !has(one.carriers, number, /*entry=*/true) ||
                has(one.carriers, number, /*entry=*/false)) {
                continue;
            }
            if (before) {
                return std::nullopt;  // which of them cannot be told
            }
            before = of;
        }
        return before;
    }

    static void move(const std::vector<Carrier>& documents, NumberRegister& now,
                     NumberRegister& before) {
        std::erase_if(now.carriers, [&documents](const Carrier& one) {
            const auto [first, last] =
                std::equal_range(documents.begin(), documents.end(), one, byNumber);
            return std::find(first, last, one) != last;
        });
        before.carriers.insert(before.carriers.end(), documents.begin(), documents.end());
        std::ranges::sort(before.carriers, byNumber);
        Anomaly anomaly{AnomalyKind::CounterChanged,
                        documents.front().number,
                        documents.back().number,
                        {documents.front()},
                        before.counter};
        if (documents.size() > 1) {
            anomaly.carriers.push_back(documents.back());
        }
        now.anomalies.push_back(anomaly);
        anomaly.other = now.counter;
        before.anomalies.push_back(std::move(anomaly));
    }

    std::vector<NumberRegister> finished(const std::optional<String>& counter) {
        std::map<CounterYear, std::int64_t> highest;
        for (const CounterRow& row : rows_.rowsAtTheEnd) {
            highest[row.of] = row.definitive.value_or(0);
        }
        std::vector<NumberRegister> all;
        for (auto& [of, one] : registers_) {
            if (counter && !unicode::sameName(one.counter, *counter)) {
                continue;
            }
            analyse(one, {of.counter < rows_.typesDraw.size() && rows_.typesDraw[of.counter],
                          rows_.entriesRead, today_, highest[of]});
            all.push_back(std::move(one));
        }
        std::ranges::sort(all, {}, [](const NumberRegister& one) {
            return std::tuple(unicode::upper(one.counter.view()), one.year);
        });
        return all;
    }

    RegisterRows rows_;
    std::shared_ptr<const std::vector<String>> labels_;
    std::int32_t today_;
    Registers registers_;
};

}  // namespace

std::vector<NumberRegister> readRegisters(ByRef<Variant> connessione,
                                          const RegisterRequest& request) {
    db::ControllaConnessione(connessione);
    return Composition(readRegisterRows(*connessione, request.year), request)
        .compose(request.counter);
}

}  // namespace kap::numbering
