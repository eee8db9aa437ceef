#include "migrate/database_copy.hpp"

#include <algorithm>
#include <exception>
#include <set>

#include "migrate/copied_tables.hpp"
#include "migrate/program_copy.hpp"
#include "migrate/relation_copy.hpp"

namespace kap::migrate {

DatabaseCopy::DatabaseCopy(ado::Connection& from, const std::vector<std::string>& tables)
    : from_(from), all_(tables.empty()) {
    const ado::SqlDialect& dialect = dialectOf(from_);
    const std::vector<ado::ObjectName> there = allTablesOf(from_, dialect);
    if (all_) {
        tables_ = there;
    }
    for (const std::string& name : tables) {
        const auto found = std::ranges::find_if(there, [&](const ado::ObjectName& table) {
            return equalsIgnoringCase(table.text(), name);
        });
        tables_.push_back(found == there.end() ? ado::ObjectName(name) : *found);
        static_cast<void>(columnsOf(from_, dialect, tables_.back()));
    }
}

bool DatabaseCopy::run(ado::Connection& to, const CopyListener& listener) {
    RelationCopy relations(from_, to, listener.tell);
    ProgramCopy programs(from_, to, listener.tell);
    const std::vector<ado::ObjectName> tables = relations.inOrder(tables_);
    TableCopy copy(from_, to, listener.tell);
    copy.check(tables);
    copy.begin();
    bool whole = false;
    try {
        makeSchemas(to, all_ ? programs.schemas() : std::vector<std::string>());
        if (all_) {
            programs.copyFunctions();
        }
        whole = copyTables(copy, tables, listener);
    } catch (const std::exception&) {
        copy.abandon();
        throw;
    }
    if (whole) {
        relations.copy(tables);
        programs.copyOthers(all_ ? std::vector<ado::ObjectName>() : tables);
        relations.copyDefaults(tables);
        copy.finish();
    }
    return whole;
}

bool DatabaseCopy::copyTables(TableCopy& copy, const std::vector<ado::ObjectName>& tables,
                              const CopyListener& listener) {
    bool whole = true;
    for (const ado::ObjectName& table : tables) {
        listener.begins(table.text());
        const CopyOutcome outcome = copy.run(table, listener.progress);
        listener.ends(table.text(), outcome);
        whole = whole && outcome.isWhole();
    }
    return whole;
}

// Those of the tables, and `more`.
void DatabaseCopy::makeSchemas(ado::Connection& to, const std::vector<std::string>& more) {
    std::set<std::string> schemas(more.begin(), more.end());
    for (const ado::ObjectName& table : tables_) {
        schemas.insert(table.schema);
    }
    const ado::SqlDialect& dialect = dialectOf(to);
    for (const std::string& schema : schemas) {
        if (!schema.empty()) {
            to.Execute(dialect.creatingSchema(dialect.nameFor(schema)));
        }
    }
}

}  // namespace kap::migrate
