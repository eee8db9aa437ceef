#pragma once

#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <string>

#include "platform/helper_thread.hpp"

namespace kap::engine {

// What stands in the middle of its rows, and so holds a state of the database.
class StandingReader {
public:
    StandingReader() = default;
    StandingReader(const StandingReader&) = delete;
    StandingReader& operator=(const StandingReader&) = delete;
    virtual ~StandingReader() = default;
    // Takes what is left of the rows into memory. Called with the watch's guard locked.
    virtual void takeRest() noexcept = 0;
};

// Watches the write-ahead journal while a reader of a connection stands in the middle of its rows.
//
// What is written meanwhile, by whomever, cannot go from the journal to the file, so that the
// journal grows. When it has grown too large the reader is made to take the rest of its rows, and
// the journal is used anew. A thread of the watch's own does that: the reader may stand still, and
// those who write may be other programs.
class JournalWatch {
public:
    // A journal of this size lets a reader go on; one that was larger when the reader began, until
    // it has grown by so much. Beyond the last no reader is left standing.
    static constexpr std::uintmax_t kLarge = std::uintmax_t{64} << 20U;
    static constexpr std::uintmax_t kGrowth = std::uintmax_t{32} << 20U;
    static constexpr std::uintmax_t kTooLarge = std::uintmax_t{512} << 20U;

    // `journal` in UTF-8; empty: there is none, and readers keep others from writing.
    explicit JournalWatch(const std::string& journal);
    JournalWatch(const JournalWatch&) = delete;
    JournalWatch& operator=(const JournalWatch&) = delete;
    ~JournalWatch();

    // Whether readers may stand without others waiting for them.
    [[nodiscard]] bool allows() const noexcept;
    // To be locked by whoever works with the standing reader's connection.
    [[nodiscard]] std::mutex& guard() noexcept { return guard_; }
    // With the guard locked: the reader stands until end(). Raises std::system_error, and it must
    // not, when the journal is too large already or the system has no thread for the watch.
    void begin(StandingReader& reader);
    void end() noexcept { reader_ = nullptr; }

private:
    void watch();
    [[nodiscard]] std::uintmax_t size() const noexcept;

    std::filesystem::path journal_;
    std::mutex guard_;
    std::condition_variable wake_;
    StandingReader* reader_ = nullptr;
    std::uintmax_t most_ = 0;  // bytes of the journal, for the reader that stands
    bool asleep_ = false;      // until somebody wakes the thread
    bool over_ = false;
    platform::HelperThread thread_;
};

}  // namespace kap::engine
