#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include <kaputil/base/export.hpp>

// The embedded database by itself: one file that reads the Transact-SQL dialect, without
// connections and recordsets. Everything is UTF-8.
//
//   kap::engine::EmbeddedDatabase database("azienda.db");
//   database.run("CREATE TABLE Clienti (Codice int PRIMARY KEY, Nome varchar(40))");
//   for (const auto& result : database.run("SELECT * FROM Clienti")) ...
namespace kap::engine {

// Bytes of a binary column.
struct Bytes {
    std::string bytes;

    friend bool operator==(const Bytes&, const Bytes&) = default;
};

// A value of a result: monostate is NULL. bit and the whole numbers are integers; float and real
// are doubles; money and decimals are their plain digits ("-12.50"), so that nothing is rounded;
// dates are "2025-03-31 10:30:00", with milliseconds where there are any; all others are texts.
using ResultValue = std::variant<std::monostate, std::int64_t, double, std::string, Bytes>;

struct ResultSetColumn {
    std::string name;  // empty for an expression without a name
    bool nullable = true;
};

// What one statement answered: rows, or how many rows it wrote, or neither.
struct ResultSet {
    std::vector<ResultSetColumn> columns;        // empty: no rows
    std::vector<std::vector<ResultValue>> rows;  // a value for each column
    std::int64_t rowsWritten = -1;               // -1: nothing counts them
};

// A column of a stored table, as the dialect writes its type: "decimal(10,2)".
struct ColumnFacts {
    std::string name;
    std::string type;
    bool nullable = true;
    bool identity = false;
    int keyPlace = 0;  // in the primary key from 1; 0 outside of it
};

struct TableFacts {
    std::string name;
    std::vector<ColumnFacts> columns;
};

// An error with the server's number, as scripts know it. `what()` is its text.
class KAPUTIL_EXPORT DatabaseError : public std::runtime_error {
public:
    DatabaseError(int number, const std::string& text, int line, int severity)
        : std::runtime_error(text), number_(number), line_(line), severity_(severity) {}

    [[nodiscard]] int number() const noexcept { return number_; }
    [[nodiscard]] int line() const noexcept { return line_; }  // in the script, from 1; 0: none
    [[nodiscard]] int severity() const noexcept { return severity_; }

private:
    int number_;
    int line_;
    int severity_;
};

// How a database is opened.
struct DatabaseSettings {
    bool readOnly = false;                 // and the file must be there
    std::chrono::seconds lockTimeout{30};  // how long other writers are waited for
    bool synchronous = true;               // a commit waits until it is on the disk
};

// One open database. Objects of several threads and processes may have the same file open; one
// object belongs to one thread at a time. Closing undoes an open transaction.
class KAPUTIL_EXPORT EmbeddedDatabase {
public:
    // Opens a file, which is made when it is missing. ":memory:NAME" is a database that lives in
    // this process until its last object goes. Raises DatabaseError when it cannot be opened.
    explicit EmbeddedDatabase(const std::filesystem::path& file,
                              const DatabaseSettings& settings = {});
    EmbeddedDatabase(EmbeddedDatabase&&) noexcept;
    EmbeddedDatabase& operator=(EmbeddedDatabase&&) noexcept;
    EmbeddedDatabase(const EmbeddedDatabase&) = delete;
    EmbeddedDatabase& operator=(const EmbeddedDatabase&) = delete;
    ~EmbeddedDatabase();

    // Runs one batch of the dialect and gives what each of its statements answered. Raises
    // DatabaseError with the first error; whether what came before it stands is as on a server, and
    // what was printed till then is kept.
    std::vector<ResultSet> run(std::string_view script);

    // What scripts have printed since this was last asked, in order.
    [[nodiscard]] std::vector<std::string> takeMessages();

    // Transactions may be nested, and only the outermost commit keeps; a rollback ends them all.
    void begin();
    void commit();
    void rollback();
    [[nodiscard]] int transactionDepth() const;

    // The tables of the file in the order of their names, without temporary ones.
    [[nodiscard]] std::vector<TableFacts> tables();

    // Copies the database to a new file while it may be in use; the copy is checked before it gets
    // its name. Raises DatabaseError when the file is there already.
    void backUp(const std::filesystem::path& copy);

    // Raises DatabaseError naming what is amiss unless the file is whole.
    void check();

private:
    struct Inside;
    std::unique_ptr<Inside> inside_;
};

}  // namespace kap::engine
