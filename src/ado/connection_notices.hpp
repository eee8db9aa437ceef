#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <utility>

#include <kaputil/ado/command.hpp>
#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>

#include "ado/event_calls.hpp"

namespace kap::ado {

// What is run on a connection, as its sinks are told and may change it, and what came of it.
struct Execution {
    const String& given;
    CursorTypeEnum cursorType = CursorTypeEnum::adOpenForwardOnly;
    LockTypeEnum lockType = LockTypeEnum::adLockReadOnly;
    std::int32_t options = -1;
    Ref<Command> command = {};
    Ref<Recordset> recordset = {};
    std::optional<String> changed = {};
    Variant rowsAffected = std::int32_t{-1};

    [[nodiscard]] const String& source() const { return changed ? *changed : given; }
};

// How a connection is to be opened.
struct Opening {
    String connectionString;
    String userId;
    String password;
    std::int32_t options = -1;
};

// The events of a connection around what it does.
class ConnectionNotices {
public:
    explicit ConnectionNotices(Connection& connection);

    // `open` gets what the sinks have made of it.
    void aroundOpening(Opening opening, const std::function<void(const Opening&)>& open) const;
    // The same of one that ends later, which `begin` begins.
    void beforeOpening(Opening& opening, const std::function<void()>& begin) const;
    void afterOpening(const std::function<void()>& conclude) const;
    void disconnected() const;
    // The work leaves in the execution what came of it.
    void aroundExecution(Execution& execution, const std::function<void()>& work) const;
    void beforeExecution(Execution& execution, const std::function<void()>& begin) const;
    void afterExecution(Execution& execution, const std::function<void()>& conclude) const;
    void informed() const;
    void afterTransaction(std::u16string_view complete, const std::function<void()>& work,
                          const EventCalls::Telling& given = {}) const;

private:
    void ask(Opening& opening) const;
    void ask(Execution& execution) const;

    Ref<Connection> connection_;  // a sink may drop the client's reference
    EventCalls calls_;
};

// Runs what the execution says on a connection; without one the work raises that there is none.
template <class Work>
void executing(const Ref<Connection>& connection, Execution& execution, const Work& work) {
    if (connection && connection->isObserved()) {
        ConnectionNotices(*connection).aroundExecution(execution, work);
    } else {
        work();
    }
}

// Begins or ends a transaction.
template <class Work>
void inTransaction(Connection& connection, std::u16string_view complete, const Work& work,
                   const EventCalls::Telling& given = {}) {
    if (connection.isObserved()) {
        ConnectionNotices(connection).afterTransaction(complete, work, given);
    } else {
        work();
    }
}

}  // namespace kap::ado
