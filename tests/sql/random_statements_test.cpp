#include <cstdlib>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "data/driver.hpp"
#include "drivers/driver_registry.hpp"
#include "random_statements.hpp"
#include "support/seed.hpp"

namespace kap::test {
namespace {

std::vector<ado::ServerMessage> messagesOf(ado::Session& session, const std::string& batch) {
    ado::Request request;
    request.text = batch;
    ado::Reply reply;
    try {
        session.execute(request, reply);
    } catch (const ado::DriverError& error) {
        return error.messages();
    }
    return std::move(reply.messages);
}

// What a statement was translated to and nobody can run is this system's own mistake.
bool isInternal(const ado::ServerMessage& message) {
    return message.nativeNumber == 8623 || message.nativeNumber == 8624;
}

std::size_t rounds() {
    const char* given = std::getenv("KAPUTIL_RANDOM_STATEMENTS");
    constexpr std::size_t kRounds = 600;
    return given == nullptr ? kRounds : static_cast<std::size_t>(std::strtoull(given, nullptr, 10));
}

TEST(RandomStatements, EndWithTheServersErrorsOrNone) {
    RandomStatements statements(test::randomSeed());
    std::unique_ptr<ado::Session> session;
    for (std::size_t round = 0; round < rounds(); ++round) {
        // What earlier statements have made of the tables is forgotten now and then.
        constexpr std::size_t kWithOneDatabase = 100;
        if (round % kWithOneDatabase == 0) {
            const auto keys =
                ado::ConnectionString::parse("Provider=KapLocal;Data Source=:memory:");
            session.reset();  // a database in memory lives as long as its connections
            session = ado::driverFor(keys).open(keys);
            for (const std::string& batch : RandomStatements::schema()) {
                for (const ado::ServerMessage& message : messagesOf(*session, batch))
                    ADD_FAILURE() << message.text << "\n" << batch;
            }
        }
        const std::string batch = statements.next();
        for (const ado::ServerMessage& message : messagesOf(*session, batch))
            EXPECT_FALSE(isInternal(message)) << message.text << "\n" << batch;
    }
}

}  // namespace
}  // namespace kap::test
