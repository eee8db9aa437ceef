#pragma once

#include <memory>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>

#include "support/database.hpp"

namespace kap::test {

// A PostgreSQL server of the tests' own, with its data in a folder below the build.
class Server {
public:
    // The one that ctest has started for all tests, or else one for this program; null when the
    // packages are missing.
    static Server* shared();
    // Another one, for a test that ends it.
    static std::unique_ptr<Server> own();

    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    // How to reach a database of it.
    [[nodiscard]] std::string connection(const std::string& database) const;
    // The same through another port, or with other keys behind.
    [[nodiscard]] std::string connection(const std::string& database, int port) const;
    [[nodiscard]] int port() const;
    void kill() const { run("kill"); }
    void restart() const { run("restart"); }
    // Lets every process of the server stand still, and go on.
    void freeze() const { run("freeze"); }
    void thaw() const { run("thaw"); }

private:
    Server(std::string folder, bool stops) : folder_(std::move(folder)), stops_(stops) {}
    static std::unique_ptr<Server> start(const std::string& folder);
    int run(const std::string& job) const;

    std::string folder_;
    std::string template_;  // of the connection string
    bool stops_;
};

// A database that a test makes and drops.
class ServerDatabase {
public:
    explicit ServerDatabase(const Server& server);
    ~ServerDatabase();
    ServerDatabase(const ServerDatabase&) = delete;
    ServerDatabase& operator=(const ServerDatabase&) = delete;

    [[nodiscard]] const std::string& name() const { return name_; }
    [[nodiscard]] std::string connection() const { return server_.connection(name_); }
    [[nodiscard]] Ref<ado::Connection> open(const std::string& more = {}) const {
        return test::open(connection() + more);
    }

private:
    const Server& server_;
    std::string name_;
};

// What existing programs expect of a server: row versions, kept by a trigger.
extern const char* const kRowVersions;

// Each test has a database of its own and a connection to it; without a server it is skipped.
class ServerTest : public ::testing::Test {
protected:
    void SetUp() override;

    void run(const std::string& script) const { connection_->Execute(script); }
    [[nodiscard]] Ref<ado::Recordset> query(const std::string& text) const;
    [[nodiscard]] Ref<ado::Recordset> live(
        const std::string& text,
        ado::CursorLocationEnum location = ado::CursorLocationEnum::adUseClient) const {
        return openLive(connection_, text, location);
    }
    // The first value of a query, with its type.
    [[nodiscard]] std::string value(const std::string& text) const;

    Server* server_ = nullptr;
    std::optional<ServerDatabase> database_;
    Ref<ado::Connection> connection_;
};

}  // namespace kap::test
