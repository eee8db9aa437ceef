#include "engine/script/script_rest.hpp"

#include <algorithm>
#include <iterator>
#include <utility>

#include "engine/script/script_runner.hpp"
#include "platform/stack.hpp"

namespace kap::engine {

ScriptRest::ScriptRest(ScriptRunner& runner, std::shared_ptr<Program> program,
                       std::shared_ptr<Frame> frame, std::chrono::seconds timeout)
    : runner_(&runner), program_(std::move(program)), frame_(std::move(frame)), timeout_(timeout) {}

std::optional<ado::Result> ScriptRest::next(std::vector<ado::ServerMessage>& messages) {
    if (!ahead_.empty()) {
        ado::Result result = std::move(ahead_.front());
        ahead_.pop_front();
        return result;
    }
    if (const auto failure = std::exchange(failure_, std::nullopt)) {
        throw *failure;
    }
    std::ranges::move(std::exchange(messages_, {}), std::back_inserter(messages));
    if (runner_ == nullptr) {
        return std::nullopt;
    }
    platform::learnStack();
    std::vector<ado::Result> results;
    std::vector<ado::ServerMessage> told;
    while (results.empty() && frame_->at > 0) {
        runner_->goOn(program_, frame_, timeout_, results, told);
        if (std::ranges::any_of(told, &ado::ServerMessage::isError)) {
            std::ranges::move(results, std::back_inserter(ahead_));
            throw ado::DriverError(std::move(told), kErrorSource);
        }
    }
    std::ranges::move(told, std::back_inserter(messages));
    if (results.empty()) {
        return std::nullopt;
    }
    std::ranges::move(results, std::back_inserter(ahead_));
    ado::Result result = std::move(ahead_.front());
    ahead_.pop_front();
    return result;
}

void ScriptRest::readAhead() {
    if (frame_->at == 0) {
        return;
    }
    const bool inTransaction = runner_->inTransaction();
    frame_->oneByOne = false;
    frame_->streams = false;
    std::vector<ado::Result> results;
    try {
        runner_->goOn(program_, frame_, timeout_, results, messages_);
        ScriptRunner::raiseIfFailed(messages_);
    } catch (const ado::DriverError& error) {
        failure_ = error;
        messages_.clear();
    }
    std::ranges::move(results, std::back_inserter(ahead_));
    if (failure_ && inTransaction && !runner_->inTransaction()) {
        throw *std::exchange(failure_, std::nullopt);
    }
}

}  // namespace kap::engine
