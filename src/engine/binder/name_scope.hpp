#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "engine/catalog/object_names.hpp"
#include "engine/catalog/tables.hpp"
#include "tsql/type_spec.hpp"

namespace kap::engine {

// A variable of a script: its type, and its place among the values that a statement is run with.
struct Variable {
    std::string name;  // "@x"; "?1" for the first parameter of a request
    tsql::TypeSpec type;
    int slot = 0;
};

// A table that only the running script sees: a table variable, or the inserted and deleted rows of
// a trigger. `table.name` is that of the temporary table that holds its rows.
struct LocalTable {
    std::string name;
    Table table;
    bool readOnly = false;  // a parameter
};

// What the session has set for the statements that write.
struct WriteSettings {
    std::string
        identityInsert;  // the stored name of the table whose identity column may be written; empty: none
    std::int64_t rowLimit = 0;  // of SET ROWCOUNT; 0: none
    bool operator==(const WriteSettings&) const = default;
};

// What the names in a statement can mean: the tables of the database, and what the script that it
// stands in has declared.
class NameScope {
public:
    explicit NameScope(const Catalogue& catalogue) : catalogue_(&catalogue) {}

    [[nodiscard]] const Catalogue& catalogue() const { return *catalogue_; }
    // Where names without a schema are looked for first: the schema of the module they stand in.
    [[nodiscard]] const std::string& schema() const { return schema_; }
    void setSchema(std::string_view schema) { schema_ = schema; }

    // The variable of that name (case ignored), or null.
    [[nodiscard]] const Variable* variable(std::string_view name) const;
    [[nodiscard]] const std::deque<Variable>& variables() const { return variables_; }
    // Declares a variable. Error 134 when there is one of that name.
    const Variable& declare(const std::string& name, const tsql::TypeSpec& type, int line);

    // The script's own table of that name (case ignored), or null.
    [[nodiscard]] const Table* localTable(std::string_view name) const;
    [[nodiscard]] const std::deque<LocalTable>& localTables() const { return localTables_; }
    void addLocalTable(LocalTable table);
    void setReadOnly(std::string_view name);

    [[nodiscard]] const WriteSettings& settings() const { return *settings_; }
    // `settings` must live as long as the names do.
    void follow(const WriteSettings& settings) { settings_ = &settings; }

private:
    const Catalogue* catalogue_;
    std::string schema_{kDefaultSchema};
    std::deque<Variable> variables_;
    std::deque<LocalTable> localTables_;
    static const WriteSettings kNoSettings;
    const WriteSettings* settings_ = &kNoSettings;
};

}  // namespace kap::engine
