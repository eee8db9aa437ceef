#pragma once

#include <functional>
#include <string>
#include <vector>

#include "migrate/copied_tables.hpp"

namespace kap::migrate {

// Copies what ties tables together, which comes behind their rows: indexes, unique constraints and
// foreign keys. What the target has already stays; what it refuses or cannot be said in its dialect
// is told and left behind.
class RelationCopy {
public:
    // `tell` is given a sentence for whatever is left behind.
    RelationCopy(ado::Connection& from, ado::Connection& to,
                 std::function<void(const std::string&)> tell);

    // The tables so that each stands behind those that it refers to.
    [[nodiscard]] std::vector<ado::ObjectName> inOrder(
        const std::vector<ado::ObjectName>& tables) const;

    // For tables that have been copied.
    void copy(const std::vector<ado::ObjectName>& tables);
    // The defaults that the tables were not made with.
    void copyDefaults(const std::vector<ado::ObjectName>& tables);

private:
    [[nodiscard]] std::string columnList(const std::vector<std::string>& columns) const;
    [[nodiscard]] std::string newName(const std::string& name, const ado::ObjectName& table);
    // Whether the target has taken the script; else that is told.
    bool run(const std::string& what, const std::string& script);
    void addIndexes(const ado::ObjectName& table);
    [[nodiscard]] std::string creation(const CopiedIndex& index, const std::string& name,
                                       const ado::ObjectName& target) const;
    void addDefault(const ado::ObjectName& table, const ado::ColumnDefinition& column);
    void addForeignKey(const CopiedForeignKey& key);

    ado::Connection& from_;
    ado::Connection& to_;
    const ado::SqlDialect& fromDialect_;
    const ado::SqlDialect& toDialect_;
    std::function<void(const std::string&)> tell_;
    std::vector<CopiedForeignKey> foreignKeys_;
    std::vector<ado::ObjectName> namesGiven_;
};

}  // namespace kap::migrate
