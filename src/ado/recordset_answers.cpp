// What a script answers: the first rows, and what comes behind them.
#include <algorithm>
#include <iterator>
#include <utility>

#include <kaputil/ado/recordset.hpp>

#include "ado/recordset_notices.hpp"
#include "ado/row_cursor.hpp"
#include "data/driver.hpp"
#include "data/failures.hpp"

namespace kap::ado {

// Shows the first rows; what statements before them wrote is passed over.
void Recordset::takeAnswers(std::vector<Result> results) {
    const auto rows =
        std::ranges::find_if(results, [](const Result& result) { return !result.columns.empty(); });
    following_.clear();
    answerNumber_ = 0;
    if (rows == results.end()) {
        return;
    }
    std::move(rows + 1, results.end(), std::back_inserter(following_));
    adopt(std::move(*rows), connection_);
}

// The same with what the script has still to answer.
void Recordset::take(Reply reply) {
    more_ = std::move(reply.rest);
    takeAnswers(std::move(reply.results));
}

// The first records have been passed and are here no longer.
void Recordset::runAgain() {
    if (request_ == nullptr || !connection_) {
        fail::cannotFetchBackward();
    }
    cursor_->table().abandonRest();  // else it were read to make way for the request
    more_.reset();
    Request request = *request_;
    Reply reply;
    try {
        connection_->run(request, reply);
        std::erase_if(reply.results, [](const Result& result) { return result.columns.empty(); });
        while (reply.rest != nullptr && answerNumber_ >= reply.results.size()) {
            auto next = connection_->nextOf(*reply.rest);
            if (!next) {
                break;
            }
            reply.results.push_back(std::move(*next));
        }
        if (answerNumber_ >= reply.results.size() ||
            !cursor_->table().startAgain(reply.results[answerNumber_])) {
            fail::cannotFetchBackward();
        }
        more_ = std::move(reply.rest);
    } catch (...) {
        forget();  // what is left of the window would end like all of the records
        throw;
    }
    cursor_->startAgain();
    if (cursor_->table().size() > 0) {
        cursor_->moveFirst();
    }
}

// Rows, or a count of rows written.
std::optional<Result> Recordset::nextAnswer() {
    const auto tells = [](const Result& result) {
        return !result.columns.empty() || result.rowsAffected;
    };
    const auto here = std::ranges::find_if(following_, tells);
    if (here != following_.end()) {
        Result next = std::move(*here);
        following_.erase(following_.begin(), here + 1);
        return next;
    }
    following_.clear();
    while (more_ != nullptr && connection_) {
        auto next = connection_->nextOf(*more_);
        if (!next || tells(*next)) {
            return next;
        }
    }
    return std::nullopt;
}

// The rows of one that is read once have to make way for those of the next.
Ref<Recordset> Recordset::NextRecordset(ByRef<Variant> recordsAffected) {
    if (cursor_ == nullptr && request_ == nullptr) {
        requireOpen();
    }
    if (cursor_ != nullptr && cursor_->editMode() != EditModeEnum::adEditNone) {
        fail::illegalOperation();
    }
    const Ref<Connection> connection = connection_;
    std::optional<Result> next = nextAnswer();
    if (!next) {
        more_.reset();
        return {};
    }
    const bool hasRows = !next->columns.empty();
    auto recordset = make<Recordset>();
    recordset->cursorType_ = cursorType_;
    recordset->lockType_ = lockType_;
    recordset->cursorLocation_ = cursorLocation_;
    recordset->connection_ = connection;
    recordset->rowsAffected_ = next->rowsAffected;
    recordset->request_ = request_;
    recordset->answerNumber_ = answerNumber_ + (hasRows ? 1 : 0);
    recordset->following_ = std::exchange(following_, {});
    recordset->more_ = std::exchange(more_, nullptr);
    const std::int64_t written = next->rowsAffected.value_or(-1);
    *recordsAffected = hasRows ? -1 : static_cast<std::int32_t>(written);
    if (hasRows) {
        recordset->adopt(std::move(*next), connection);
    }
    if (cursor_ != nullptr && cursor_->table().isReadOnce()) {
        changingAll(*this, EventReasonEnum::adRsnClose, [&] { forget(); });
    }
    return recordset;
}

}  // namespace kap::ado
