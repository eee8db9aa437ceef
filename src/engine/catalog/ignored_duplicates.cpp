#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "engine/catalog/index_notes.hpp"
#include "engine/catalog/schema_catalogue.hpp"

// IGNORE_DUP_KEY: which indexes and keys leave out the rows that they have already.
namespace kap::engine {

// Few indexes ignore duplicates: all of them are looked for at once.
void SchemaCatalogue::addIgnoring(Table& table) const {
    if (!ignoring_) {
        ignoring_.emplace();
        PreparedStatement look(database_.handle(),
                               "SELECT tbl_name, sql FROM main.sqlite_schema WHERE type = 'index' "
                               "AND sql LIKE '%/*~ ignore%' UNION ALL SELECT tbl_name, sql FROM "
                               "temp.sqlite_schema WHERE type = 'index' AND sql LIKE '%/*~ "
                               "ignore%'");
        while (look.step()) {
            if (auto target = conflictTarget(look.text(1)))
                ignoring_->emplace(look.text(0), std::move(*target));
        }
        PreparedStatement tables(database_.handle(),
                                 "SELECT name, sql FROM main.sqlite_schema WHERE type = 'table' "
                                 "AND sql LIKE '%/*~ ignore%' UNION ALL SELECT name, sql FROM "
                                 "temp.sqlite_schema WHERE type = 'table' AND sql LIKE '%/*~ "
                                 "ignore%'");
        while (tables.step()) {
            for (std::string& target : conflictTargetsOfKeys(tables.text(1)))
                ignoring_->emplace(tables.text(0), std::move(target));
        }
    }
    const auto own = ignoring_->equal_range(table.name);
    for (auto each = own.first; each != own.second; ++each)
        table.ignoring.push_back(each->second);
}

// A key stands in the table's text, one that was added later is an index.
bool SchemaCatalogue::ignoresDuplicates(const Table& table, const ConstraintInfo& key,
                                        const std::vector<IndexInfo>& indexes) const {
    const bool later = std::ranges::any_of(indexes, [&](const IndexInfo& index) {
        return sameName(index.table, table.name) && sameName(index.name, key.name) &&
               index.ignoresDuplicates;
    });
    if (later) return true;
    PreparedStatement look(database_.handle(),
                           "SELECT sql FROM main.sqlite_schema WHERE type = 'table' AND name = ?1");
    look.bind(1, std::string_view(table.name));
    return look.step() && keyIgnores(look.text(0), key.name);
}

}  // namespace kap::engine
