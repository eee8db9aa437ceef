// Scripts of which every answer is wanted.
#include <algorithm>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "ado/connection_notices.hpp"
#include "ado/counted.hpp"
#include "data/driver.hpp"
#include "tsql/script_split.hpp"
#include "tsql/server_error.hpp"

namespace kap::ado {

void Connection::executeAll(const String& script, std::vector<Ref<Recordset>>& answers,
                            Reading reading) {
    requireOpen();
    Execution execution{script};
    executing(Ref<Connection>(this), execution,
              [&] { executeEach(execution.source(), answers, reading); });
}

void Connection::executeEach(const String& script, std::vector<Ref<Recordset>>& answers,
                             Reading reading) {
    requireOpen();
    Request request;
    request.text = script.utf8();
    if (reading == Reading::Once) {
        request.streaming = Request::Streaming::Always;
    }
    Reply reply;
    const auto handOver = [&] {
        for (Result& result : reply.results) {
            answers.push_back(answer(std::move(result), reading));
        }
    };
    try {
        run(request, reply);
    } catch (const AutomationError&) {
        handOver();
        throw;
    }
    handOver();
}

void Connection::executeEach(const String& script, const std::function<void(Recordset&)>& take,
                             Reading reading) {
    requireOpen();
    Execution execution{script};
    executing(Ref<Connection>(this), execution,
              [&] { runEach(execution.source(), take, reading); });
}

// A failure does not end the script, unless the driver says so: the messages are gathered.
void Connection::runEach(const String& script, const std::function<void(Recordset&)>& take,
                         Reading reading) {
    requireOpen();
    Request request;
    request.text = script.utf8();
    request.oneByOne = true;
    if (reading == Reading::Once) {
        request.streaming = Request::Streaming::Always;
    }
    Reply reply;
    std::vector<ServerMessage> printed;
    std::optional<DriverError> failure;
    const auto step = [&](const std::function<void()>& work) {
        const std::shared_ptr<Session> used = session();
        const Counted running(running_);
        try {
            work();
        } catch (const DriverError& error) {
            std::ranges::copy(error.messages(), std::back_inserter(printed));
            if (!failure) {
                failure = error;
            }
        }
    };
    step([&] { session_->execute(request, reply); });
    std::ranges::move(reply.messages, std::back_inserter(printed));
    for (Result& result : reply.results) {
        take(*answer(std::move(result), reading));
    }
    bool more = reply.rest != nullptr;
    while (more) {
        std::optional<Result> next;
        step([&] {
            next = reply.rest->next(printed);
            more = next.has_value();
        });
        if (next) {
            take(*answer(std::move(*next), reading));
        }
    }
    if (failure) {
        report(printed, failure->source());
        failure->raise();
    }
    tell(printed);
}

std::vector<ScriptBatch> Connection::batchesOf(const String& script) {
    std::vector<ScriptBatch> batches;
    reporting([&] {
        try {
            for (const tsql::Batch& batch : tsql::splitScript(script.utf8())) {
                batches.push_back({batch.text, batch.firstLine, batch.count});
            }
        } catch (const tsql::ServerError& error) {
            throw DriverError(
                {{error.number(), errors::kCommandText, "42000", error.message(), error.line()}});
        }
    });
    return batches;
}

// A statement's answer: its rows, or a closed recordset that tells how many rows it wrote.
Ref<Recordset> Connection::answer(Result result, Reading reading) {
    auto recordset = make<Recordset>();
    recordset->rowsAffected_ = result.rowsAffected;
    if (!result.columns.empty()) {
        if (reading == Reading::Freely) {
            recordset->cursorLocation_ = cursorLocation_;
            recordset->cursorType_ = CursorTypeEnum::adOpenStatic;
        }
        recordset->adopt(std::move(result), Ref<Connection>(this));
    }
    return recordset;
}

}  // namespace kap::ado
