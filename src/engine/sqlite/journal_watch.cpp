#include "engine/sqlite/journal_watch.hpp"

#include <algorithm>
#include <chrono>
#include <system_error>

namespace kap::engine {
namespace {

constexpr std::chrono::milliseconds kBetweenLooks{100};
// A program that reads one query reads others soon, and waking a thread costs more than a look.
constexpr int kLooksForNobody = 50;

}  // namespace

JournalWatch::JournalWatch(const std::string& journal)
    : journal_(std::u8string(journal.begin(), journal.end())) {}

JournalWatch::~JournalWatch() {
    if (!thread_.isHere()) {
        return;
    }
    {
        const std::lock_guard lock(guard_);
        over_ = true;
    }
    wake_.notify_one();
}

std::uintmax_t JournalWatch::size() const noexcept {
    std::error_code failure;
    const std::uintmax_t bytes = std::filesystem::file_size(journal_, failure);
    return failure ? 0 : bytes;
}

bool JournalWatch::allows() const noexcept {
    return !journal_.empty();
}

void JournalWatch::begin(StandingReader& reader) {
    const std::uintmax_t now = size();
    if (now >= kTooLarge) {
        throw std::system_error(std::make_error_code(std::errc::file_too_large));
    }
    most_ = std::max(kLarge, now + kGrowth);
    if (!thread_.started()) {
        thread_.start([this] { watch(); });
    }
    reader_ = &reader;
    if (asleep_) {
        wake_.notify_one();
    }
}

void JournalWatch::watch() {
    std::unique_lock lock(guard_);
    for (int idle = 0; !over_; idle = reader_ == nullptr ? idle + 1 : 0) {
        if (idle > kLooksForNobody) {
            asleep_ = true;
            wake_.wait(lock, [this] { return over_ || reader_ != nullptr; });
            asleep_ = false;
        }
        wake_.wait_for(lock, kBetweenLooks, [this] { return over_; });
        if (!over_ && reader_ != nullptr && size() > most_) {
            StandingReader& reader = *reader_;
            end();
            reader.takeRest();
        }
    }
}

}  // namespace kap::engine
