#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <kaputil/ado/connection.hpp>

#include "cli/demo/random_source.hpp"

// Who buys from the sample company, and what.
namespace kap::cli {

inline constexpr int kCustomers = 400;
inline constexpr int kFirstCustomer = 1001;

struct Product {
    std::string code;
    std::string description;
    std::string unit;
    std::int64_t price = 0;  // in ten-thousandths of a euro
    int vatPercent = 0;
};

// An Italian VAT number: seven digits of a serial number, three of the tax office, a check digit.
[[nodiscard]] std::string vatNumber(std::int64_t serial, int taxOffice);

void insertCustomers(ado::Connection& connection, RandomSource& random);

[[nodiscard]] std::vector<Product> makeProducts();
void insertProducts(ado::Connection& connection, const std::vector<Product>& products);

}  // namespace kap::cli
