#pragma once

#include <cstddef>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include "data/driver.hpp"

// Scripts in the dialect with what a server answers to them, as files of text.
//
//     # name: control/while
//     # purpose: WHILE repeats as long as its condition holds
//
//     statement ok
//     CREATE TABLE t (a int)
//
//     statement count 2
//     INSERT INTO t VALUES (1), (NULL)
//
//     statement error 8134
//     SELECT 1 / 0
//     ----
//     Divide by zero error encountered.
//
//     query
//     SELECT a, 'x' AS b FROM t ORDER BY a
//     ----
//     NULL | x
//     1 | x
//
//     messages
//     PRINT 'one'
//     ----
//     one
//
// Blocks are separated by empty lines; each is one batch. `statement ok` expects no error,
// `statement count n` that the last count of rows is n, `statement error n` that the first error
// has that number (and, when there is an expectation, that the texts of all errors are its lines),
// `query` the rows of all results ("--" between two results; `query sorted` compares the rows in
// order of their text), `messages` the texts of everything that was reported, errors too. A word
// like "con2" at the end of the first line runs the block on a second connection to the same
// database. Lines that begin with # are comments.
//
// Values are written as their type shows them: NULL, 1, 2.50 with all decimals of the type,
// 2003-12-25 10:30:00.000, 0x0AFF, texts as they are with trailing blanks as "·".
namespace kap::test {

struct ScriptBlock {
    enum class Kind { Ok, Count, Error, Query, SortedQuery, Messages };
    Kind kind = Kind::Ok;
    int number = 0;  // the expected error or count
    int connection = 1;
    std::string sql;
    bool expects = false;  // has a part behind "----"
    std::vector<std::string> expected;
    int line = 1;  // of the file
};

struct ScriptFile {
    std::string name;  // the topic and the file's name, without ending
    std::filesystem::path path;

    // Throws std::runtime_error, with the line, for a file that is not of this form.
    [[nodiscard]] std::vector<ScriptBlock> blocks() const;
};

// In the message of a test that has failed.
inline std::ostream& operator<<(std::ostream& out, const ScriptFile& file) {
    return out << file.name;
}

// Every *.test file below a folder, in order of their names.
[[nodiscard]] std::vector<ScriptFile> scriptFiles(const std::filesystem::path& folder);

// The rows of a result, one text a row.
[[nodiscard]] std::vector<std::string> shownRows(const ado::Result& result);

}  // namespace kap::test
