// Opening and executing while the client does something else.
#include <chrono>
#include <mutex>
#include <system_error>
#include <utility>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/error.hpp>

#include "ado/background.hpp"
#include "ado/gradual_rows.hpp"
#include "ado/later_execution.hpp"
#include "ado/request_builder.hpp"
#include "ado/results.hpp"
#include "data/driver.hpp"
#include "data/failures.hpp"
#include "drivers/driver_registry.hpp"

namespace kap::ado {

std::shared_ptr<Background> Connection::background() const {
    if (inBackground_->doing == ObjectStateEnum::adStateClosed) {
        return nullptr;
    }
    const std::lock_guard lock(inBackground_->guard);
    return inBackground_->running;
}

// Where the system has no thread left it is done at once.
void Connection::begin(ObjectStateEnum doing, const BackgroundTask& task) {
    try {
        auto background = std::make_shared<Background>(task);
        const std::lock_guard lock(inBackground_->guard);
        inBackground_->running = std::move(background);
        inBackground_->doing = doing;
    } catch (const std::system_error&) {
        task.finish(task.work);
    }
}

bool Connection::runsLater(std::int32_t options) const {
    return asksNotToWait(options) && !foreign_;
}

// Nobody waits for it who could be told what a sink has raised.
void Connection::settle() const {
    const auto ended = background();
    if (ended == nullptr || !ended->isOwners() || !ended->isOver()) {
        return;
    }
    const Ref<const Connection> self(this);  // a sink may drop the client's reference
    {
        const std::lock_guard lock(inBackground_->guard);
        inBackground_->doing = ObjectStateEnum::adStateClosed;
        inBackground_->running.reset();
    }
    try {
        ended->finish();
    } catch (const AutomationError&) {
        return;  // the connection's errors have it
    }
}

void Connection::requireSettled() const {
    const std::atomic<ObjectStateEnum>& doing = inBackground_->doing;
    if (doing == ObjectStateEnum::adStateClosed) {
        return;
    }
    settle();
    if (doing == ObjectStateEnum::adStateConnecting) {
        fail::stillConnecting();
    }
    if (doing != ObjectStateEnum::adStateClosed) {
        fail::stillExecuting();
    }
}

std::shared_ptr<GradualRows> Connection::rowsInBackground() const {
    if (!inBackground_->fetches) {
        return nullptr;
    }
    const std::lock_guard lock(inBackground_->guard);
    auto rows = inBackground_->rows.lock();
    inBackground_->fetches = rows != nullptr;
    return rows;
}

void Connection::endBackground() {
    if (const auto running = background()) {
        running->cancel();
        running->wait();
        settle();
    }
    if (const auto rows = rowsInBackground()) {
        rows->cancel();
        rows->waitForAll();
    }
}

void Connection::fetching(const std::shared_ptr<GradualRows>& rows) {
    const std::lock_guard lock(inBackground_->guard);
    inBackground_->rows = rows;
    inBackground_->fetches = true;
}

void Connection::openLater(Opening& wanted) {
    const auto opening = std::make_shared<std::unique_ptr<Session>>();
    const auto start = [&] {
        const ado::ConnectionString keys = prepared(wanted);
        const std::chrono::seconds timeout(connectionTimeout_);
        const auto finish = [this, wanted, opening](const std::function<void()>& outcome) {
            const auto conclude = [&] {
                reporting(outcome);
                opened(wanted);
                session_ = std::move(*opening);  // last: what cannot be finished leaves it closed
            };
            if (isObserved()) {
                ConnectionNotices(*this).afterOpening(conclude);
            } else {
                conclude();
            }
        };
        begin(ObjectStateEnum::adStateConnecting,
              {[keys, timeout, opening] { *opening = driverFor(keys).open(keys, timeout); }, [] {},
               finish});
    };
    if (isObserved()) {
        if (wanted.connectionString.empty()) {
            wanted.connectionString = keys_;
        }
        ConnectionNotices(*this).beforeOpening(wanted, start);
    } else {
        start();
    }
}

void Connection::conclude(LaterExecution& later, const std::function<void()>& outcome,
                          const std::function<void(LaterExecution&)>& take) {
    later.hold();
    if (later.execution.recordset) {
        later.execution.recordset->awaits(nullptr);
    }
    if (later.execution.command) {
        later.execution.command->awaits(nullptr);
    }
    const auto taking = [&] {
        reporting(outcome);
        tell(later.reply.messages);
        later.execution.rowsAffected = rowsWritten(later.reply.results);
        take(later);
    };
    if (isObserved()) {
        ConnectionNotices(*this).afterExecution(later.execution, taking);
    } else {
        taking();
    }
    later.release();
}

void Connection::runLater(const std::shared_ptr<LaterExecution>& later,
                          const std::function<Request(const LaterExecution&)>& request,
                          const std::function<void(LaterExecution&)>& take,
                          const std::function<void(const std::function<void()>&)>& around) {
    const auto start = [&] {
        const std::shared_ptr<Session> used = session();
        later->request = std::make_shared<Request>(request(*later));
        if (later->request->table) {
            later->request->text = "SELECT * FROM " + used->quotedName(later->request->text);
            later->request->table = false;
        }
        const auto finish = [this, later, take, around](const std::function<void()>& outcome) {
            const auto concluding = [&] { conclude(*later, outcome, take); };
            if (around) {
                around(concluding);
            } else {
                concluding();
            }
        };
        begin(ObjectStateEnum::adStateExecuting,
              {[used, later] { used->execute(*later->request, later->reply); },
               [used] { used->cancel(); }, finish});
    };
    if (isObserved()) {
        later->hold();
        ConnectionNotices(*this).beforeExecution(later->execution, start);
        later->release();
    } else {
        start();
    }
}

Ref<Recordset> Connection::executeLater(const String& commandText, std::int32_t options) {
    const auto later = std::make_shared<LaterExecution>(commandText, options);
    const bool noRecords = wantsNoRecords(options);
    auto records = noRecords ? make<Recordset>() : recordsetFor(Ref<Connection>(this));
    runLater(
        later,
        [&](const LaterExecution& wanted) {
            later->recordset = noRecords ? nullptr : records.get();
            Request request = requestFor(wanted.execution.source(), wanted.execution.options);
            request.timeout = std::chrono::seconds(CommandTimeout());
            if (!noRecords) {
                comeAsNeeded(request, records->isReadOnce(), wanted.execution.options);
            }
            return request;
        },
        [this, noRecords](LaterExecution& ran) {
            takeRecords(ran, Ref<Connection>(this), noRecords);
        });
    if (!noRecords) {
        records->awaits(later);
    }
    return records;
}

}  // namespace kap::ado
