#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <kaputil/ado/connection.hpp>

// The company that the demo shows: a wholesaler of ironmongery with its customers, products, two
// years of documents, counters, accounting entries and configuration.
namespace kap::cli {

// The year of the company's newest documents.
inline constexpr int kCurrentYear = 2025;

// Makes the tables and fills them, in one transaction. The same seed gives the same data on every
// machine.
void createSampleCompany(ado::Connection& connection, std::uint64_t seed);

// Whether the database holds the sample company, made by whatever seed.
[[nodiscard]] bool holdsSampleCompany(ado::Connection& connection);

struct TableSize {
    std::string what;  // "customers"
    std::string table;
    std::int32_t rows = 0;
};

// How much there is of what people ask for first.
[[nodiscard]] std::vector<TableSize> sampleCompanySizes(ado::Connection& connection);

}  // namespace kap::cli
