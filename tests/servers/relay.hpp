#pragma once

#include <atomic>
#include <thread>
#include <vector>

namespace kap::test {

// Stands between a client and a server on this machine, counts how often one waits for the other,
// and can cut the line or let it fall silent.
class Relay {
public:
    // Passes on to a port of this machine; 0: takes connections and never answers.
    explicit Relay(int target);
    ~Relay();
    Relay(const Relay&) = delete;
    Relay& operator=(const Relay&) = delete;

    [[nodiscard]] int port() const { return port_; }
    // How often the client has sent something and then waited for the server, from the last call
    // on.
    [[nodiscard]] int roundTrips() { return roundTrips_.exchange(0); }
    // From so many round trips on nothing passes any more, in either direction.
    void fallSilentAfter(int roundTrips) { silentAfter_ = roundTrips; }
    // Ends every connection.
    void cut() { cut_ = true; }

private:
    struct Line {
        int client = -1;
        int server = -1;
        bool clientSpoke = false;
    };
    void serve();
    void accept();
    [[nodiscard]] bool passOn(Line& line, bool fromClient);

    int target_;
    int listener_ = -1;
    int port_ = 0;
    std::vector<Line> lines_;
    std::atomic<int> roundTrips_{0};
    std::atomic<int> silentAfter_{-1};
    std::atomic<bool> cut_{false};
    std::atomic<bool> ends_{false};
    std::thread thread_;
};

}  // namespace kap::test
