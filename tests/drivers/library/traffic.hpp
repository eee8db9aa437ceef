#pragma once

#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// clang-format off
// What an ODBC driver is to be asked and has to answer, line by line:
//
//     server Microsoft SQL Server    what SQLGetInfo says; before everything else
//     driver libtdsodbc.so           likewise
//     results 1                      how many may be open at once; 0: no limit
//     > SELECT a, b FROM t           a text that is run; lines behind that begin with blanks are
//       WHERE c = ?                  of it
//     ? nvarchar A1                  its parameters, with their types
//     columns a int, b nvarchar(10)  a result's columns: int, nvarchar, datetime, decimal ...
//     row 1 | due                    its rows; NULL
//     count 1                        a statement without rows
//     none -1                        a statement that answers SQL_NO_DATA, with its count
//     error 23000 2627 text          a failure: state, number, text. Several are told at once
//     then                           ... unless this stands between them
//     info 01000 0 text              a message that goes with what comes next
//     waits                          what comes next comes when the statement is cancelled
//     lost                           the connection ends with the failure before it
//     breaks 08S01 20004 text        the block that begins behind the rows, or that they do not
//                                    fill, cannot be fetched, for the connection has ended
//     > !commit                      other calls: !commit, !rollback, !autocommit on or off,
//                                    !tables NAME, !columns NAME, !keys NAME, !indexes NAME, !types
// clang-format on
namespace kap::test::replay {

struct Report {
    std::string state;
    int native = 0;
    std::string text;
};

struct Column {
    std::string name;
    std::string type;
    int size = 0;
    int scale = 0;
};

// What one call of SQLExecDirect or SQLMoreResults gives.
struct Answer {
    enum class Kind { Rows, Count, NoData, Failure };
    Kind kind = Kind::Count;
    std::vector<Column> columns;
    std::vector<std::vector<std::string>> rows;
    long count = -1;
    std::vector<Report> reports;
    bool lost = false;
    bool waits = false;
    std::optional<Report> breaks;
};

struct Exchange {
    std::string text;
    std::vector<std::string> parameters;
    std::deque<Answer> answers;
};

struct Traffic {
    std::string server = "Microsoft SQL Server";
    std::string driver;
    int results = 1;
    std::deque<Exchange> exchanges;

    static Traffic read(const std::string& file);
};

}  // namespace kap::test::replay
