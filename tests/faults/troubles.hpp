#pragma once

#include <cerrno>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "engine/sqlite/time_limit.hpp"
#include "faults/library/failing_calls.hpp"
#include "faults/library/failing_memory.hpp"

namespace kap::test {

// Something that goes wrong at the n-th occasion, between begin() and end().
class Trouble {
public:
    Trouble() = default;
    Trouble(const Trouble&) = delete;
    Trouble& operator=(const Trouble&) = delete;
    virtual ~Trouble() = default;

    [[nodiscard]] virtual std::string name() const = 0;
    virtual void begin(std::int64_t nth) = 0;
    // Whether it has come to pass; until it does not, the work has more occasions.
    virtual bool end() = 0;
    // Whether something else has come to pass meanwhile.
    [[nodiscard]] virtual bool other() const { return false; }
    // Where it came to pass.
    [[nodiscard]] virtual std::string place() const { return {}; }
};

// Memory that ends, for one request or for good.
class MemoryEnds final : public Trouble {
public:
    MemoryEnds(std::string name, faults::MemoryFault fault)
        : name_(std::move(name)), fault_(fault) {}
    [[nodiscard]] std::string name() const override { return name_; }
    void begin(std::int64_t nth) override {
        fault_.nth = nth;
        faults::startMemory(fault_);
    }
    bool end() override { return faults::stopMemory().failed; }

private:
    std::string name_;
    faults::MemoryFault fault_;
};

// The time limit of a statement, which is over at the n-th look.
class LimitPasses final : public Trouble {
public:
    [[nodiscard]] std::string name() const override { return "the limit passes"; }
    void begin(std::int64_t nth) override { fuse_.emplace(/*steps=*/1, nth); }
    bool end() override {
        const bool passed = fuse_->blown();
        fuse_.reset();
        return passed;
    }

private:
    std::optional<engine::TimeLimit::Fuse> fuse_;
};

// A call of the file system that fails, once or from then on.
class FileFails final : public Trouble {
public:
    FileFails(std::string name, faults::Fault fault)
        : name_(std::move(name)), fault_(std::move(fault)) {}
    [[nodiscard]] std::string name() const override { return name_; }
    void begin(std::int64_t nth) override {
        fault_.nth = static_cast<int>(nth);
        faults::start(fault_);
    }
    bool end() override {
        outcome_ = faults::stop();
        return outcome_.failed;
    }
    [[nodiscard]] std::string place() const override { return outcome_.which; }

private:
    std::string name_;
    faults::Fault fault_;
    faults::Outcome outcome_;
};

// The first at the n-th occasion, while the second comes to pass at one of its own.
class Both final : public Trouble {
public:
    Both(std::unique_ptr<Trouble> walked, std::unique_ptr<Trouble> besides, std::int64_t at)
        : walked_(std::move(walked)), besides_(std::move(besides)), at_(at) {}
    [[nodiscard]] std::string name() const override {
        return walked_->name() + ", and " + besides_->name() + " at " + std::to_string(at_);
    }
    void begin(std::int64_t nth) override {
        besides_->begin(at_);
        walked_->begin(nth);
    }
    bool end() override {
        const bool failed = walked_->end();
        besidesFailed_ = besides_->end();
        return failed;
    }
    [[nodiscard]] bool other() const override { return besidesFailed_; }
    [[nodiscard]] std::string place() const override {
        return walked_->place() + besides_->place();
    }

private:
    std::unique_ptr<Trouble> walked_;
    std::unique_ptr<Trouble> besides_;
    std::int64_t at_;
    bool besidesFailed_ = false;
};

// All that can go wrong while somebody works on a database in a file.
inline std::vector<std::unique_ptr<Trouble>> everyTrouble(const std::string& file) {
    std::vector<std::unique_ptr<Trouble>> all;
    // Locks are left out: one that fails for another reason than that somebody has it is tried for
    // ten seconds.
    using faults::Call;
    const std::vector<Call> calls = {Call::Open,     Call::Read,   Call::Write, Call::Sync,
                                     Call::Truncate, Call::Unlink, Call::Map};
    const auto failing = [&](const char* name, int error, bool forGood) {
        return std::make_unique<FileFails>(name, faults::Fault{file, calls, 1, error, forGood});
    };
    all.push_back(std::make_unique<MemoryEnds>("memory ends once", faults::MemoryFault{}));
    all.push_back(
        std::make_unique<MemoryEnds>("memory ends for good", faults::MemoryFault{1, true}));
    all.push_back(std::make_unique<MemoryEnds>("SQLite's memory ends for good",
                                               faults::MemoryFault{1, true, true, false}));
    all.push_back(std::make_unique<LimitPasses>());
    all.push_back(failing("a call fails", EIO, false));
    all.push_back(failing("calls fail from then on", EIO, true));
    all.push_back(failing("the disk is full from then on", ENOSPC, true));
    for (const int at : {1, 7, 30}) {
        all.push_back(std::make_unique<Both>(failing("a call fails", EIO, false),
                                             std::make_unique<LimitPasses>(), at));
        all.push_back(std::make_unique<Both>(std::make_unique<LimitPasses>(),
                                             failing("the disk is full", ENOSPC, true), at));
    }
    return all;
}

}  // namespace kap::test
