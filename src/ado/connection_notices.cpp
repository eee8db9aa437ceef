#include "ado/connection_notices.hpp"

#include <kaputil/automation/convert.hpp>

#include "data/failures.hpp"

namespace kap::ado {

ConnectionNotices::ConnectionNotices(Connection& connection)
    : connection_(&connection),
      calls_(connection, Variant(connection_), &fail::operationCancelled) {}

void ConnectionNotices::aroundOpening(Opening opening,
                                      const std::function<void(const Opening&)>& open) const {
    const auto nothing = [] { return EventCalls::Values(); };
    calls_.completing(u"ConnectComplete", nothing, [&] {
        EventCalls::Values asked = {opening.connectionString, opening.userId, opening.password,
                                    opening.options};
        calls_.ask(u"WillConnect", asked);
        opening = {convert::toString(asked[0]), convert::toString(asked[1]),
                   convert::toString(asked[2]), convert::toLong(asked[3])};
        open(opening);
    });
}

void ConnectionNotices::disconnected() const {
    EventCalls::Values nothing;
    calls_.tell(u"Disconnect", nothing, EventStatusEnum::adStatusOK);
}

void ConnectionNotices::aroundExecution(Execution& execution,
                                        const std::function<void()>& work) const {
    const auto others = [&] {
        return EventCalls::Values{Variant(execution.command), Variant(execution.recordset)};
    };
    const auto came = [&] { return EventCalls::Values{execution.rowsAffected}; };
    const auto run = [&] {
        EventCalls::Values asked = {
            execution.given, static_cast<std::int32_t>(execution.cursorType),
            static_cast<std::int32_t>(execution.lockType), execution.options};
        calls_.ask(u"WillExecute", asked, EventStatusEnum::adStatusOK, others());
        execution.changed = convert::toString(asked[0]);
        execution.cursorType = static_cast<CursorTypeEnum>(convert::toLong(asked[1]));
        execution.lockType = static_cast<LockTypeEnum>(convert::toLong(asked[2]));
        execution.options = convert::toLong(asked[3]);
        work();
    };
    calls_.completing(u"ExecuteComplete", came, run, others);
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
    const auto nothing = [] { return EventCalls::Values(); };
    calls_.completing(complete, given ? given : EventCalls::Telling(nothing), work);
}

}  // namespace kap::ado
