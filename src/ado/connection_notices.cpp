#include "ado/connection_notices.hpp"

#include <kaputil/automation/convert.hpp>

#include "data/failures.hpp"

namespace kap::ado {
namespace {

EventCalls::Values nothing() {
    return {};
}

EventCalls::Telling objectsOf(const Execution& execution) {
    return [&execution] {
        return EventCalls::Values{Variant(execution.command), Variant(execution.recordset)};
    };
}

EventCalls::Telling rowsOf(const Execution& execution) {
    return [&execution] { return EventCalls::Values{execution.rowsAffected}; };
}

}  // namespace

ConnectionNotices::ConnectionNotices(Connection& connection)
    : connection_(&connection),
      calls_(connection, Variant(connection_), &fail::operationCancelled) {}

void ConnectionNotices::ask(Opening& opening) const {
    EventCalls::Values asked = {opening.connectionString, opening.userId, opening.password,
                                opening.options};
    calls_.ask(u"WillConnect", asked);
    opening = {convert::toString(asked[0]), convert::toString(asked[1]),
               convert::toString(asked[2]), convert::toLong(asked[3])};
}

void ConnectionNotices::aroundOpening(Opening opening,
                                      const std::function<void(const Opening&)>& open) const {
    calls_.completing(u"ConnectComplete", nothing, [&] {
        ask(opening);
        open(opening);
    });
}

void ConnectionNotices::beforeOpening(Opening& opening, const std::function<void()>& begin) const {
    calls_.beginning(u"ConnectComplete", nothing, [&] {
        ask(opening);
        begin();
    });
}

void ConnectionNotices::afterOpening(const std::function<void()>& conclude) const {
    calls_.completing(u"ConnectComplete", nothing, conclude);
}

void ConnectionNotices::disconnected() const {
    EventCalls::Values none;
    calls_.tell(u"Disconnect", none, EventStatusEnum::adStatusOK);
}

void ConnectionNotices::ask(Execution& execution) const {
    EventCalls::Values asked = {execution.given, static_cast<std::int32_t>(execution.cursorType),
                                static_cast<std::int32_t>(execution.lockType), execution.options};
    calls_.ask(u"WillExecute", asked, EventStatusEnum::adStatusOK, objectsOf(execution)());
    execution.changed = convert::toString(asked[0]);
    execution.cursorType = static_cast<CursorTypeEnum>(convert::toLong(asked[1]));
    execution.lockType = static_cast<LockTypeEnum>(convert::toLong(asked[2]));
    execution.options = convert::toLong(asked[3]);
}

void ConnectionNotices::aroundExecution(Execution& execution,
                                        const std::function<void()>& work) const {
    const auto run = [&] {
        ask(execution);
        work();
    };
    calls_.completing(u"ExecuteComplete", rowsOf(execution), run, objectsOf(execution));
}

void ConnectionNotices::beforeExecution(Execution& execution,
                                        const std::function<void()>& begin) const {
    const auto beginning = [&] {
        ask(execution);
        begin();
    };
    calls_.beginning(u"ExecuteComplete", rowsOf(execution), beginning, objectsOf(execution));
}

void ConnectionNotices::afterExecution(Execution& execution,
                                       const std::function<void()>& conclude) const {
    calls_.completing(u"ExecuteComplete", rowsOf(execution), conclude, objectsOf(execution));
}

void ConnectionNotices::informed() const {
    if (connection_->Errors()->Count() > 0) {
        EventCalls::Values message = {Variant(connection_->Errors()->Item(0))};
        calls_.tell(u"InfoMessage", message, EventStatusEnum::adStatusOK);
    }
}

void ConnectionNotices::afterTransaction(std::u16string_view complete,
                                         const std::function<void()>& work,
                                         const EventCalls::Telling& given) const {
    calls_.completing(complete, given ? given : EventCalls::Telling(nothing), work);
}

}  // namespace kap::ado
