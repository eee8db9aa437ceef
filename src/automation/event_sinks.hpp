#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <span>
#include <string_view>
#include <vector>

#include <kaputil/automation/event_source.hpp>

namespace kap {

// The sinks of one event source. They may come and go while they are called.
class EventSinks {
public:
    // What follows from what a sink has answered.
    enum class Answer : std::uint8_t {
        GoOn,      // with the next sink
        Unwanted,  // the same, and this sink is not told of this event again
        Stop,      // nobody else is told
    };

    void add(std::int32_t connection, const Ref<Object>& sink);
    // False when there is no such connection.
    bool remove(std::int32_t connection);
    [[nodiscard]] bool empty() const noexcept { return sinks_.empty(); }
    [[nodiscard]] std::vector<EventSource::Connected> connected() const;

    // Calls the event's member of each sink. What one leaves in an argument passed by reference is
    // there for `answered`, which is called after it, and for the next. Raises what a sink raises,
    // and 28 when sinks raise events in one another without end.
    void tell(const MemberDescription& event, std::span<Variant> arguments,
              const std::function<Answer()>& answered) const;

private:
    struct Sink {
        EventSource::Connected held;
        bool gone = false;
        std::set<std::int32_t> unwanted;  // events' identifiers
    };
    std::vector<std::shared_ptr<Sink>> sinks_;
};

}  // namespace kap
