#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "ado/embedded/catalogue.hpp"
#include "ado/embedded/counters.hpp"
#include "ado/embedded/sqlite.hpp"

namespace kap::ado::embedded {

// The tables of an open file as the dialect sees them, read from SQLite's schema when they are
// first named and kept until the schema changes.
//
// Tables made by other programs can be used too: their columns get the type that SQLite's affinity
// of the declared type stands for (bigint, float, nvarchar(max) or varbinary(max)).
class SchemaCatalogue : public Catalogue {
public:
    SchemaCatalogue(Database& database, Counters& counters);

    [[nodiscard]] const Table* find(std::string_view name) const override;

    // Compares with the file's schema and forgets everything when it has changed. What find() then
    // answers holds as long as the transaction that this is called in.
    void refresh();
    // The schema is being changed by this connection.
    void invalidate();
    // Another number each time that everything was forgotten.
    [[nodiscard]] std::uint64_t generation() const noexcept { return generation_; }

private:
    struct Entry {
        std::string name;
        bool temporary = false;
        std::unique_ptr<Table> table;  // read when it is first asked for
    };

    void readNames() const;
    void readNames(const char* sql, bool temporary) const;
    [[nodiscard]] std::unique_ptr<Table> read(const Entry& entry) const;

    Database& database_;
    Counters& counters_;
    PreparedStatement version_;
    std::int64_t knownVersion_ = -1;
    std::uint64_t generation_ = 0;
    // By the name with its case folded; empty until a table is asked for.
    mutable std::unordered_map<std::string, Entry> tables_;
    mutable bool namesRead_ = false;
};

}  // namespace kap::ado::embedded
