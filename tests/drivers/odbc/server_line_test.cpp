#include "drivers/odbc/server_line.hpp"

#include <gtest/gtest.h>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <optional>
#include <stdexcept>

namespace kap::ado::odbc {
namespace {

void require(bool condition) {
    if (!condition) {
        throw std::runtime_error("a socket cannot be made");
    }
}

// Two ends of a connection of this machine with itself.
class Pair {
public:
    Pair() : listener_(socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof(address);
        auto* plain = reinterpret_cast<sockaddr*>(&address);
        require(bind(listener_, plain, size) == 0 && listen(listener_, 1) == 0);
        require(getsockname(listener_, plain, &size) == 0);
        port_ = ntohs(address.sin_port);
        client_ = socket(AF_INET, SOCK_STREAM, 0);
        require(connect(client_, plain, size) == 0);
        server_ = accept(listener_, nullptr, nullptr);
        require(server_ >= 0);
    }
    ~Pair() {
        close(client_);
        close(server_);
        close(listener_);
    }
    Pair(const Pair&) = delete;
    Pair& operator=(const Pair&) = delete;

    [[nodiscard]] int port() const { return port_; }
    [[nodiscard]] int client() const { return client_; }
    void exchange() const {
        char byte = 'x';
        require(write(server_, &byte, 1) == 1 && read(client_, &byte, 1) == 1);
    }
    // Whether the client has nothing to wait for any more.
    [[nodiscard]] bool isCut() const {
        char byte = 0;
        return recv(client_, &byte, 1, MSG_DONTWAIT) == 0;
    }
    [[nodiscard]] int option(int level, int name) const {
        int value = -1;
        socklen_t size = sizeof(value);
        getsockopt(client_, level, name, &value, &size);
        return value;
    }

private:
    int listener_;
    int client_ = -1;
    int server_ = -1;
    int port_ = 0;
};

TEST(ServerLine, IsTheSocketThatAppearsAndLeadsToThePort) {
    const Pair other;
    ServerLine line(0);
    line.find([] {});
    EXPECT_FALSE(line.isFound());

    const Pair probe;
    const int port = probe.port();
    ServerLine second(port);
    second.find([] {});
    EXPECT_FALSE(second.isFound());  // it was there before
}

TEST(ServerLine, IsToldFromThePairsThatDriversWakeThemselvesWith) {
    for (const bool known : {false, true}) {
        const Pair server;
        ServerLine line(known ? server.port() : 0);
        int pair[2] = {-1, -1};
        require(socketpair(AF_UNIX, SOCK_STREAM, 0, pair) == 0);
        const int mine = socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(server.port()));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        require(connect(mine, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0);
        int exchanges = 0;
        line.find([&] { ++exchanges; });
        EXPECT_TRUE(line.isFound());
        EXPECT_EQ(exchanges, 0);
        close(mine);
        close(pair[0]);
        close(pair[1]);
    }
}

TEST(ServerLine, EndsTheConnectionOfItsDriverOnly) {
    const Pair before;
    std::optional<Pair> mine;
    // The other end of the connection is in this process, too, and leads elsewhere.
    ServerLine unknown(0);
    mine.emplace();
    const Pair busy;
    unknown.find([&] { mine->exchange(); });
    EXPECT_TRUE(unknown.isFound());
    unknown.cut();
    EXPECT_TRUE(mine->isCut());
    EXPECT_FALSE(before.isCut());
    EXPECT_FALSE(busy.isCut());
}

TEST(ServerLine, IsNotFoundWhenItCannotBeToldFromOthers) {
    ServerLine line(0);
    const Pair one;
    const Pair two;
    line.find([&] {
        one.exchange();
        two.exchange();
    });
    EXPECT_FALSE(line.isFound());
    line.cut();
    EXPECT_FALSE(one.isCut());
    EXPECT_FALSE(two.isCut());
}

TEST(ServerLine, NoticesAMachineThatHasVanished) {
    ServerLine line(0);
    const Pair mine;
    line.find([&] { mine.exchange(); });
    ASSERT_TRUE(line.isFound());
    EXPECT_EQ(mine.option(SOL_SOCKET, SO_KEEPALIVE), 1);
    EXPECT_EQ(mine.option(IPPROTO_TCP, TCP_KEEPIDLE), 60);
    EXPECT_EQ(mine.option(IPPROTO_TCP, TCP_USER_TIMEOUT), 120000);
}

TEST(ServerLine, KeepsStricterSettings) {
    ServerLine line(0);
    const Pair mine;
    const int idle = 7;
    setsockopt(mine.client(), IPPROTO_TCP, TCP_KEEPIDLE, &idle, sizeof(idle));
    line.find([&] { mine.exchange(); });
    EXPECT_EQ(mine.option(IPPROTO_TCP, TCP_KEEPIDLE), 7);
}

}  // namespace
}  // namespace kap::ado::odbc
