#pragma once

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace kap::ado::odbc {

// The network connection that a driver has with its server. Drivers do not show it: it is found
// among the sockets that appear in the process while the driver connects.
class ServerLine {
public:
    // `port` is the server's; 0: not known.
    explicit ServerLine(int port);
    ~ServerLine();
    ServerLine(const ServerLine&) = delete;
    ServerLine& operator=(const ServerLine&) = delete;

    // To be called when the driver has connected. Other threads may have opened sockets meanwhile:
    // `talk` makes the driver exchange something with the server, which tells them apart. A line
    // that cannot be told for certain is not found.
    void find(const std::function<void()>& talk);
    [[nodiscard]] bool isFound() const;
    // What is to be seen of it while nothing has been asked: the other side has ended it, or has
    // said something, which may be why it is going to.
    enum class Sight : std::uint8_t { Quiet, Spoken, Ended };
    [[nodiscard]] Sight look() const;

    // Ends the connection, also one that is still being made: whoever waits for the server gets an
    // error. For any thread.
    void cut();

private:
    class Socket;
    using Sockets = std::vector<std::unique_ptr<Socket>>;

    [[nodiscard]] Sockets appeared() const;
    static void keepTalking(Sockets& sockets, const std::function<void()>& talk);

    int port_;
    std::vector<ino_t> before_;
    mutable std::mutex mutex_;
    std::unique_ptr<Socket> found_;
    bool looksStill_ = true;  // the driver is connecting
};

}  // namespace kap::ado::odbc
