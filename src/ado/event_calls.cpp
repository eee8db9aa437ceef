#include "ado/event_calls.hpp"

#include <kaputil/automation/convert.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "data/driver.hpp"

namespace kap::ado {
namespace {

Variant ofStatus(EventStatusEnum status) {
    return static_cast<std::int32_t>(status);
}

Ref<Error> errorObject(const AutomationError& error) {
    Error::Details details{error.number(), 0, error.description(), error.source(), {}, 0};
    if (const auto* ofDriver = dynamic_cast<const DriverError*>(&error)) {
        for (const ServerMessage& message : ofDriver->messages()) {
            if (message.isError()) {
                details.nativeError = message.nativeNumber;
                details.sqlState = message.state;
                details.line = message.line;
                break;
            }
        }
    }
    return make<Error>(std::move(details));
}

// An opening that a sink did not allow is told as such.
EventStatusEnum failedStatus(std::u16string_view complete, const AutomationError& error) {
    return complete == u"ConnectComplete" && error.number() == errors::kOperationCancelled
               ? EventStatusEnum::adStatusCancel
               : EventStatusEnum::adStatusErrorsOccurred;
}

}  // namespace

bool EventCalls::call(std::u16string_view event, Values& given, EventStatusEnum status,
                      const Values& between, bool mayCancel) const {
    if (sinks_ == nullptr) {
        return false;
    }
    Values arguments = given;
    const std::size_t place = arguments.size();
    arguments.push_back(ofStatus(status));
    arguments.insert(arguments.end(), between.begin(), between.end());
    arguments.push_back(object_);
    bool cancelled = false;
    sinks_->tell(*events_.find(event), arguments, [&] {
        const auto answer = static_cast<EventStatusEnum>(
            convert::toLong(std::exchange(arguments[place], ofStatus(status))));
        cancelled = mayCancel && answer == EventStatusEnum::adStatusCancel;
        if (cancelled) {
            return EventSinks::Answer::Stop;
        }
        return answer == EventStatusEnum::adStatusUnwantedEvent ? EventSinks::Answer::Unwanted
                                                                : EventSinks::Answer::GoOn;
    });
    arguments.resize(place);
    given = std::move(arguments);
    return cancelled;
}

void EventCalls::tell(std::u16string_view event, Values& given, EventStatusEnum status,
                      const Values& between) const {
    call(event, given, status, between, /*mayCancel=*/false);
}

void EventCalls::ask(std::u16string_view event, Values& given, EventStatusEnum status,
                     const Values& between) const {
    if (call(event, given, status, between, status == EventStatusEnum::adStatusOK)) {
        cancel_();
    }
}

// What was raised first is what the caller has to see, whatever a sink raises on hearing of it.
void EventCalls::tellFailure(std::u16string_view complete, Values given,
                             const AutomationError& error, const Values& between) const {
    given.emplace_back(errorObject(error));
    try {
        tell(complete, given, failedStatus(complete, error), between);
    } catch (const AutomationError&) {
        return;
    }
}

void EventCalls::beginning(std::u16string_view complete, const Telling& given,
                           const std::function<void()>& work, const Telling& between) const {
    try {
        work();
    } catch (const AutomationError& error) {
        tellFailure(complete, given(), error, between ? between() : Values());
        throw;
    }
}

void EventCalls::completing(std::u16string_view complete, const Telling& given,
                            const std::function<void()>& work, const Telling& between) const {
    beginning(complete, given, work, between);
    Values told = given();
    told.emplace_back(Ref<Object>());
    tell(complete, told, EventStatusEnum::adStatusOK, between ? between() : Values());
}

void EventCalls::around(std::u16string_view will, std::u16string_view complete, const Values& given,
                        const std::function<void()>& work, EventStatusEnum asked) const {
    completing(
        complete, [&] { return given; },
        [&] {
            Values values = given;
            ask(will, values, asked);
            work();
        });
}

}  // namespace kap::ado
