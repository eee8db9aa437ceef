#include "server.hpp"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iostream>

#include "support/build_folders.hpp"
#include "support/shown.hpp"

namespace kap::test {
namespace {

constexpr int kSkipped = 77;

std::string firstLine(const std::string& file) {
    std::ifstream stream(file);
    std::string line;
    std::getline(stream, line);
    return line;
}

std::string replaced(std::string text, const std::string& part, const std::string& other) {
    const std::size_t at = text.find(part);
    return at == std::string::npos ? text : text.replace(at, part.size(), other);
}

}  // namespace

const char* const kRowVersions =
    "CREATE DOMAIN rowversion AS bytea;"
    "CREATE SEQUENCE row_versions;"
    "CREATE FUNCTION keep_row_version() RETURNS trigger LANGUAGE plpgsql AS $$ BEGIN "
    "NEW.aggid := int8send(nextval('row_versions')); RETURN NEW; END $$;";

Server* Server::shared() {
    static const std::unique_ptr<Server> server = [] {
        const char* running = std::getenv("KAPUTIL_TEST_SERVER");
        const std::string folder = running == nullptr ? "" : running;
        if (!folder.empty() && !firstLine(folder + "/connection").empty()) {
            std::unique_ptr<Server> made(new Server(folder, false));
            made->template_ = firstLine(folder + "/connection");
            return made;
        }
        return folder.empty() ? own() : nullptr;
    }();
    return server.get();
}

std::unique_ptr<Server> Server::own() {
    static int count = 0;
    return start(std::string(test::kTestPrograms) + "/../server-" + std::to_string(getpid()) + "-" +
                 std::to_string(++count));
}

std::unique_ptr<Server> Server::start(const std::string& folder) {
    std::unique_ptr<Server> made(new Server(folder, true));
    if (made->run("start") != 0) {
        made->stops_ = false;
        return nullptr;
    }
    made->template_ = firstLine(folder + "/connection");
    return made;
}

Server::~Server() {
    if (stops_) {
        run("stop");
        std::system(("rm -rf '" + folder_ + "'").c_str());
    }
}

int Server::run(const std::string& job) const {
    const std::string command = std::string(test::kSourceFolder) + "/scripts/postgres_server.sh " +
                                job + " '" + folder_ + "'";
    const int status = std::system(command.c_str());
    const int code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    if (code != 0 && code != kSkipped) {
        std::cerr << "the server's script failed: " << command << '\n';
    }
    return code;
}

std::string Server::connection(const std::string& database) const {
    return replaced(template_, "{database}", database);
}

std::string Server::connection(const std::string& database, int port) const {
    return replaced(connection(database), ";Port=" + std::to_string(this->port()) + ";",
                    ";Port=" + std::to_string(port) + ";");
}

int Server::port() const {
    const std::size_t at = template_.find(";Port=") + 6;
    return std::atoi(template_.c_str() + at);
}

ServerDatabase::ServerDatabase(const Server& server) : server_(server) {
    static int count = 0;
    name_ = "t" + std::to_string(getpid()) + "_" + std::to_string(++count);
    test::open(server_.connection("postgres"))->Execute("CREATE DATABASE " + name_);
}

ServerDatabase::~ServerDatabase() {
    try {
        test::open(server_.connection("postgres"))
            ->Execute("DROP DATABASE " + name_ + " WITH (FORCE)");
    } catch (const AutomationError& error) {
        std::cerr << "the test's database stays behind: " << error.what() << '\n';
    }
}

void ServerTest::SetUp() {
    server_ = Server::shared();
    if (server_ == nullptr) {
        GTEST_SKIP() << "there is no database server to test with";
    }
    database_.emplace(*server_);
    connection_ = database_->open();
}

Ref<ado::Recordset> ServerTest::query(const std::string& text) const {
    auto rows = make<ado::Recordset>();
    rows->setCursorLocation(ado::CursorLocationEnum::adUseClient);
    rows->Open(Variant(text), Variant(connection_));
    return rows;
}

std::string ServerTest::value(const std::string& text) const {
    return shown(fieldOf(query(text), 0));
}

}  // namespace kap::test
