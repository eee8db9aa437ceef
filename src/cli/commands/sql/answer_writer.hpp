#pragma once

#include <cstdint>
#include <iosfwd>
#include <memory>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>

#include "cli/output/language.hpp"

namespace kap::cli {

// How answers are printed, beside the tables of table_printer.hpp.
enum class AnswerForm : std::uint8_t { Csv, Tsv, Markdown, Html, Json, JsonLines, Vertical };

// Prints the answers of a script one after the other.
class AnswerWriter {
public:
    AnswerWriter() = default;
    AnswerWriter(const AnswerWriter&) = delete;
    AnswerWriter& operator=(const AnswerWriter&) = delete;
    virtual ~AnswerWriter() = default;

    // Prints what a statement answered: its rows, or how many it wrote. Gives back how many rows
    // were printed. Raises what reading a row raises, when those before it are printed. Ends early
    // when nobody reads the output any more.
    virtual std::int64_t write(ado::Recordset& answer) = 0;
    // What stands behind the last answer.
    virtual void finish() {}
    // Whether rows are read once, from the first to the last, and none is kept: then the memory
    // does not depend on how many there are.
    [[nodiscard]] virtual bool readsOnce() const { return true; }
};

// What prints onto `out`; lines come out as soon as the next row has to be waited for.
//
//     Csv        comma-separated values; Null is nothing, an empty text ""
//     Tsv        the columns' names and the rows, tabs between values; a tab, line feed, return or
//                backslash in a value is \t, \n, \r, \\, and Null is nothing
//     Markdown   a table; Null is nothing
//     Html       one page for browsers with everything in it
//     Json       an object for each answer:
//                {"columns":[{"name":"Codice","type":"varchar","size":3}],
//                 "rows":[{"Codice":"EUR"}],"rowsAffected":null}
//     JsonLines  an object for each row
//     Vertical   a line for each value, for people
//
// An empty line stands between the answers of the first three. Of statements without rows only Json
// tells how many they wrote.
[[nodiscard]] std::unique_ptr<AnswerWriter> answerWriter(AnswerForm form, std::ostream& out,
                                                         Language language);

// How the answers that it prints are read.
[[nodiscard]] inline ado::Connection::Reading readingFor(const AnswerWriter& writer) {
    return writer.readsOnce() ? ado::Connection::Reading::Once : ado::Connection::Reading::Freely;
}

}  // namespace kap::cli
