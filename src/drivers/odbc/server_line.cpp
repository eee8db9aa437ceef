#include "drivers/odbc/server_line.hpp"

#include <fcntl.h>
#include <linux/tcp.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "platform/folder_names.hpp"

namespace kap::ado::odbc {
namespace {

// A machine that has vanished is noticed within about two minutes, also by who waits without limit.
constexpr int kIdleSeconds = 60;
constexpr int kProbeSeconds = 10;
constexpr int kProbes = 6;
constexpr int kUnansweredMilliseconds = 120'000;

constexpr int kMostExchanges = 8;

std::optional<int> option(int descriptor, int level, int name) {
    int value = 0;
    socklen_t size = sizeof(value);
    return getsockopt(descriptor, level, name, &value, &size) == 0 ? std::optional(value)
                                                                   : std::nullopt;
}

void setOption(int descriptor, int level, int name, int value) {
    // A kernel that does not know an option does without.
    setsockopt(descriptor, level, name, &value, sizeof(value));
}

// The descriptors of the process that are sockets.
std::vector<int> socketDescriptors() {
    std::vector<int> found;
    std::error_code failed;
    for (const auto& name : platform::namesIn("/proc/self/fd", failed)) {
        const auto number = plain::readInt(name.native());
        struct stat state {};
        if (number && fstat(*number, &state) == 0 && S_ISSOCK(state.st_mode)) {
            found.push_back(*number);
        }
    }
    return found;
}

}  // namespace

// A descriptor of our own for a socket of the driver's, which the driver may close at any time: the
// number could be another file's then.
class ServerLine::Socket {
public:
    explicit Socket(int other) : descriptor_(fcntl(other, F_DUPFD_CLOEXEC, 0)) {
        struct stat state {};
        if (descriptor_ >= 0 && fstat(descriptor_, &state) == 0) {
            inode_ = state.st_ino;
        }
    }
    ~Socket() {
        if (descriptor_ >= 0) {
            close(descriptor_);
        }
    }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    [[nodiscard]] ino_t inode() const { return inode_; }

    // Whether it may lead to a server at this port.
    [[nodiscard]] bool mayLeadTo(int port) const {
        if (option(descriptor_, SOL_SOCKET, SO_TYPE) != SOCK_STREAM ||
            option(descriptor_, SOL_SOCKET, SO_ACCEPTCONN).value_or(1) != 0) {
            return false;
        }
        sockaddr_storage peer{};
        socklen_t size = sizeof(peer);
        if (getpeername(descriptor_, reinterpret_cast<sockaddr*>(&peer), &size) != 0) {
            return true;  // it may be connecting yet
        }
        if (port == 0 && peer.ss_family != AF_UNIX) {
            return true;
        }
        switch (peer.ss_family) {
            case AF_INET:
                return ntohs(reinterpret_cast<const sockaddr_in&>(peer).sin_port) == port;
            case AF_INET6:
                return ntohs(reinterpret_cast<const sockaddr_in6&>(peer).sin6_port) == port;
            case AF_UNIX:
                // Drivers wake themselves through pairs of sockets, whose ends have no names.
                return size > offsetof(sockaddr_un, sun_path);
            default:
                return true;
        }
    }

    // The bytes that have come from the other side; unset when they are not counted.
    [[nodiscard]] std::optional<std::uint64_t> bytesReceived() const {
        tcp_info info{};
        socklen_t size = sizeof(info);
        const int code = getsockopt(descriptor_, IPPROTO_TCP, TCP_INFO, &info, &size);
        return code == 0 ? std::optional<std::uint64_t>(info.tcpi_bytes_received) : std::nullopt;
    }

    // Lets the system ask now and then whether the other machine is still there. What the
    // connection string has set stricter stays.
    void keepAlive() const {
        const auto idle = option(descriptor_, IPPROTO_TCP, TCP_KEEPIDLE);
        if (!idle) {
            return;  // no network
        }
        setOption(descriptor_, SOL_SOCKET, SO_KEEPALIVE, 1);
        if (*idle > kIdleSeconds) {
            setOption(descriptor_, IPPROTO_TCP, TCP_KEEPIDLE, kIdleSeconds);
            setOption(descriptor_, IPPROTO_TCP, TCP_KEEPINTVL, kProbeSeconds);
            setOption(descriptor_, IPPROTO_TCP, TCP_KEEPCNT, kProbes);
        }
        if (option(descriptor_, IPPROTO_TCP, TCP_USER_TIMEOUT) == 0) {
            setOption(descriptor_, IPPROTO_TCP, TCP_USER_TIMEOUT, kUnansweredMilliseconds);
        }
    }

    [[nodiscard]] Sight look() const {
        pollfd asked{descriptor_, POLLIN | POLLRDHUP, 0};
        if (poll(&asked, 1, 0) <= 0) {
            return Sight::Quiet;
        }
        constexpr int kEnds = POLLRDHUP | POLLHUP | POLLERR | POLLNVAL;
        return (asked.revents & kEnds) != 0 ? Sight::Ended : Sight::Spoken;
    }

    void shutDown() const { shutdown(descriptor_, SHUT_RDWR); }

private:
    int descriptor_;
    ino_t inode_ = 0;
};

ServerLine::ServerLine(int port) : port_(port) {
    for (const int descriptor : socketDescriptors()) {
        before_.push_back(Socket(descriptor).inode());
    }
}

ServerLine::~ServerLine() = default;

ServerLine::Sockets ServerLine::appeared() const {
    Sockets sockets;
    for (const int descriptor : socketDescriptors()) {
        auto socket = std::make_unique<Socket>(descriptor);
        const bool known = std::ranges::find(before_, socket->inode()) != before_.end();
        const bool twice = std::ranges::any_of(
            sockets, [&](const auto& other) { return other->inode() == socket->inode(); });
        if (!known && !twice && socket->mayLeadTo(port_)) {
            sockets.push_back(std::move(socket));
        }
    }
    return sockets;
}

// Nothing comes over the lines of others just when this one is used, at least not each time. Two
// connections that are made at once do it one after the other.
void ServerLine::keepTalking(Sockets& sockets, const std::function<void()>& talk) {
    static std::mutex oneAtATime;
    const std::lock_guard lock(oneAtATime);
    for (int i = 0; i < kMostExchanges && sockets.size() > 1; ++i) {
        std::map<const Socket*, std::optional<std::uint64_t>> received;
        for (const auto& socket : sockets) {
            received[socket.get()] = socket->bytesReceived();
        }
        const bool counted =
            std::ranges::all_of(received, [](const auto& each) { return each.second.has_value(); });
        if (!counted) {
            sockets.clear();
            return;
        }
        talk();
        std::erase_if(sockets, [&](const auto& socket) {
            return socket->bytesReceived() == received[socket.get()];
        });
    }
}

void ServerLine::find(const std::function<void()>& talk) {
    Sockets sockets = appeared();
    if (sockets.size() > 1) {
        keepTalking(sockets, talk);
    }
    const std::lock_guard lock(mutex_);
    looksStill_ = false;
    if (sockets.size() == 1) {
        found_ = std::move(sockets.front());
        found_->keepAlive();
    }
}

bool ServerLine::isFound() const {
    const std::lock_guard lock(mutex_);
    return found_ != nullptr;
}

ServerLine::Sight ServerLine::look() const {
    const std::lock_guard lock(mutex_);
    return found_ ? found_->look() : Sight::Quiet;
}

void ServerLine::cut() {
    const std::lock_guard lock(mutex_);
    if (found_) {
        found_->shutDown();
    } else if (looksStill_) {
        const Sockets sockets = appeared();
        if (sockets.size() == 1) {
            sockets.front()->shutDown();
        }
    }
}

}  // namespace kap::ado::odbc
