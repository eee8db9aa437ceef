#include "relay.hpp"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace kap::test {
namespace {

sockaddr_in loopback(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    return address;
}

void require(bool works) {
    if (!works) {
        throw std::system_error(errno, std::generic_category(), "relay");
    }
}

const sockaddr* plain(const sockaddr_in& address) {
    return reinterpret_cast<const sockaddr*>(&address);
}

void sendAtOnce(int socket) {
    const int on = 1;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
}

}  // namespace

Relay::Relay(int target) : target_(target), listener_(socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address = loopback(0);
    socklen_t size = sizeof(address);
    require(bind(listener_, plain(address), size) == 0 && listen(listener_, 16) == 0);
    require(getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size) == 0);
    port_ = ntohs(address.sin_port);
    thread_ = std::thread([this] { serve(); });
}

Relay::~Relay() {
    ends_ = true;
    thread_.join();
    for (const Line& line : lines_) {
        close(line.client);
        close(line.server);
    }
    close(listener_);
}

void Relay::serve() {
    constexpr int kMilliseconds = 5;
    while (!ends_) {
        std::vector<pollfd> waiting{{listener_, POLLIN, 0}};
        for (const Line& line : lines_) {
            waiting.push_back({line.client, POLLIN, 0});
            waiting.push_back({line.server, POLLIN, 0});
        }
        poll(waiting.data(), waiting.size(), kMilliseconds);
        if (cut_.exchange(false)) {
            for (Line& line : lines_) {
                shutdown(line.client, SHUT_RDWR);
                shutdown(line.server, SHUT_RDWR);
            }
        }
        for (std::size_t i = 0; i < lines_.size(); ++i) {
            Line& line = lines_[i];
            const bool open = (waiting[2 * i + 1].revents == 0 || passOn(line, true)) &&
                              (waiting[2 * i + 2].revents == 0 || passOn(line, false));
            if (!open) {
                close(line.client);
                close(line.server);
                line = {};  // the places of a closed line are passed over
            }
        }
        if (waiting.front().revents != 0) {
            accept();
        }
    }
}

void Relay::accept() {
    Line line;
    line.client = ::accept(listener_, nullptr, nullptr);
    if (target_ != 0) {
        line.server = socket(AF_INET, SOCK_STREAM, 0);
        const sockaddr_in address = loopback(target_);
        if (connect(line.server, plain(address), sizeof(address)) != 0) {
            close(line.client);
            close(line.server);
            return;
        }
        sendAtOnce(line.client);
        sendAtOnce(line.server);
    }
    lines_.push_back(line);
}

bool Relay::passOn(Line& line, bool fromClient) {
    std::array<char, 65536> bytes{};
    const int from = fromClient ? line.client : line.server;
    const ssize_t count = read(from, bytes.data(), bytes.size());
    if (count <= 0) {
        return false;
    }
    if (!fromClient && line.clientSpoke) {
        ++roundTrips_;
    }
    line.clientSpoke = fromClient;
    const int to = fromClient ? line.server : line.client;
    const int silentAfter = silentAfter_;
    if (to < 0 || (silentAfter >= 0 && roundTrips_ >= silentAfter)) {
        return true;  // nobody answers
    }
    for (ssize_t sent = 0; sent < count;) {
        const ssize_t part =
            send(to, bytes.data() + sent, static_cast<std::size_t>(count - sent), MSG_NOSIGNAL);
        if (part <= 0) {
            return false;
        }
        sent += part;
    }
    return true;
}

}  // namespace kap::test
