#pragma once

#include <atomic>
#include <condition_variable>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

#include <kaputil/data/enumerations.hpp>

#include "platform/helper_thread.hpp"

namespace kap::ado {

class GradualRows;

// `finish` is called with a function that raises what the work has raised. `cancel`, from any
// thread, ends what the work runs; it may find that it has not begun.
struct BackgroundTask {
    std::function<void()> work;
    std::function<void()> cancel;
    std::function<void(const std::function<void()>& outcome)> finish;
};

// What a connection does while its client does something else.
//
// The work is of a driver alone and touches none of the client's objects. What came of it is taken
// on the thread that began it, when the client next asks for anything: nobody else calls clients.
class Background {
public:
    // Raises std::system_error when the system has no thread left.
    explicit Background(BackgroundTask task);
    // Ends the work and waits for its end.
    ~Background();
    Background(const Background&) = delete;
    Background& operator=(const Background&) = delete;

    // Whether this is the thread that began it, which alone may wait and finish.
    [[nodiscard]] bool isOwners() const noexcept { return owner_ == std::this_thread::get_id(); }
    [[nodiscard]] bool isOver();
    void wait();
    // From any thread.
    void cancel();
    // Takes what came of it.
    void finish();

private:
    void run() noexcept;
    [[nodiscard]] bool isGone() const noexcept;

    BackgroundTask task_;
    std::thread::id owner_ = std::this_thread::get_id();
    std::mutex guard_;
    std::condition_variable ended_;
    bool over_ = false;
    bool cancelled_ = false;
    std::exception_ptr failure_;
    platform::HelperThread thread_;
};

// What a connection has in the background.
struct InBackground {
    std::atomic<ObjectStateEnum> doing{ObjectStateEnum::adStateClosed};
    std::atomic<bool> fetches{false};
    std::mutex guard;  // of what follows
    std::shared_ptr<Background> running;
    std::weak_ptr<GradualRows> rows;  // that come
};

}  // namespace kap::ado
