// Copies a database: FROM TO ROWS. Once so many rows of a table have arrived the program is killed
// while it goes on, at whatever point of its work that is; with 0 it goes on to the end, and its
// exit code says whether everything is equal.
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <random>
#include <thread>

#include <kaputil/ado/connection.hpp>

#include "migrate/database_copy.hpp"

namespace {

void killSoon() {
    constexpr unsigned kLongest = 20000;
    std::thread([wait = std::random_device()() % kLongest] {
        std::this_thread::sleep_for(std::chrono::microseconds(wait));
        kill(getpid(), SIGKILL);
    }).detach();
}

bool copies(const char* source, const char* target, std::int64_t rows) {
    const auto from = kap::make<kap::ado::Connection>();
    const auto to = kap::make<kap::ado::Connection>();
    from->Open(source);
    to->Open(target);
    return kap::migrate::DatabaseCopy(*from, {}).run(
        *to,
        {.tell = [](const std::string& left) { std::cerr << left << '\n'; },
         .begins = [](const std::string& /*table*/) {},
         .progress =
             [&](std::int64_t done, std::int64_t /*all*/) {
                 if (rows > 0 && done >= rows) {
                     killSoon();
                 }
             },
         .ends = [](const std::string& /*table*/, const kap::migrate::CopyOutcome& /*as*/) {}});
}

}  // namespace

int main(int count, char** arguments) {
    constexpr int kArguments = 4;
    if (count != kArguments) {
        return 2;
    }
    try {
        return copies(arguments[1], arguments[2], std::atoll(arguments[3])) ? 0 : 1;
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
