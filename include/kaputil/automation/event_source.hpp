#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include <kaputil/automation/class_description.hpp>
#include <kaputil/base/export.hpp>

namespace kap {

class EventSinks;

// An object that tells clients what happens to it. A client connects an object of its own, a sink,
// whose members have the names of the events; a member that it has not is not called.
//
// A sink is called on the thread of the object, while the member that raises the event runs, and
// may call the object itself. What a sink raises reaches the caller of that member. The object
// keeps its sinks: one that refers to the object in turn has to be disconnected, or neither ends.
class KAPUTIL_EXPORT EventSource {
public:
    EventSource(const EventSource&) = delete;
    EventSource& operator=(const EventSource&) = delete;

    struct Connected {
        std::int32_t connection = 0;
        Ref<Object> sink;
    };

    // The events, as the members of the interface that sinks have.
    [[nodiscard]] virtual const ClassDescription& events() const = 0;
    // Calls the sink from now on. The result names the connection for disconnect. Raises 91 for the
    // unset object.
    std::int32_t connect(const Ref<Object>& sink);
    // Calls the sink no more. Raises 5 for what names no connection.
    void disconnect(std::int32_t connection);
    // The sinks in the order in which they are called.
    [[nodiscard]] std::vector<Connected> connected() const;

    // Whether there is a sink: nobody else pays for events.
    [[nodiscard]] bool isObserved() const noexcept { return sinks_ != nullptr; }
    // For who raises the events; unset without a sink.
    [[nodiscard]] const std::shared_ptr<EventSinks>& sinks() const noexcept { return sinks_; }

protected:
    EventSource() = default;
    virtual ~EventSource();

private:
    // Called when the first sink has come.
    virtual void observed() {}

    std::shared_ptr<EventSinks> sinks_;
    std::int32_t lastConnection_ = 0;
};

}  // namespace kap
