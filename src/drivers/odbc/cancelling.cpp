#include "drivers/odbc/cancelling.hpp"

namespace kap::ado::odbc {

Cancelling::Scope::Scope(Cancelling& cancelling, SQLHSTMT statement) {
    const std::lock_guard lock(cancelling.guard_);
    if (cancelling.running_ == kNoHandle) {
        cancelling.running_ = statement;
        outermost_ = &cancelling;
    }
}

Cancelling::Scope::~Scope() {
    if (outermost_ != nullptr) {
        const std::lock_guard lock(outermost_->guard_);
        outermost_->running_ = kNoHandle;
        outermost_->wanted_ = false;
    }
}

// The statement cannot be freed meanwhile.
void Cancelling::cancel() noexcept {
    const std::lock_guard lock(guard_);
    if (running_ != kNoHandle) {
        wanted_ = true;
        SQLCancel(running_);
    }
}

}  // namespace kap::ado::odbc
