// Being opened, and getting rows, while the client does something else.
#include <chrono>
#include <memory>
#include <system_error>
#include <utility>

#include <kaputil/ado/command.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "ado/gradual_rows.hpp"
#include "ado/later_execution.hpp"
#include "ado/recordset_notices.hpp"
#include "ado/request_builder.hpp"
#include "ado/row_cursor.hpp"
#include "data/failures.hpp"

namespace kap::ado {

void Recordset::awaits(std::shared_ptr<LaterExecution> later) {
    if (awaited_ != nullptr) {
        awaited_->recordset = nullptr;
    }
    awaited_ = std::move(later);
}

bool Recordset::isExecuting() const {
    if (awaited_ == nullptr) {
        return false;
    }
    const Ref<Connection> connection = connection_;
    connection->settle();
    return awaited_ != nullptr;
}

// What a client is not told here it finds among the connection's errors.
void Recordset::openLater(std::int32_t options) {
    const Ref<Connection> connection = command_ ? command_->connection() : connection_;
    if (!connection) {
        fail::invalidConnection();
    }
    const auto later = std::make_shared<LaterExecution>(
        command_ ? command_->CommandText() : convert::toString(source_), options);
    later->recordset = this;
    later->command = command_.get();
    later->execution.cursorType = cursorType_;
    later->execution.lockType = lockType_;
    const auto request = [this](const LaterExecution& wanted) {
        setCursorType(wanted.execution.cursorType);
        setLockType(wanted.execution.lockType);
        Request made = command_ ? command_->requestOf(wanted.execution)
                                : requestFor(wanted.execution.source(), wanted.execution.options);
        if (!command_) {
            made.timeout = std::chrono::seconds(connection_->CommandTimeout());
        }
        comeAsNeeded(made, isReadOnce(), wanted.execution.options);
        return made;
    };
    const auto take = [](LaterExecution& ran) {
        if (ran.execution.command) {
            ran.execution.command->takeBack(*ran.request);
        }
        if (const Ref<Recordset>& rows = ran.execution.recordset) {
            rows->request_ = ran.request;
            rows->take(std::move(ran.reply));
        }
    };
    const auto around = [later, filter = filter_,
                         sort = sort_](const std::function<void()>& conclude) {
        const Ref<Recordset> rows(later->recordset);
        const auto open = [&] {
            conclude();
            if (rows && rows->cursor_ != nullptr) {
                rows->arrangeAsChosen(filter, sort);
            }
        };
        if (rows && rows->isObserved()) {
            RecordsetNotices(*rows).afterOpening(open);
        } else {
            open();
        }
    };
    connection->runLater(later, request, take, around);
    attach(connection);
    awaits(later);
    if (command_) {
        command_->awaits(later);
    }
}

// Where the system has no thread left the rows come when they are needed.
void Recordset::fetchGradually(RowTable& table) {
    using Fetching = Request::Fetching;
    fetchesOn_ = false;
    if (request_ == nullptr || request_->fetching == Fetching::WhenNeeded || isReadOnce()) {
        return;
    }
    fetchesOn_ = true;
    if (table.complete() || !connection_) {
        return;
    }
    try {
        auto rows = std::make_shared<GradualRows>(table.result().rest, table.columns());
        connection_->fetching(rows);
        table.comeGradually(std::move(rows), request_->fetching == Fetching::Background);
    } catch (const std::system_error&) {
        return;
    }
}

// Nobody waits for the rows who could be told why they do not come: the sinks are, and whoever goes
// beyond the rows that have come. Those that the client has ended are all.
void Recordset::takeReady() const {
    if (!fetchesOn_ || cursor_ == nullptr) {
        return;
    }
    const Ref<Recordset> self(const_cast<Recordset*>(this));
    const std::shared_ptr<RowCursor> cursor = cursor_;
    RowTable& table = cursor->table();
    const auto fetch = [&] {
        if (table.isGradual()) {
            self->reportingFetch([&] { static_cast<void>(table.takeReady()); });
        }
    };
    const std::size_t before = table.size();
    try {
        if (isObserved()) {
            RecordsetNotices(*self).fetching(fetch);
        } else {
            fetch();
        }
    } catch (const AutomationError& error) {
        if (error.number() == errors::kOperationCancelled) {
            table.abandonRest();
        }
        fetchesOn_ = false;
        return;
    }
    fetchesOn_ = !table.complete();
    if (isObserved()) {
        RecordsetNotices(*self).fetched(table.size() - before, table.size(), !fetchesOn_);
    }
}

}  // namespace kap::ado
