#pragma once

#include <atomic>
#include <mutex>

#include "drivers/odbc/api.hpp"

namespace kap::ado::odbc {

// Lets another thread end what a connection's own is waiting for: the driver's interface has one
// call that may be made on a statement while another call on it has not come back.
class Cancelling {
public:
    // What is asked of a statement while the object lives can be ended. Within another one it means
    // nothing. The statement is freed behind it.
    class Scope {
    public:
        Scope(Cancelling& cancelling, SQLHSTMT statement);
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        Cancelling* outermost_ = nullptr;
    };

    // From any thread. Where nothing runs, nothing happens.
    void cancel() noexcept;
    // Whether what runs has been told to end. Some drivers answer as if it had come to its end.
    [[nodiscard]] bool isWanted() const noexcept { return wanted_; }

private:
    std::mutex guard_;
    SQLHSTMT running_ = kNoHandle;
    std::atomic<bool> wanted_{false};
};

}  // namespace kap::ado::odbc
