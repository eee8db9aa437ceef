#include "drivers/odbc/batch_insertion.hpp"

namespace kap::ado::odbc {
namespace {

constexpr std::size_t kFewestByText = 20;
constexpr std::size_t kMostRequestParameters = 2000;
// One row by itself takes so many times as long as one among many.
constexpr std::size_t kSeldom = 20;

}  // namespace

void BatchInsertion::append(Session& session, const RowBatch& batch, std::chrono::seconds timeout) {
    RowBatch rest = batch;
    if (batch.count >= kFewestByText && JsonInsertion::fits(batch)) {
        if (!reading_) {
            reading_ = JsonInsertion::readingOf(connection_, timeout);
        }
        if (*reading_ != JsonInsertion::Reading::None) {
            appendByTexts(session, rest, timeout);
        }
    }
    appendByParameters(session, rest, timeout);
}

void BatchInsertion::appendByTexts(Session& session, RowBatch& rest, std::chrono::seconds timeout) {
    if (!texts_ || !texts_->isFor(rest)) {
        texts_.reset();
        texts_.emplace(connection_, *reading_, rest, timeout);
    }
    while (rest.count >= kFewestByText) {
        const JsonInsertion::Taken taken = texts_->take(rest);
        RowBatch part = rest;
        part.count = taken.rows;
        if (taken.others.size() * kSeldom > taken.rows) {
            appendByParameters(session, part, timeout);
        } else {
            texts_->run(timeout);
            part.count = 1;
            for (const std::size_t row : taken.others) {
                part.first = row;
                appendByRequests(session, part, kMostRequestParameters);
            }
        }
        rest.first += taken.rows;
        rest.count -= taken.rows;
    }
}

// What is too few for a statement of many rows, or too long, goes by statements of its own.
void BatchInsertion::appendByParameters(Session& session, RowBatch rest,
                                        std::chrono::seconds timeout) {
    if (RowInsertion::fits(rest) && rest.count >= RowInsertion::rowsAtOnce(rest)) {
        if (!parameters_ || !parameters_->isFor(rest)) {
            parameters_.reset();
            parameters_.emplace(connection_, rest, timeout);
        }
        while (rest.count >= parameters_->rows() && parameters_->run(rest, rest.first, timeout)) {
            rest.first += parameters_->rows();
            rest.count -= parameters_->rows();
        }
    }
    appendByRequests(session, rest, kMostRequestParameters);
}

void BatchInsertion::forget() {
    texts_.reset();
    parameters_.reset();
}

}  // namespace kap::ado::odbc
