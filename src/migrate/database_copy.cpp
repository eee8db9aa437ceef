#include "migrate/database_copy.hpp"

#include <exception>
#include <utility>

#include "migrate/copied_tables.hpp"
#include "migrate/program_copy.hpp"
#include "migrate/relation_copy.hpp"

namespace kap::migrate {

DatabaseCopy::DatabaseCopy(ado::Connection& from, std::vector<std::string> tables)
    : from_(from), chosen_(std::move(tables)) {
    const ado::SqlDialect& dialect = dialectOf(from_);
    for (const std::string& table : chosen_) {
        static_cast<void>(columnsOf(from_, dialect, table));
    }
    tables_ = chosen_.empty() ? tablesOf(from_, dialect) : chosen_;
}

bool DatabaseCopy::run(ado::Connection& to, const CopyListener& listener) {
    RelationCopy relations(from_, to, listener.tell);
    ProgramCopy programs(from_, to, listener.tell);
    const std::vector<std::string> tables = relations.inOrder(tables_);
    TableCopy copy(from_, to, listener.tell);
    copy.check(tables);
    copy.begin();
    bool whole = false;
    try {
        if (chosen_.empty()) {
            programs.copyFunctions();
        }
        whole = copyTables(copy, tables, listener);
    } catch (const std::exception&) {
        copy.abandon();
        throw;
    }
    if (whole) {
        relations.copy(tables);
        programs.copyOthers(chosen_);
        relations.copyDefaults(tables);
        if (chosen_.empty()) {
            tellOthers(listener);
        }
        copy.finish();
    }
    return whole;
}

bool DatabaseCopy::copyTables(TableCopy& copy, const std::vector<std::string>& tables,
                              const CopyListener& listener) {
    bool whole = true;
    for (const std::string& table : tables) {
        listener.begins(table);
        const CopyOutcome outcome = copy.run(table, listener.progress);
        listener.ends(table, outcome);
        whole = whole && outcome.isWhole();
    }
    return whole;
}

void DatabaseCopy::tellOthers(const CopyListener& listener) {
    for (const std::string& other : otherTablesOf(from_, dialectOf(from_))) {
        listener.tell("The table " + other + " stays behind: it is in another schema.");
    }
}

}  // namespace kap::migrate
