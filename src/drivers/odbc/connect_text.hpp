#pragma once

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

#include "data/connection_string.hpp"

namespace kap::ado::odbc {

// Whether connections are kept when a client has closed them, for the next one that wants the same.
struct Pooling {
    bool wanted = false;
    int most = 100;                    // how many are kept
    std::chrono::seconds lifetime{0};  // behind which one is not kept any more; 0: no limit
};

// What a client's connection string says to the ODBC driver manager.
struct ConnectText {
    std::string text;                 // UTF-8
    std::chrono::seconds timeout{0};  // 0: no limit
    std::string password;             // to keep it out of messages; empty: none
    bool oneResult = false;           // no more than one result is to be open at a time
    int port = 0;                     // the server's; 0: the keys do not say it
    Pooling pooling;
};

// Whether a provider's name is one of those that stand for database servers.
[[nodiscard]] bool isServerProvider(std::string_view provider);

// Keys of ODBC (Driver=, DSN=) are passed on as they are. The keys of the server's usual providers
// are translated to those of an ODBC driver for Transact-SQL servers, the best among `installed`:
// the maker's own, newest first, else FreeTDS; kProviderNotFound says what to install when there is
// none. `timeout` holds unless a key gives another. Raises kInvalidArgument for a value that cannot
// be meant.
[[nodiscard]] ConnectText connectTextOf(const ConnectionString& keys,
                                        const std::vector<std::string>& installed,
                                        std::chrono::seconds timeout);

}  // namespace kap::ado::odbc
