// Files of rows and scripts: BULK INSERT, OPENROWSET(BULK), the command line's import, its scripts
// with variables and other files, and the encodings of all of these.
#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <kaputil/ado/connection.hpp>
#include <kaputil/automation/array.hpp>
#include <kaputil/automation/convert.hpp>

#include "base/unicode.hpp"
#include "cli/commands/import/delimited_text.hpp"
#include "cli/commands/import/table_filler.hpp"
#include "cli/commands/sql/script_variables.hpp"
#include "cli/output/usage_error.hpp"
#include "cli/text_encoding.hpp"
#include "fuzz/reader_support.hpp"
#include "fuzz/reader_targets.hpp"
#include "migrate/row_import.hpp"
#include "platform/text_encoding.hpp"

namespace kap::fuzz {
namespace {

constexpr const char16_t* kRowsOfT = u"SELECT COUNT(*) FROM t";

std::int32_t rowsOfT(const Ref<ado::Connection>& connection) {
    return convert::toLong(answerOf(connection, kRowsOfT));
}

// Like ends(), for what the command line refuses.
template <class Action>
bool isTaken(Action action) {
    try {
        return ends(action);
    } catch (const cli::UsageError& error) {
        require(*error.what() != '\0', "a refusal without words");
        return false;
    }
}

// The first unit chooses the options, the rest is the file. All of its rows come in, those that can
// be read, or none; as one value it is what it is.
void bulkFiles(std::u16string_view text) {
    static const Ref<ado::Connection> connection = freshDatabase();
    static constexpr std::array kOptions = {
        u"KEEPNULLS",
        u"FORMAT = 'CSV', FIRSTROW = 2, LASTROW = 9",
        u"FIELDTERMINATOR = ',', ROWTERMINATOR = '0x0a', CODEPAGE = '65001', MAXERRORS = 0",
        u"FIELDTERMINATOR = ';', FIELDQUOTE = '\"', CODEPAGE = '1252', FIRE_TRIGGERS",
        u"FIELDTERMINATOR = '', ROWTERMINATOR = '\\0', KEEPIDENTITY",
        u"DATAFILETYPE = 'widechar', KEEPIDENTITY"};
    if (text.empty()) {
        return;
    }
    const std::size_t chosen = text.front() % kOptions.size();
    const bool wide = chosen + 1 == kOptions.size();
    const std::string bytes = wide ? platform::utf16Bytes(text.substr(1)) : bytesOf(text.substr(1));
    const std::u16string file =
        quoted(String(fileWith("righe.txt", bytes).string()).view()).substr(1);
    const std::int32_t before = rowsOfT(connection);
    connection->BeginTrans();
    ends([&] {
        connection->Execute(u"BULK INSERT t FROM " + file + u" WITH (" + kOptions[chosen] + u")");
    });
    connection->RollbackTrans();
    require(rowsOfT(connection) == before, "rows of a file that stay");
    const std::u16string from = u" FROM OPENROWSET(BULK " + file + u", SINGLE_";
    const Variant whole =
        answerOf(connection, u"SELECT ISNULL(DATALENGTH(BulkColumn), 0)" + from + u"BLOB) AS x");
    require(convert::toDouble(whole) == static_cast<double>(bytes.size()),
            "a file that has another length as a value");
    for (const std::u16string kind : {u"CLOB", u"NCLOB"}) {
        ends([&] { connection->Execute(u"SELECT BulkColumn" + from + kind + u") AS x"); });
    }
}

using Rows = std::vector<std::vector<std::string>>;

Rows rowsIn(std::string text, char delimiter, char quote, bool& broken) {
    cli::DelimitedText reader(text, delimiter, quote);
    std::vector<cli::DelimitedValue> values;
    Rows rows;
    while (reader.next(values)) {
        std::vector<std::string>& row = rows.emplace_back();
        for (const cli::DelimitedValue& value : values) {
            broken = broken || value.broken;
            row.emplace_back(value.text);
        }
    }
    return rows;
}

// What is read, written in quotes, is read again.
void requireSameInQuotes(const Rows& rows) {
    std::string written;
    for (const auto& row : rows) {
        std::string_view before;
        for (const std::string& value : row) {
            written.append(before).append("\"");
            for (const char unit : value) {
                written.append(unit == '"' ? 2 : 1, unit);
            }
            written += '"';
            before = ";";
        }
        written += "\r\n";
    }
    bool broken = false;
    require(rowsIn(written, ';', '"', broken) == rows && !broken, "rows that read otherwise");
}

std::vector<ado::ColumnDefinition> columnsOfT(ado::Connection& connection) {
    std::vector<ado::ColumnDefinition> columns;
    for (ado::ColumnDefinition& column : migrate::importableColumns(connection, "t")) {
        if (!column.identity && !column.rowVersion) {
            columns.push_back(std::move(column));
        }
    }
    return columns;
}

// How many rows of a text went into t, and how many were told to be wrong.
std::pair<std::int64_t, std::int64_t> filled(ado::Connection& connection, std::string content,
                                             char delimiter, const cli::CellFormat& format) {
    std::int64_t last = 0;
    std::int64_t told = 0;
    const auto tell = [&](const cli::RowFault& fault) {
        require(!fault.reason.empty(), "a fault without a reason");
        told += fault.row == last ? 0 : 1;
        last = fault.row;
        return true;
    };
    cli::DelimitedText reader(content, delimiter, '"');
    cli::TableFiller filler(connection, "t", columnsOfT(connection), format, "");
    const std::int64_t inserted = filler.fill(reader, tell, [](std::size_t /*read*/) {});
    return {inserted, told};
}

// The first unit chooses the country, the rest is the file. Each row goes in or is told.
void imports(std::u16string_view text) {
    static const Ref<ado::Connection> connection = freshDatabase();
    static const std::array kFormats = {cli::CellFormat(), cli::CellFormat("it-IT"),
                                        cli::CellFormat("en-US")};
    if (text.empty()) {
        return;
    }
    const std::string bytes = bytesOf(text.substr(1));
    std::string content;
    if (!isTaken([&] { content = cli::decoded(bytes, cli::encodingOf(bytes), "prova"); })) {
        return;
    }
    const char delimiter = cli::delimiterOf(content, '"');
    bool broken = false;
    const Rows rows = rowsIn(content, delimiter, '"', broken);
    requireSameInQuotes(rows);
    const std::int32_t before = rowsOfT(connection);
    connection->BeginTrans();
    const auto [inserted, told] =
        filled(*connection, content, delimiter, kFormats[text.front() % kFormats.size()]);
    require(inserted + told == static_cast<std::int64_t>(rows.size()), "a row that is lost");
    require(rowsOfT(connection) == before + inserted, "a row that is not there");
    connection->RollbackTrans();
}

// A script with variables that includes files, and the batches of it.
void variables(std::u16string_view text) {
    static const Ref<ado::Connection> connection = freshDatabase();
    const auto script = unicode::utf8(text);
    if (!script) {
        return;  // scripts are UTF-8 when they come here
    }
    cli::ScriptVariables variables;
    variables.set("tabella", "t");
    variables.set("altro", fileWith("altro.sql", "SELECT $(colonna) FROM $(tabella)\n").string());
    variables.set("questo", fileWith("questo.sql", *script).string());
    std::string prepared;
    if (!isTaken([&] { prepared = variables.prepared(*script); })) {
        return;
    }
    const bool isPlain =
        script->find("$(") == std::string::npos && script->find(':') == std::string::npos;
    require(!isPlain || prepared == *script, "a script that becomes another");
    ends([&] {
        std::int64_t line = 0;
        for (const ado::ScriptBatch& batch : connection->batchesOf(String(prepared))) {
            require(batch.firstLine > line, "a batch before the one before");
            line = batch.firstLine;
        }
    });
}

// Bytes are a text in each encoding, or refused.
void encodings(std::u16string_view text) {
    const std::string bytes = bytesOf(text);
    const auto known = platform::encodingOf(bytes);
    const std::u16string decoded = platform::decodeText(known, bytes);
    require(platform::encodeText(known, decoded) == bytes, "bytes that a text loses");
    using cli::TextEncoding;
    for (const auto encoding : {cli::encodingOf(bytes), TextEncoding::Utf8, TextEncoding::Utf16,
                                TextEncoding::Windows1252, TextEncoding::Dos850}) {
        isTaken([&] {
            require(unicode::isUtf8(cli::decoded(bytes, encoding, "prova")),
                    "a file that is no text");
        });
    }
}

constexpr std::array<Target, 4> kFileTargets = {{{"bulk", &bulkFiles, 20},
                                                 {"imports", &imports, 20},
                                                 {"variables", &variables, 10},
                                                 {"encodings", &encodings}}};

}  // namespace

std::span<const Target> fileTargets() {
    return kFileTargets;
}

}  // namespace kap::fuzz
