#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/sqlite/sqlite.hpp"

namespace kap::engine {

// Locks by name, which applications agree on: sp_getapplock and its kin. They are known to every
// connection to the same database, of all processes that one user runs on one machine; what a
// process held that has died is free.
class ApplicationLocks {
public:
    enum class Owner : std::uint8_t { Session, Transaction };

    // A mode is a set of these.
    using Modes = std::uint8_t;
    static constexpr Modes kIntentShared = 1;
    static constexpr Modes kIntentExclusive = 2;
    static constexpr Modes kShared = 4;
    static constexpr Modes kUpdate = 8;
    static constexpr Modes kExclusive = 16;

    // As sp_getapplock returns them.
    static constexpr int kGranted = 0;
    static constexpr int kGrantedAfterWait = 1;
    static constexpr int kTimedOut = -1;
    static constexpr int kDeadlock = -3;
    static constexpr int kWrongCall = -999;

    // `file` is the database's, or empty for one without a file.
    ApplicationLocks(std::string file, std::string name);
    ApplicationLocks(const ApplicationLocks&) = delete;
    ApplicationLocks& operator=(const ApplicationLocks&) = delete;
    ~ApplicationLocks();

    // The mode of that name (case ignored); nothing for a name that there is none of.
    [[nodiscard]] static std::optional<Modes> modeNamed(std::string_view name);
    // The name of a mode, "NoLock" for none.
    [[nodiscard]] static const char* nameOf(Modes modes);

    // Takes a lock, or waits for it for so long, which is for ever when negative; `pause` waits a
    // moment and may raise what ends the wait. Gives one of the numbers above.
    [[nodiscard]] int take(const std::string& resource, Modes wanted, Owner owner,
                           std::chrono::milliseconds limit, const std::function<void()>& pause);
    // False when it is not held. A lock that was taken several times is given back as often.
    [[nodiscard]] bool giveBack(const std::string& resource, Owner owner);
    // What the session holds of it.
    [[nodiscard]] Modes held(const std::string& resource, Owner owner);
    // Whether take() would give it at once.
    [[nodiscard]] bool isFree(const std::string& resource, Modes wanted);
    // The transaction has ended, and what it owns is free. Does nothing when it owns nothing.
    void transactionEnded() noexcept;

private:
    class Presence;
    class Change;

    // A lock that is held or waited for.
    struct Entry {
        std::int64_t id = 0;
        std::string session;
        std::string process;
        std::string resource;
        Owner owner = Owner::Session;
        Modes modes = 0;
        std::int64_t count = 0;
        bool waits = false;
    };
    enum class Answer : std::uint8_t { Granted, Refused, Deadlock };

    [[nodiscard]] static bool goTogether(Modes left, Modes right);
    void open();
    [[nodiscard]] std::vector<Entry> entries(const std::string* resource);
    [[nodiscard]] std::vector<Entry> living(std::vector<Entry> found);
    [[nodiscard]] Answer attempt(const std::string& resource, Modes wanted, Owner owner,
                                 bool waits);
    [[nodiscard]] bool isInTheWay(const std::vector<Entry>& all, Modes wanted) const;
    [[nodiscard]] bool closesCircle();
    // Binds the values 1 to 6 of a statement that writes a lock of this session.
    void describe(PreparedStatement& write, const std::string& resource, Modes wanted,
                  Owner owner) const;
    void grant(const std::vector<Entry>& all, const std::string& resource, Modes wanted,
               Owner owner);
    void wait(const std::vector<Entry>& all, const std::string& resource, Modes wanted,
              Owner owner);
    void stopWaiting() noexcept;
    void forget(const char* sql) noexcept;

    std::string file_;
    std::string base_;     // what the database is known by here
    std::string session_;  // what this connection is known by
    std::shared_ptr<Presence> presence_;
    std::optional<Database> store_;
    bool ownsInTransaction_ = false;
};

}  // namespace kap::engine
