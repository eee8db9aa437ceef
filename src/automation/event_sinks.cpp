#include "automation/event_sinks.hpp"

#include <algorithm>

#include <kaputil/automation/error.hpp>

namespace kap {
namespace {

// How deep events may be raised within events: deeper than programs mean to, and little enough for
// the stacks of script hosts, each level being a whole call of a client.
constexpr int kDeepestEvents = 32;

// One event within others of this thread, for as long as it lives.
class EventGuard {
public:
    EventGuard() {
        if (level() == kDeepestEvents) {
            throw AutomationError(errors::kOutOfStack);
        }
        ++level();
    }
    EventGuard(const EventGuard&) = delete;
    EventGuard& operator=(const EventGuard&) = delete;
    ~EventGuard() { --level(); }

private:
    static int& level() noexcept {
        thread_local int current = 0;
        return current;
    }
};

// What belongs to the caller's variables goes back there; the rest was the sink's own copy.
void takeBack(const MemberDescription& event, std::vector<Variant>& passed,
              std::span<Variant> arguments) {
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (event.parameters[i].byReference) {
            arguments[i] = std::move(passed[i]);
        }
    }
}

}  // namespace

void EventSinks::add(std::int32_t connection, const Ref<Object>& sink) {
    auto made = std::make_shared<Sink>();
    made->held = {connection, sink};
    sinks_.push_back(std::move(made));
}

bool EventSinks::remove(std::int32_t connection) {
    const auto found = std::ranges::find_if(sinks_, [&](const std::shared_ptr<Sink>& one) {
        return one->held.connection == connection;
    });
    if (found == sinks_.end()) {
        return false;
    }
    const std::shared_ptr<Sink> removed = *found;  // its object may end only when it is out
    removed->gone = true;
    sinks_.erase(found);
    return true;
}

std::vector<EventSource::Connected> EventSinks::connected() const {
    std::vector<EventSource::Connected> all;
    all.reserve(sinks_.size());
    for (const std::shared_ptr<Sink>& one : sinks_) {
        all.push_back(one->held);
    }
    return all;
}

void EventSinks::tell(const MemberDescription& event, std::span<Variant> arguments,
                      const std::function<Answer()>& answered) const {
    const EventGuard guard;
    const std::vector<std::shared_ptr<Sink>> now = sinks_;
    for (const std::shared_ptr<Sink>& one : now) {
        if (one->gone || one->unwanted.contains(event.dispatchId)) {
            continue;
        }
        const Ref<Object> object = one->held.sink;
        const auto member = object->memberId(event.name);
        if (!member) {
            continue;
        }
        std::vector<Variant> passed(arguments.begin(), arguments.end());
        object->invoke(*member, InvokeKind::Method, {passed, {}});
        takeBack(event, passed, arguments);
        switch (answered()) {
            case Answer::GoOn:
                break;
            case Answer::Unwanted:
                one->unwanted.insert(event.dispatchId);
                break;
            case Answer::Stop:
                return;
        }
    }
}

EventSource::~EventSource() = default;

std::int32_t EventSource::connect(const Ref<Object>& sink) {
    if (!sink) {
        throw AutomationError(errors::kObjectNotSet);
    }
    if (sinks_ == nullptr) {
        sinks_ = std::make_shared<EventSinks>();
        observed();
    }
    sinks_->add(++lastConnection_, sink);
    return lastConnection_;
}

void EventSource::disconnect(std::int32_t connection) {
    const std::shared_ptr<EventSinks> sinks = sinks_;  // who is told at the moment goes on
    if (sinks == nullptr || !sinks->remove(connection)) {
        throw AutomationError(errors::kInvalidArgument);
    }
    if (sinks->empty()) {
        sinks_.reset();
    }
}

std::vector<EventSource::Connected> EventSource::connected() const {
    return sinks_ == nullptr ? std::vector<Connected>() : sinks_->connected();
}

}  // namespace kap
