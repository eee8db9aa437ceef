#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include <kaputil/ado/connection.hpp>

#include "cli/demo/random_source.hpp"
#include "cli/demo/sample_people.hpp"

// What the sample company wrote in two years: orders, delivery notes, invoices, credit notes and
// quotations.
namespace kap::cli {

// A type of document and the counter that numbers it.
struct DocumentType {
    const char* code;
    const char* description;
    const char* counter;
    int share;  // of a hundred documents
};

inline constexpr DocumentType kDocumentTypes[] = {
    {"ORC", "Ordine cliente", "ORD", 24},    {"DDT", "Documento di trasporto", "BOL", 38},
    {"FAI", "Fattura immediata", "FAT", 32}, {"NCR", "Nota di credito", "FAT", 6},
    {"PRV", "Preventivo", "PRE", 0},
};
inline constexpr const DocumentType& kQuotation = kDocumentTypes[4];

// The last number given out by each counter in each year.
using LastNumbers = std::map<std::pair<std::string, int>, int>;

// Fills the tables of documents, invoices and accounting entries. Numbers follow the dates without
// a gap. Quotations have no lines yet.
[[nodiscard]] LastNumbers insertDocuments(ado::Connection& connection, RandomSource& random,
                                          const std::vector<Product>& products);

}  // namespace kap::cli
