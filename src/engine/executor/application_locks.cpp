#include "engine/executor/application_locks.hpp"

#include <algorithm>
#include <array>
#include <filesystem>
#include <map>
#include <mutex>
#include <set>
#include <system_error>
#include <utility>

#include "base/ascii.hpp"
#include "engine/catalog/server_identity.hpp"
#include "platform/random_name.hpp"

// The locks stand in a database of SQLite's in the folder for temporary files, which every process
// of the user finds. What belongs to a process is told by its presence: a file of its own that it
// keeps locked, and that the system unlocks when it dies.
namespace kap::engine {
namespace {

constexpr int kBusyMilliseconds = 10'000;

constexpr const char* kMakeTable =
    "CREATE TABLE IF NOT EXISTS locks (id INTEGER PRIMARY KEY, base TEXT NOT NULL, session TEXT "
    "NOT NULL, process TEXT NOT NULL, resource TEXT NOT NULL, owner INTEGER NOT NULL, modes "
    "INTEGER "
    "NOT NULL, count INTEGER NOT NULL, waits INTEGER NOT NULL)";

// For databases without a file, and where no folder can be written: one of the process alone.
constexpr const char* kOwnStore = "file:/kap application locks?vfs=memdb";

std::filesystem::path storeFolder() {
    std::error_code failure;
    std::filesystem::path folder = std::filesystem::temp_directory_path(failure);
    if (failure) return {};
    folder /= "kaputil-locks-" + loginName();
    std::filesystem::create_directories(folder, failure);
    if (failure) return {};
    // Another user's folder is left alone: it would take what this one writes.
    std::filesystem::permissions(folder, std::filesystem::perms::owner_all, failure);
    if (failure) return {};
    return folder;
}

std::string textOf(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

}  // namespace

// The file that says that this process lives.
class ApplicationLocks::Presence {
public:
    explicit Presence(std::filesystem::path folder)
        : folder_(std::move(folder)), name_(platform::randomUuid()) {
        if (folder_.empty()) return;
        try {
            file_.emplace(textOf(folder_ / name_), SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
            file_->run("BEGIN EXCLUSIVE");
        } catch (const SqliteError&) {
            file_.reset();
            folder_.clear();
        }
    }
    Presence(const Presence&) = delete;
    Presence& operator=(const Presence&) = delete;
    ~Presence() {
        file_.reset();
        std::error_code ignored;
        if (!folder_.empty()) std::filesystem::remove(folder_ / name_, ignored);
    }

    // That of this process, which lasts as long as one of its connections has used a lock.
    static std::shared_ptr<Presence> own() {
        static std::mutex guard;
        static std::weak_ptr<Presence> known;
        const std::lock_guard locked(guard);
        std::shared_ptr<Presence> result = known.lock();
        if (result == nullptr) {
            result = std::make_shared<Presence>(storeFolder());
            known = result;
        }
        return result;
    }

    [[nodiscard]] const std::string& name() const { return name_; }
    // Empty where processes cannot find each other.
    [[nodiscard]] const std::filesystem::path& folder() const { return folder_; }

    // Whether the process of that presence lives.
    [[nodiscard]] bool isAlive(const std::string& process) const {
        if (process == name_) return true;
        if (folder_.empty()) return false;
        try {
            Database other(textOf(folder_ / process), SQLITE_OPEN_READWRITE);
            other.run("BEGIN IMMEDIATE");
        } catch (const SqliteError& error) {
            return error.primaryCode() == SQLITE_BUSY;
        }
        std::error_code ignored;
        std::filesystem::remove(folder_ / process, ignored);
        return false;
    }

private:
    std::filesystem::path folder_;
    std::string name_;
    std::optional<Database> file_;
};

// A transaction on the store, undone unless it is kept: one that stayed open would hold everybody
// up.
class ApplicationLocks::Change {
public:
    explicit Change(ApplicationLocks& locks) : store_((locks.open(), *locks.store_)) {
        store_.run("BEGIN IMMEDIATE");
    }
    Change(const Change&) = delete;
    Change& operator=(const Change&) = delete;
    ~Change() {
        if (store_.inTransaction())
            sqlite3_exec(store_.handle(), "ROLLBACK", nullptr, nullptr, nullptr);
    }
    void keep() { store_.run("COMMIT"); }

private:
    Database& store_;
};

ApplicationLocks::ApplicationLocks(std::string file, std::string name)
    : file_(std::move(file)), base_(std::move(name)) {}

ApplicationLocks::~ApplicationLocks() {
    forget("DELETE FROM locks WHERE session = ?1");
}

std::optional<ApplicationLocks::Modes> ApplicationLocks::modeNamed(std::string_view name) {
    static constexpr std::array kNames =
        std::to_array<std::pair<std::string_view, Modes>>({{"IntentShared", kIntentShared},
                                                           {"IntentExclusive", kIntentExclusive},
                                                           {"Shared", kShared},
                                                           {"Update", kUpdate},
                                                           {"Exclusive", kExclusive}});
    for (const auto& [known, mode] : kNames) {
        if (equalsIgnoringCase(known, name)) return mode;
    }
    return std::nullopt;
}

const char* ApplicationLocks::nameOf(Modes modes) {
    if ((modes & kExclusive) != 0) return "Exclusive";
    const bool intends = (modes & kIntentExclusive) != 0;
    if ((modes & kUpdate) != 0) return intends ? "UpdateIntentExclusive" : "Update";
    if ((modes & kShared) != 0) return intends ? "SharedIntentExclusive" : "Shared";
    if (intends) return "IntentExclusive";
    return (modes & kIntentShared) != 0 ? "IntentShared" : "NoLock";
}

bool ApplicationLocks::goTogether(Modes left, Modes right) {
    static constexpr std::array kTogether = std::to_array<std::pair<Modes, Modes>>(
        {{kIntentShared, kIntentShared | kIntentExclusive | kShared | kUpdate},
         {kIntentExclusive, kIntentShared | kIntentExclusive},
         {kShared, kIntentShared | kShared | kUpdate},
         {kUpdate, kIntentShared | kShared},
         {kExclusive, 0}});
    return std::ranges::all_of(kTogether, [&](const auto& each) {
        return (left & each.first) == 0 || (right & ~each.second) == 0;
    });
}

void ApplicationLocks::open() {
    if (store_) return;
    presence_ = Presence::own();
    session_ = platform::randomUuid();
    const bool shared = !file_.empty() && !presence_->folder().empty();
    if (!file_.empty()) {
        std::error_code ignored;
        const auto path =
            std::filesystem::weakly_canonical(std::u8string(file_.begin(), file_.end()), ignored);
        base_ = path.empty() ? file_ : textOf(path);
    }
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_URI;
    store_.emplace(shared ? textOf(presence_->folder() / "locks.db") : kOwnStore, flags);
    sqlite3_busy_timeout(store_->handle(), kBusyMilliseconds);
    // What is lost with the power is nobody's then.
    store_->run("PRAGMA synchronous = OFF");
    store_->run(kMakeTable);
}

// Those of one resource, or of all.
std::vector<ApplicationLocks::Entry> ApplicationLocks::entries(const std::string* resource) {
    PreparedStatement rows(store_->handle(),
                           "SELECT id, session, process, resource, owner, modes, count, waits FROM "
                           "locks WHERE base = ?1 AND (?2 IS NULL OR resource = ?2) ORDER BY id");
    rows.bind(1, std::string_view(base_));
    if (resource != nullptr) rows.bind(2, std::string_view(*resource));
    std::vector<Entry> result;
    while (rows.step()) {
        result.push_back({rows.integer(0), rows.text(1), rows.text(2), rows.text(3),
                          static_cast<Owner>(rows.integer(4)), static_cast<Modes>(rows.integer(5)),
                          rows.integer(6), rows.integer(7) != 0});
    }
    return result;
}

// Without those of processes that have died.
std::vector<ApplicationLocks::Entry> ApplicationLocks::living(std::vector<Entry> found) {
    std::map<std::string, bool, std::less<>> known;
    for (const Entry& entry : found) {
        const auto [process, added] = known.try_emplace(entry.process, true);
        if (!added) continue;
        process->second = presence_->isAlive(entry.process);
        if (process->second) continue;
        PreparedStatement remove(store_->handle(), "DELETE FROM locks WHERE process = ?1");
        remove.bind(1, std::string_view(entry.process));
        remove.run();
    }
    std::erase_if(found, [&](const Entry& entry) { return !known.find(entry.process)->second; });
    return found;
}

// Others hold it in a mode that does not go with the wanted one, or wait for such a mode already.
// Whoever holds it himself need not stand behind those who wait.
bool ApplicationLocks::isInTheWay(const std::vector<Entry>& all, Modes wanted) const {
    const auto mine = [&](const Entry& entry) { return entry.session == session_; };
    const bool holds =
        std::ranges::any_of(all, [&](const Entry& entry) { return mine(entry) && !entry.waits; });
    for (const Entry& entry : all) {
        if (mine(entry)) {
            if (entry.waits) return false;  // those behind come later
            continue;
        }
        if ((entry.waits && holds) || goTogether(entry.modes, wanted)) continue;
        return true;
    }
    return false;
}

ApplicationLocks::Answer ApplicationLocks::attempt(const std::string& resource, Modes wanted,
                                                   Owner owner, bool waits) {
    Change change(*this);
    const std::vector<Entry> all = living(entries(&resource));
    // Who waits looks past those who came later, and not past those who hold it.
    std::vector<Entry> holders = all;
    std::erase_if(holders, [](const Entry& entry) { return entry.waits; });
    Answer answer = Answer::Granted;
    if (isInTheWay(all, wanted) || isInTheWay(holders, wanted)) {
        answer = Answer::Refused;
        if (waits) wait(all, resource, wanted, owner);
        if (waits && closesCircle()) answer = Answer::Deadlock;
    } else {
        grant(all, resource, wanted, owner);
    }
    change.keep();
    return answer;
}

void ApplicationLocks::describe(PreparedStatement& write, const std::string& resource, Modes wanted,
                                Owner owner) const {
    write.bind(1, std::string_view(base_));
    write.bind(2, std::string_view(session_));
    write.bind(3, std::string_view(presence_->name()));
    write.bind(4, std::string_view(resource));
    write.bind(5, static_cast<std::int64_t>(owner));
    write.bind(6, std::int64_t{wanted});
}

void ApplicationLocks::grant(const std::vector<Entry>& all, const std::string& resource,
                             Modes wanted, Owner owner) {
    const auto own = std::ranges::find_if(all, [&](const Entry& entry) {
        return entry.session == session_ && entry.owner == owner && !entry.waits;
    });
    PreparedStatement write(
        store_->handle(),
        own == all.end() ? "INSERT INTO locks VALUES (NULL, ?1, ?2, ?3, ?4, ?5, ?6, 1, 0)"
                         : "UPDATE locks SET modes = modes | ?6, count = count + 1 WHERE base = ?1 "
                           "AND session = ?2 AND process = ?3 AND resource = ?4 AND owner = ?5 AND "
                           "waits = 0");
    describe(write, resource, wanted, owner);
    write.run();
    PreparedStatement done(store_->handle(), "DELETE FROM locks WHERE session = ?1 AND waits = 1");
    done.bind(1, std::string_view(session_));
    done.run();
    ownsInTransaction_ = ownsInTransaction_ || owner == Owner::Transaction;
}

void ApplicationLocks::wait(const std::vector<Entry>& all, const std::string& resource,
                            Modes wanted, Owner owner) {
    const bool there = std::ranges::any_of(
        all, [&](const Entry& entry) { return entry.session == session_ && entry.waits; });
    if (there) return;
    PreparedStatement write(store_->handle(),
                            "INSERT INTO locks VALUES (NULL, ?1, ?2, ?3, ?4, ?5, ?6, 0, 1)");
    describe(write, resource, wanted, owner);
    write.run();
}

// Whether those whom this session waits for wait for it themselves.
bool ApplicationLocks::closesCircle() {
    const std::vector<Entry> all = living(entries(nullptr));
    std::set<std::string, std::less<>> seen;
    std::vector<std::string> open{session_};
    while (!open.empty()) {
        const std::string waiter = std::move(open.back());
        open.pop_back();
        for (const Entry& wish : all) {
            if (!wish.waits || wish.session != waiter) continue;
            for (const Entry& holder : all) {
                const bool blocks = !holder.waits && holder.resource == wish.resource &&
                                    holder.session != waiter &&
                                    !goTogether(holder.modes, wish.modes);
                if (!blocks) continue;
                if (holder.session == session_) return true;
                if (seen.insert(holder.session).second) open.push_back(holder.session);
            }
        }
    }
    return false;
}

int ApplicationLocks::take(const std::string& resource, Modes wanted, Owner owner,
                           std::chrono::milliseconds limit, const std::function<void()>& pause) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    const bool waits = limit.count() != 0;
    int granted = kGranted;
    try {
        while (true) {
            const Answer answer = attempt(resource, wanted, owner, waits);
            if (answer == Answer::Granted) return granted;
            const bool over = limit.count() >= 0 && std::chrono::steady_clock::now() >= deadline;
            if (answer == Answer::Deadlock || over) {
                stopWaiting();
                return answer == Answer::Deadlock ? kDeadlock : kTimedOut;
            }
            granted = kGrantedAfterWait;
            pause();
        }
    } catch (...) {
        stopWaiting();
        throw;
    }
}

bool ApplicationLocks::giveBack(const std::string& resource, Owner owner) {
    Change change(*this);
    PreparedStatement less(
        store_->handle(),
        "UPDATE locks SET count = count - 1 WHERE base = ?1 AND session = ?2 AND "
        "resource = ?3 AND owner = ?4 AND waits = 0");
    less.bind(1, std::string_view(base_));
    less.bind(2, std::string_view(session_));
    less.bind(3, std::string_view(resource));
    less.bind(4, static_cast<std::int64_t>(owner));
    less.run();
    const bool held = store_->changes() > 0;
    store_->run("DELETE FROM locks WHERE count = 0 AND waits = 0");
    change.keep();
    return held;
}

ApplicationLocks::Modes ApplicationLocks::held(const std::string& resource, Owner owner) {
    open();
    Modes result = 0;
    for (const Entry& entry : entries(&resource)) {
        if (entry.session == session_ && entry.owner == owner && !entry.waits)
            result |= entry.modes;
    }
    return result;
}

bool ApplicationLocks::isFree(const std::string& resource, Modes wanted) {
    Change change(*this);
    const std::vector<Entry> all = living(entries(&resource));
    change.keep();
    return !isInTheWay(all, wanted);
}

void ApplicationLocks::transactionEnded() noexcept {
    if (!ownsInTransaction_) return;
    ownsInTransaction_ = false;
    forget("DELETE FROM locks WHERE session = ?1 AND owner = 1 AND waits = 0");
}

void ApplicationLocks::stopWaiting() noexcept {
    forget("DELETE FROM locks WHERE session = ?1 AND waits = 1");
}

// What cannot be taken out now goes with the process.
void ApplicationLocks::forget(const char* sql) noexcept {
    if (!store_) return;
    try {
        PreparedStatement out(store_->handle(), sql);
        out.bind(1, std::string_view(session_));
        out.run();
    } catch (...) {
    }
}

}  // namespace kap::engine
