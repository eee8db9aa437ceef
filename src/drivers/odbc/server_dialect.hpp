#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "data/dialects/sql_dialects.hpp"
#include "data/driver.hpp"
#include "data/row_statement.hpp"
#include "drivers/odbc/api.hpp"
#include "drivers/odbc/column_types.hpp"
#include "drivers/odbc/driver_traits.hpp"

namespace kap::ado::odbc {

struct TableFacts;
struct TableName;

// Criteria that a column holds the value of a parameter, which may stand in them more than once.
struct Comparison {
    std::string text;
    int marks = 1;
};

// What a kind of database servers, and the driver that reaches it, does differently from others:
// the one place that knows. This class is a server of which nothing is known but the standard and
// what its driver announces; each known kind is a class in a file of its own. There is one a
// connection.
class ServerDialect {
public:
    // How a written row comes back, and how many there were.
    enum class Answer : std::uint8_t {
        Returned,  // the rows that the statement answers are those that it has written
        Selected,  // queries behind the statement tell, in one text with it
        Counted,   // the driver counts, and a query of its own reads the row
    };

    // The columns of a query for facts, counted from 1. Flags are 0 or 1; the key counts its
    // columns from 1, and the others are 0.
    enum Fact : std::uint8_t {
        Name = 1,
        Type,
        Size,
        Scale,
        Nullable,
        Identity,
        Generated,
        KeyPlace,
        Triggers,
        Binary,
    };

    explicit ServerDialect(DriverTraits driver) : driver_(std::move(driver)) {}
    virtual ~ServerDialect() = default;
    ServerDialect(const ServerDialect&) = delete;
    ServerDialect& operator=(const ServerDialect&) = delete;

    [[nodiscard]] const DriverTraits& driver() const noexcept { return driver_; }

    // How tables are described and made there, whichever driver reaches it.
    [[nodiscard]] virtual const SqlDialect& sql() const { return transactSql(); }

    [[nodiscard]] std::string quoted(std::string_view name) const;
    // A name as the catalogue has it that a text writes without quotes.
    [[nodiscard]] std::string folded(std::string_view name) const;

    // Fills in the type, sizes and row version of a column.
    void describe(const AnnouncedType& type, ColumnInfo& info) const;
    // What the driver means by what it announces.
    [[nodiscard]] virtual AnnouncedType meant(const AnnouncedType& announced) const {
        return announced;
    }
    // What texts without a limit are announced with; 0: they are told apart.
    [[nodiscard]] virtual SQLULEN inventedSize() const { return 0; }
    // What texts that are announced as wide ones are to programs.
    [[nodiscard]] virtual TextKind wideTexts() const { return TextKind::Wide; }
    // Whether parameters of a procedure are known by their names.
    [[nodiscard]] virtual bool namesParameters() const { return false; }

    // The mark of a parameter that is stored in a column of this type.
    [[nodiscard]] virtual std::string mark(const AnnouncedType& /*type*/) const { return "?"; }
    // A quoted column compared with a parameter.
    [[nodiscard]] virtual Comparison comparison(const std::string& column,
                                                const AnnouncedType& type) const;

    // How a change of a table of which these facts are known is answered.
    [[nodiscard]] virtual Answer answerTo(const RowPlan& /*plan*/,
                                          const TableFacts& /*facts*/) const {
        return Answer::Counted;
    }
    // A query without rows, whose only column has this name, to stand in front of a text; empty:
    // there is none.
    static constexpr std::string_view kNoRows = "kap_no_rows";
    [[nodiscard]] virtual std::string noRows() const { return {}; }

    // A text as the server reads it, in words that others would use: nothing but what would be an
    // error there is said otherwise. `isQuery`: it is one query and nothing else.
    [[nodiscard]] virtual std::string said(const std::string& text, bool /*isQuery*/) const {
        return text;
    }

    // The statement that answers with the rows it writes.
    [[nodiscard]] virtual std::string returning(const RowStatement& row) const;
    // The statement with two queries behind it: how many rows it has written, and `reading`, unless
    // that is empty. `transaction`: all of it is one of its own.
    [[nodiscard]] virtual std::string selecting(const RowStatement& row, const std::string& reading,
                                                bool transaction) const;
    // What undoes such a transaction when the text has failed in the midst of it; empty: nothing.
    [[nodiscard]] virtual std::string undoing() const { return {}; }
    // A query for the number of transactions that are open on the connection; empty: there is none.
    [[nodiscard]] virtual std::string openTransactions() const { return {}; }
    // The expression for the identity that the statement before has given out; empty: none.
    [[nodiscard]] virtual std::string lastIdentity() const { return {}; }
    // Whether an error says that a table with triggers cannot answer with rows; nothing has been
    // written then.
    [[nodiscard]] virtual bool refusesToReturn(const ServerMessage& /*error*/) const {
        return false;
    }

    // A query for the facts of a table, one row a column of it in their order, as Fact numbers what
    // is told; empty: the driver's catalogue functions tell.
    [[nodiscard]] virtual std::string factsQuery(const TableName& /*table*/) const { return {}; }
    // A query that answers as SQLGetTypeInfo does, for drivers that fail to; empty: none.
    [[nodiscard]] virtual std::string typesQuery() const { return {}; }

    // A query that reads an escaped quotation mark out of a JSON text, as a table's column. What
    // else it answers, or a failure, says that there are no such tables. Empty: there are none.
    [[nodiscard]] virtual std::string jsonQuery() const { return {}; }

    // What the server's own number says better than the SQLSTATE that the driver gives.
    virtual void refine(ServerMessage& /*message*/) const {}

private:
    DriverTraits driver_;
};

// The dialect of the server that this driver has connected to.
[[nodiscard]] std::unique_ptr<const ServerDialect> dialectOf(DriverTraits driver);

// The known kinds.
[[nodiscard]] std::unique_ptr<const ServerDialect> makeTransactDialect(DriverTraits driver);
[[nodiscard]] std::unique_ptr<const ServerDialect> makePostgresDialect(DriverTraits driver);

}  // namespace kap::ado::odbc
