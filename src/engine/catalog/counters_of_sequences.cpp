#include <limits>

#include "engine/catalog/counters.hpp"
#include "engine/catalog/object_names.hpp"
#include "engine/catalog/sequences.hpp"
#include "tsql/server_error.hpp"

// The counters of sequences. Each has a row in the table of counters, as that of an identity.
namespace kap::engine {
namespace {

// `number` so many steps on; it stays within the limits of the sequence.
std::int64_t stepped(std::int64_t number, std::uint64_t steps, std::int64_t increment) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(number) +
                                     steps * static_cast<std::uint64_t>(increment));
}

}  // namespace

void Counters::addSequence(const Sequence& sequence) {
    makeTable(false);
    PreparedStatement insert(database_.handle(), std::string("INSERT OR REPLACE INTO main.") +
                                                     kCountersTable +
                                                     " VALUES (?1, NULL, '', ?2, ?3, ?4)");
    const std::string type = tsql::typeText(sequence.type);
    insert.bind(1, std::string_view(sequence.name));
    insert.bind(2, std::string_view(type));
    insert.bind(3, sequence.start);
    insert.bind(4, sequence.increment);
    insert.run();
    counters_.erase(sequence.name);
}

void Counters::changeSequence(const Sequence& sequence, bool restarts) {
    // What was drawn in this transaction is kept, unless it counts no more.
    if (!restarts) flush();
    counters_.erase(sequence.name);
    PreparedStatement change(database_.handle(),
                             std::string("UPDATE main.") + kCountersTable +
                                 " SET increment = ?2, last = iif(?3, NULL, last), seed = iif(?3, "
                                 "?4, seed) WHERE owner = ?1");
    change.bind(1, std::string_view(sequence.name));
    change.bind(2, sequence.increment);
    change.bind(3, std::int64_t{restarts ? 1 : 0});
    change.bind(4, sequence.start);
    change.run();
}

Counters::Drawn Counters::draw(const Sequence& sequence, std::int64_t count) {
    // The numbers of one that cycles grow and shrink: the file alone knows which was the last.
    if (auto known = counters_.find(sequence.name);
        known != counters_.end() && !known->second.current && sequence.cycles) {
        counters_.erase(known);
    }
    Counter& counter = current(sequence.name);
    Drawn drawn{counter.first, counter.first, 0};
    const std::int64_t end = sequence.farEnd();
    const auto passed = [&](std::int64_t last) {
        return sequence.increment > 0 ? last >= end : last <= end;
    };
    if (counter.started) {
        const bool more = !passed(counter.last) && sequence.stepsBetween(counter.last, end) > 0;
        if (!more && !sequence.cycles) {
            throw tsql::ServerError(
                count > 1 ? tsql::Message::RangeTooLarge : tsql::Message::SequenceExhausted,
                {bareName(sequence.name)});
        }
        drawn.first = more ? stepped(counter.last, 1, sequence.increment) : sequence.nearEnd();
        drawn.cycles = more ? 0 : 1;
    }
    auto steps = static_cast<std::uint64_t>(count - 1);
    const std::uint64_t room = sequence.stepsBetween(drawn.first, end);
    if (steps > room && !sequence.cycles) {
        throw tsql::ServerError(tsql::Message::RangeTooLarge, {bareName(sequence.name)});
    }
    drawn.last = drawn.first;
    if (steps > room) {
        // The first step beyond the end leads to the other one.
        steps -= room + 1;
        const std::uint64_t whole = sequence.stepsBetween(sequence.nearEnd(), end);
        drawn.cycles += 1;
        if (whole < std::numeric_limits<std::uint64_t>::max()) {
            drawn.cycles += static_cast<std::int64_t>(steps / (whole + 1));
            steps %= whole + 1;
        }
        drawn.last = sequence.nearEnd();
    }
    drawn.last = stepped(drawn.last, steps, sequence.increment);
    counter.last = drawn.last;
    counter.started = true;
    counter.pending = true;
    return drawn;
}

}  // namespace kap::engine
