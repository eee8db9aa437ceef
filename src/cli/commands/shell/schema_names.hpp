#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <kaputil/ado/connection.hpp>

namespace kap::cli {

// The names of a database that a statement may want, read when they are first needed.
class SchemaNames {
public:
    explicit SchemaNames(ado::Connection& connection) : connection_(connection) {}

    // They may have changed.
    void forget() noexcept { known_ = false; }

    // What `word` can become in a statement that begins with `before`: key words, tables, programs,
    // and the columns of the tables that the statement names, of all when it names none. A word
    // with a point in it becomes a column behind the point.
    [[nodiscard]] std::vector<std::string> completions(std::string_view before,
                                                       std::string_view word);
    // The tables and views alone.
    [[nodiscard]] std::vector<std::string> tables();

private:
    struct Column {
        std::string table;
        std::string name;
    };
    void learn();
    [[nodiscard]] std::vector<std::string> columnsFor(std::string_view statement) const;

    ado::Connection& connection_;
    bool known_ = false;
    std::vector<std::string> tables_;
    std::vector<std::string> programs_;
    std::vector<Column> columns_;
};

}  // namespace kap::cli
