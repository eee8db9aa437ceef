#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "ado/connection_notices.hpp"
#include "data/driver.hpp"

namespace kap::ado {

// What a connection runs in the background, and for whom. Who waits for it is not kept alive by it:
// a client that drops the objects has dropped what came of it, too.
struct LaterExecution {
    LaterExecution(String text, std::int32_t options) : source(std::move(text)) {
        execution.options = options;
    }

    // Keeps for whom it is, while they or others are told of it.
    void hold() {
        execution.command = Ref<Command>(command);
        execution.recordset = Ref<Recordset>(recordset);
    }
    void release() {
        execution.command = {};
        execution.recordset = {};
    }

    String source;
    Execution execution{source};
    std::shared_ptr<Request> request;
    Reply reply;
    Recordset* recordset = nullptr;  // that gets the rows; null: its client has dropped it
    Command* command = nullptr;      // that is run; null: none, or its client has dropped it
};

// Whether options ask for not waiting till the work is done.
[[nodiscard]] inline bool asksNotToWait(std::int32_t options) noexcept {
    return options >= 0 &&
           (options & static_cast<std::int32_t>(ExecuteOptionEnum::adAsyncExecute)) != 0;
}

}  // namespace kap::ado
