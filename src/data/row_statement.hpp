#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "data/row_change.hpp"

// The statements that write and read single rows, in the words that all servers know.
namespace kap::ado {

// The parts of such a statement. Names are quoted.
struct RowStatement {
    RowPlan::Kind kind = RowPlan::Kind::Update;
    std::string table;
    std::vector<std::string> columns = {};  // that are assigned
    std::vector<std::string> values = {};   // of them: marks of parameters, or literals
    std::string criteria = {};              // " WHERE ..."; empty: none
    std::vector<std::string> answer = {};   // the columns that are to come back
};

// INSERT, UPDATE or DELETE alone, or the SELECT of what is to come back.
[[nodiscard]] std::string textOf(const RowStatement& row);

// With commas between them, and something in front of each.
[[nodiscard]] std::string listOf(const std::vector<std::string>& parts,
                                 std::string_view before = {});

}  // namespace kap::ado
