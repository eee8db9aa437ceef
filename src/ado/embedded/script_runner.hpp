#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "ado/driver.hpp"
#include "ado/embedded/connection.hpp"
#include "ado/embedded/lru_cache.hpp"
#include "ado/embedded/schema_catalogue.hpp"
#include "ado/embedded/transactions.hpp"
#include "ado/embedded/translate/translation.hpp"
#include "tsql/syntax.hpp"

namespace kap::ado::embedded {

// Runs scripts of the dialect: parses, translates and prepares them, and keeps what it has made by
// the script's text, so that running a script again costs little more than running prepared SQL.
class ScriptRunner {
public:
    ScriptRunner(Connection& connection, SchemaCatalogue& catalogue, Counters& counters,
                 Transactions& transactions);

    // Appends what each statement answers. Raises ServerError, with the line of the script, and
    // SqliteError.
    void run(std::string_view script, std::vector<Result>& results);

private:
    // A statement of a script with what was made of it. It is made when it is first run and made
    // anew when the schema has changed since: statements before it may make the tables it names.
    struct Prepared {
        tsql::Statement syntax;
        bool ready = false;
        std::uint64_t generation = 0;  // of the catalogue
        Translation translation;
        std::vector<ColumnInfo> columns;
        std::vector<PreparedStatement> statements;
    };
    using PreparedScript = std::vector<Prepared>;

    [[nodiscard]] PreparedScript& prepared(std::string_view script, PreparedScript& unkept);
    [[nodiscard]] Result run(Prepared& statement);
    [[nodiscard]] Result runStatement(Prepared& statement);
    [[nodiscard]] bool isCurrent(const Prepared& statement) const;
    void translate(Prepared& statement);
    void ensureCurrent(Prepared& statement);

    [[nodiscard]] Result select(Prepared& statement);
    [[nodiscard]] bool trySelect(Prepared& statement, Result& result);
    enum class SchemaCheck : std::uint8_t { Needed, NotNeeded };
    // False when the schema turns out to have changed; no row has been taken then.
    [[nodiscard]] bool fill(Prepared& statement, Result& result, SchemaCheck check);
    [[nodiscard]] Result write(Prepared& statement);
    [[nodiscard]] Result define(Prepared& statement);
    void runAll(Prepared& statement);

    Connection& connection_;
    SchemaCatalogue& catalogue_;
    Counters& counters_;
    Transactions& transactions_;
    LruCache<PreparedScript> kept_;
};

}  // namespace kap::ado::embedded
