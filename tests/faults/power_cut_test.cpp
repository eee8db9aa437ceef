// What a power cut leaves of a database: everything up to the last time that a file was brought to
// disk, and of what was written since any part at all.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>

#include <kaputil/automation/error.hpp>

#include "faults/ledger.hpp"
#include "faults/library/failing_calls.hpp"
#include "faults/random_runs.hpp"
#include "support/temporary_folder.hpp"
#include "support/text_files.hpp"

namespace kap {
namespace {

using faults::Event;
using test::Ledger;

// The files of a folder as they may lie on the disk after a cut.
class DiskAfterCut {
public:
    DiskAfterCut(std::map<std::string, std::string> files, std::mt19937& random)
        : files_(std::move(files)), random_(random) {}

    void happen(const std::vector<Event>& events, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            const Event& event = events[i];
            if (event.kind == Event::Kind::Sync) {
                apply(event.path, /*all=*/true);
            } else if (event.kind == Event::Kind::Remove) {
                waiting_.erase(event.path);
                files_.erase(event.path);
            } else if (event.kind != Event::Kind::Mark) {
                waiting_[event.path].push_back(&event);
            }
        }
        while (!waiting_.empty()) {
            const std::string path = waiting_.begin()->first;
            apply(path, /*all=*/false);
        }
    }

    void putInto(const std::filesystem::path& folder) const {
        for (const auto& [path, content] : files_) {
            test::putFile(folder / std::filesystem::path(path).filename(), content);
        }
    }

private:
    void apply(const std::string& path, bool all) {
        for (const Event* event : waiting_[path]) {
            if (all || random_() % 2 == 0) {
                write(files_[path], *event, all);
            }
        }
        waiting_.erase(path);
    }

    // Of one write a disk keeps whole sectors, some or all of them.
    void write(std::string& file, const Event& event, bool all) {
        constexpr std::size_t kSector = 512;
        const auto offset = static_cast<std::size_t>(event.offset);
        if (event.kind == Event::Kind::Truncate) {
            file.resize(offset);
            return;
        }
        for (std::size_t at = 0; at < event.bytes.size(); at += kSector) {
            const std::size_t length = std::min(kSector, event.bytes.size() - at);
            if (all || random_() % 4 != 0) {
                file.resize(std::max(file.size(), offset + at + length));
                file.replace(offset + at, length, event.bytes, at, length);
            }
        }
    }

    std::map<std::string, std::string> files_;
    std::map<std::string, std::vector<const Event*>> waiting_;
    std::mt19937& random_;
};

std::map<std::string, std::string> filesIn(const std::string& folder) {
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() != ".db-shm") {  // which is made anew
            files[entry.path().string()] = test::contentOf(entry.path().string());
        }
    }
    return files;
}

// The steps that were acknowledged before the cut.
std::set<int> acknowledgedIn(const std::vector<Event>& events, std::size_t count) {
    std::set<int> steps;
    for (std::size_t i = 0; i < count; ++i) {
        if (events[i].kind == Event::Kind::Mark) {
            steps.insert(std::stoi(events[i].bytes));
        }
    }
    return steps;
}

void cutOnce(std::uint32_t seed) {
    std::mt19937 random(seed);
    const test::TemporaryFolder folder;
    Ledger::create(test::open(folder.database("libri.db")));
    const auto before = filesIn(folder.file(""));
    const auto connection = test::open(folder.database("libri.db"));
    faults::startRecording(folder.file(""));
    const int steps = 5 + static_cast<int>(random() % 25);
    for (int i = 0; i < steps; ++i) {
        const int number = static_cast<int>(random() % 6) + 6 * i;
        Ledger::step(connection, number);
        faults::mark(std::to_string(number));
    }
    const std::vector<Event> events = faults::stopRecording();
    ASSERT_FALSE(events.empty());
    for (int cut = 0; cut < 4; ++cut) {
        const std::size_t count = 1 + random() % events.size();
        const test::TemporaryFolder after;
        DiskAfterCut disk(before, random);
        disk.happen(events, count);
        disk.putInto(after.file(""));
        EXPECT_EQ("", Ledger::fault(test::open(after.database("libri.db")),
                                    acknowledgedIn(events, count)))
            << "cut behind event " << count;
    }
}

TEST(PowerCut, LeavesWhatWasAcknowledgedAndNothingInPart) {
    test::withRandomSeeds([](std::uint32_t seed) { cutOnce(seed); });
}

}  // namespace
}  // namespace kap
