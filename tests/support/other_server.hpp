#pragma once

#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/error.hpp>

namespace kap::test {

// A database server that tests run on in place of embedded databases, when KAPUTIL_TEST_CONNECTION
// names one: a connection string with "{database}" in it. Each test makes databases of its own
// there; they are dropped when the program ends. What tests make beforehand they make by `prepare`
// (prepared_tables.hpp), which PostgreSQL understands, too.
class OtherServer {
public:
    // What such a server does otherwise by nature; whoever compares answers asks here.
    static constexpr bool kWordsErrorsAlike = false;  // numbers are the same, texts need not be
    static constexpr bool kKeepsOrder = false;        // of rows that no ORDER BY has put in order
    // The database that is always there.
    [[nodiscard]] const char* mainDatabase() const { return isPostgres() ? "postgres" : "master"; }
    [[nodiscard]] bool isPostgres() const {
        return template_.find("PostgreSQL") != std::string::npos;
    }

    // Null when there is none.
    static OtherServer* given() {
        static OtherServer server;
        return server.template_.empty() ? nullptr : &server;
    }

    // The connection string of a new database.
    [[nodiscard]] std::string makeDatabase() {
        const std::string name =
            "kaptest_" + std::to_string(getpid()) + "_" + std::to_string(made_.size() + 1);
        main()->Execute("CREATE DATABASE " + name);
        made_.push_back(name);
        if (isPostgres()) {
            takeNumbersForTruth(name);
        }
        return connection(name);
    }

    ~OtherServer() {
        for (const std::string& name : made_) {
            try {
                main()->Execute("DROP DATABASE " + name);
            } catch (const AutomationError& error) {
                std::cerr << name << " stays behind: " << error.what() << '\n';
            }
        }
    }
    OtherServer(const OtherServer&) = delete;
    OtherServer& operator=(const OtherServer&) = delete;

private:
    // What the library keeps for the whole program ends in the reverse order of its making: what a
    // connection needs is made first, for the databases are dropped at the very end.
    OtherServer() {
        const char* given = std::getenv("KAPUTIL_TEST_CONNECTION");
        template_ = given == nullptr ? "" : given;
        if (!template_.empty()) {
            main()->Execute("SELECT 1");
        }
    }

    [[nodiscard]] std::string connection(const std::string& database) const {
        constexpr std::string_view kPlace = "{database}";
        std::string text = template_;
        const std::size_t at = text.find(kPlace);
        return at == std::string::npos ? text : text.replace(at, kPlace.size(), database);
    }
    // The programs that the tests stand for write bits as 0 and 1.
    void takeNumbersForTruth(const std::string& database) const {
        auto opened = make<ado::Connection>();
        opened->Open(connection(database));
        opened->Execute(
            "UPDATE pg_cast SET castcontext = 'i' WHERE castsource = 'int4'::regtype AND "
            "casttarget = 'bool'::regtype");
    }
    [[nodiscard]] Ref<ado::Connection> main() const {
        auto opened = make<ado::Connection>();
        opened->Open(connection(mainDatabase()));
        return opened;
    }

    std::string template_;
    std::vector<std::string> made_;
};

}  // namespace kap::test
