#pragma once

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/sqlscript/csql.hpp>

#include "support/database.hpp"
#include "support/prepared_tables.hpp"

namespace kap::test {

class TransferOfTables : public testing::Test {
protected:
    void SetUp() override {
        KAP_NEEDS_DIALECT(openMemory(), "a transfer's tables are temporary and its text is of it");
    }
};

// A script on a database of its own, in which `tables` were made, with these parameters.
inline Ref<CSQL> transfer(const std::string& tables,
                          const std::vector<std::pair<const char*, const char*>>& parameters) {
    const auto sql = make<CSQL>();
    sql->setConnectionString(memoryDatabase());
    sql->ActiveConnection()->Execute(tables);
    for (const auto& [name, value] : parameters) {
        sql->Parametri()->Scrivi(name, value);
    }
    return sql;
}

}  // namespace kap::test
