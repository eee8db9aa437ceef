#pragma once

#include <cstdint>

#include <kaputil/numbering/number_register.hpp>

// What a register's rows mean, without a database.
namespace kap::numbering {

// What is known of a counter and year beside its rows.
struct RegisterFacts {
    bool typesDraw = true;     // document types draw their numbers from this counter
    bool entriesRead = true;   // the database has accounting entries
    std::int32_t today = 0;    // in days from 30 December 1899
    std::int64_t highest = 0;  // the definitive value when everything else had been read
};

// The year that a day of a carrier lies in.
[[nodiscard]] int yearOf(std::int32_t day);

// Sorts the carriers, and finds the anomalies and totals. Anomalies that are there already stay.
void analyse(NumberRegister& numberRegister, const RegisterFacts& facts);

}  // namespace kap::numbering
