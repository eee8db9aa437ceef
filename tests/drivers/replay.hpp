#pragma once

#include <string>

#include <kaputil/ado/connection.hpp>

#include "support/database.hpp"
#include "support/temporary_folder.hpp"

namespace kap::test {

// A server and its driver that do exactly what a text says (see library/traffic.hpp). In it
//
//     facts NAME triggers        stands for the query that asks for the facts of a table, which has
//                                triggers or not, of a Transact-SQL server
//     fact NAME TYPE key 1 identity generated
//                                for its columns, one a line
//
// Whatever was asked otherwise than it stands there, or was not asked, fails the test.
class Replay {
public:
    explicit Replay(const std::string& traffic);
    ~Replay();
    Replay(const Replay&) = delete;
    Replay& operator=(const Replay&) = delete;

    [[nodiscard]] const std::string& connection() const { return connection_; }
    [[nodiscard]] Ref<ado::Connection> open() const { return test::open(connection_); }
    // How often the driver has asked the server, from the last call on.
    [[nodiscard]] int roundTrips();

private:
    [[nodiscard]] std::string log() const;

    TemporaryFolder folder_;
    std::string file_;
    std::string connection_;
    int counted_ = 0;
};

}  // namespace kap::test
