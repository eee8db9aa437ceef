#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <kaputil/ado/connection.hpp>

// The counters of documents as the database has them.
namespace kap::tools {

struct Reservation {
    std::int64_t number = 0;
    std::string state;  // as it is kept: D read, U taken, M taken for the accounts, else untouched
};

struct NumberedDocument {
    std::int64_t number = 0;
    std::string type;
};

// Numbers that neither a document nor a reservation has, with the documents on both sides.
struct Gap {
    std::int64_t first = 0;
    std::int64_t last = 0;
    std::optional<NumberedDocument> before;
    std::optional<NumberedDocument> behind;
};

struct CounterState {
    std::string code;
    int year = 0;
    std::optional<std::int64_t> definitive;  // the last number given out; nullopt is Null
    std::optional<std::int64_t> provisional;
    std::vector<Reservation> reservations;
    std::vector<NumberedDocument> beyond;  // documents with numbers above the definitive one
    std::vector<Gap> gaps;                 // below it
};

// The counters, all or those of a code or year, in the order of code and year. Reads only. Raises
// the database's errors.
[[nodiscard]] std::vector<CounterState> readCounters(ado::Connection& connection,
                                                     const std::optional<std::string>& code,
                                                     const std::optional<int>& year);

}  // namespace kap::tools
