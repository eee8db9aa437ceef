#pragma once

#include <functional>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include <kaputil/ado/error.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/automation/event_source.hpp>
#include <kaputil/automation/variant.hpp>
#include <kaputil/data/enumerations.hpp>

#include "automation/event_sinks.hpp"

namespace kap::ado {

// How the sinks of one connection or recordset are told, for the length of one operation.
//
// The arguments of an event are what `given` has, the status, what is `between` it and the object,
// and the object itself. Those of a ...Complete event have the error in front of the status.
class EventCalls {
public:
    using Values = std::vector<Variant>;
    using Telling = std::function<Values()>;

    // `cancel` raises what the caller gets of an operation that a sink did not allow.
    EventCalls(const EventSource& source, Variant object, void (*cancel)())
        : sinks_(source.sinks()),
          events_(source.events()),
          object_(std::move(object)),
          cancel_(cancel) {}

    // Raises an event. What sinks leave in arguments passed by reference is in `given` afterwards.
    void tell(std::u16string_view event, Values& given, EventStatusEnum status,
              const Values& between = {}) const;
    // Raises an event before something is done, which a sink may cancel unless it was asked with
    // adStatusCantDeny.
    void ask(std::u16string_view event, Values& given,
             EventStatusEnum status = EventStatusEnum::adStatusOK,
             const Values& between = {}) const;

    // Does the work, then raises `complete`. The values around the status are asked for when the
    // work is done or has failed; the error is added. What was raised reaches the caller.
    void completing(std::u16string_view complete, const Telling& given,
                    const std::function<void()>& work, const Telling& between = {}) const;
    // Begins what ends later: raises `complete` only when the beginning has failed.
    void beginning(std::u16string_view complete, const Telling& given,
                   const std::function<void()>& work, const Telling& between = {}) const;
    // Asks with `will`, does the work, and raises `complete`, both with the same values.
    void around(std::u16string_view will, std::u16string_view complete, const Values& given,
                const std::function<void()>& work,
                EventStatusEnum asked = EventStatusEnum::adStatusOK) const;

private:
    bool call(std::u16string_view event, Values& given, EventStatusEnum status,
              const Values& between, bool mayCancel) const;
    void tellFailure(std::u16string_view complete, Values given, const AutomationError& error,
                     const Values& between) const;

    std::shared_ptr<EventSinks> sinks_;
    const ClassDescription& events_;
    Variant object_;
    void (*cancel_)();
};

}  // namespace kap::ado
