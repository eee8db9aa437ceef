// An ODBC driver without a server: it follows a file of traffic (see traffic.hpp), which the key
// Traffic of the connection string names, and notes beside it what it was asked.
#include <algorithm>
#include <condition_variable>
#include <cstring>
#include <fstream>
#include <map>
#include <memory>
#include <mutex>

#include "cells.hpp"

namespace {

using namespace kap::test::replay;  // the interface's functions stand outside of every namespace

struct Line {
    Traffic traffic;
    std::ofstream log;
    std::vector<Report> reports;
    bool autocommit = true;
    bool dead = false;
};

struct Bound {
    SQLSMALLINT form = 0;
    char* target = nullptr;
    SQLLEN room = 0;
    SQLLEN* lengths = nullptr;
};

struct Statement {
    Line* line = nullptr;
    std::vector<Report> reports;
    std::deque<Answer> answers;
    Answer now;
    std::string prepared;
    std::map<int, BoundParameter> parameters;
    std::map<int, Bound> bound;
    std::size_t row = 0;  // behind the current one
    std::map<int, std::size_t> offsets;
    SQLULEN rowsOfBlock = 1;
    SQLULEN* fetched = nullptr;
    SQLUSMALLINT* states = nullptr;
    std::mutex guard;
    std::condition_variable changed;
    bool cancelled = false;
};

Line& lineOf(SQLHDBC handle) {
    return *static_cast<Line*>(handle);
}
Statement& statementOf(SQLHSTMT handle) {
    return *static_cast<Statement*>(handle);
}

std::string valueOfKey(const std::string& text, const std::string& key) {
    const std::size_t at = text.find(key + "=");
    const std::size_t start = at + key.size() + 1;
    return at == std::string::npos ? "" : text.substr(start, text.find(';', start) - start);
}

// Each call that goes to the server is one line of the log; what was not expected begins with "!".
Exchange exchange(Line& line, const std::string& text, const std::vector<std::string>& given) {
    line.log << "> " << text << std::endl;
    Exchange wanted;
    if (!line.traffic.exchanges.empty()) {
        wanted = line.traffic.exchanges.front();
    }
    if (wanted.text == text && wanted.parameters == given) {
        line.traffic.exchanges.pop_front();
        return wanted;
    }
    line.log << "! expected: " << wanted.text << std::endl;
    for (const std::string& each : wanted.parameters)
        line.log << "!   ? " << each << std::endl;
    line.log << "! but came: " << text << std::endl;
    for (const std::string& each : given)
        line.log << "!   ? " << each << std::endl;
    Answer refusal;
    refusal.kind = Answer::Kind::Failure;
    refusal.reports.push_back({"HY000", 0, "[Replay][Replay]not expected: " + text});
    wanted.answers = {refusal};
    return wanted;
}

SQLRETURN codeOf(Line& line, const Answer& answer) {
    line.dead = line.dead || answer.lost;
    switch (answer.kind) {
        case Answer::Kind::Failure:
            return SQL_ERROR;
        case Answer::Kind::NoData:
            return SQL_NO_DATA;
        default:
            return answer.reports.empty() ? SQL_SUCCESS : SQL_SUCCESS_WITH_INFO;
    }
}

SQLRETURN next(Statement& statement) {
    statement.reports.clear();
    statement.row = 0;
    statement.offsets.clear();
    if (statement.answers.empty()) {
        statement.now = {};
        return SQL_NO_DATA;
    }
    statement.now = std::move(statement.answers.front());
    statement.answers.pop_front();
    statement.reports = statement.now.reports;
    if (statement.now.waits) {
        std::unique_lock lock(statement.guard);
        statement.changed.wait(lock, [&] { return statement.cancelled; });
    }
    return codeOf(*statement.line, statement.now);
}

SQLRETURN run(Statement& statement, const std::string& text) {
    std::vector<std::string> given;
    for (const auto& [number, parameter] : statement.parameters) {
        given.push_back(shownParameter(parameter));
    }
    statement.answers = exchange(*statement.line, text, given).answers;
    const SQLRETURN code = next(statement);
    return statement.now.kind == Answer::Kind::Count && code == SQL_NO_DATA ? SQL_SUCCESS : code;
}

SQLRETURN onLine(Line& line, const std::string& text) {
    line.reports.clear();
    const Exchange done = exchange(line, text, {});
    if (done.answers.empty()) {
        return SQL_SUCCESS;
    }
    line.reports = done.answers.front().reports;
    return codeOf(line, done.answers.front());
}

SQLRETURN aboutTable(SQLHSTMT handle, const char* what, const SQLWCHAR* name, SQLSMALLINT length) {
    return run(statementOf(handle),
               std::string(what) + (name == nullptr ? "" : " " + plainText(name, length)));
}

std::vector<Report>& reportsOf(SQLSMALLINT kind, SQLHANDLE handle) {
    static std::vector<Report> none;
    return kind == SQL_HANDLE_STMT  ? statementOf(handle).reports
           : kind == SQL_HANDLE_DBC ? lineOf(handle).reports
                                    : none;
}

const Column& columnOf(SQLHSTMT handle, SQLUSMALLINT number) {
    return statementOf(handle).now.columns.at(static_cast<std::size_t>(number) - 1);
}

}  // namespace

extern "C" {

SQLRETURN SQL_API SQLAllocHandle(SQLSMALLINT kind, SQLHANDLE parent, SQLHANDLE* made) {
    static int environment = 0;
    if (kind == SQL_HANDLE_ENV) {
        *made = &environment;
    } else if (kind == SQL_HANDLE_DBC) {
        *made = new Line();
    } else {
        auto* const statement = new Statement();
        statement->line = static_cast<Line*>(parent);
        *made = statement;
    }
    return SQL_SUCCESS;
}

SQLRETURN SQL_API SQLFreeHandle(SQLSMALLINT kind, SQLHANDLE handle) {
    if (kind == SQL_HANDLE_DBC) {
        delete static_cast<Line*>(handle);
    } else if (kind == SQL_HANDLE_STMT) {
        delete static_cast<Statement*>(handle);
    }
    return SQL_SUCCESS;
}

SQLRETURN SQL_API SQLSetEnvAttr(SQLHENV, SQLINTEGER, SQLPOINTER, SQLINTEGER) {
    return SQL_SUCCESS;
}

SQLRETURN SQL_API SQLDriverConnectW(SQLHDBC handle, SQLHWND, SQLWCHAR* text, SQLSMALLINT length,
                                    SQLWCHAR*, SQLSMALLINT, SQLSMALLINT*, SQLUSMALLINT) {
    const std::string file = valueOfKey(plainText(text, length), "Traffic");
    Line& line = lineOf(handle);
    line.traffic = Traffic::read(file);
    line.log.open(file + ".log", std::ios::app);
    return SQL_SUCCESS;
}

SQLRETURN SQL_API SQLDisconnect(SQLHDBC handle) {
    Line& line = lineOf(handle);
    for (const Exchange& each : line.traffic.exchanges) {
        line.log << "! never came: " << each.text << std::endl;
    }
    line.traffic.exchanges.clear();
    return SQL_SUCCESS;
}

SQLRETURN SQL_API SQLSetConnectAttrW(SQLHDBC handle, SQLINTEGER name, SQLPOINTER value,
                                     SQLINTEGER) {
    Line& line = lineOf(handle);
    if (name == SQL_ATTR_AUTOCOMMIT) {
        const bool on = reinterpret_cast<SQLULEN>(value) == SQL_AUTOCOMMIT_ON;
        if (on != line.autocommit) {
            line.autocommit = on;
            return onLine(line, on ? "!autocommit on" : "!autocommit off");
        }
    }
    return SQL_SUCCESS;
}

SQLRETURN SQL_API SQLGetConnectAttrW(SQLHDBC handle, SQLINTEGER name, SQLPOINTER value, SQLINTEGER,
                                     SQLINTEGER*) {
    if (name == SQL_ATTR_CONNECTION_DEAD) {
        *static_cast<SQLUINTEGER*>(value) = lineOf(handle).dead ? SQL_CD_TRUE : SQL_CD_FALSE;
        return SQL_SUCCESS;
    }
    return SQL_ERROR;
}

SQLRETURN SQL_API SQLGetInfoW(SQLHDBC handle, SQLUSMALLINT what, SQLPOINTER value, SQLSMALLINT room,
                              SQLSMALLINT* length) {
    const auto text = [&](const std::string& answer) {
        return putText(wideText(answer), value, room, length);
    };
    switch (what) {
        case SQL_DBMS_NAME:
            return text(lineOf(handle).traffic.server);
        case SQL_DRIVER_NAME:
            return text(lineOf(handle).traffic.driver);
        case SQL_IDENTIFIER_QUOTE_CHAR:
            return text("\"");
        case SQL_DRIVER_ODBC_VER:
            return text("03.50");
        case SQL_MAX_CONCURRENT_ACTIVITIES:
            *static_cast<SQLUSMALLINT*>(value) =
                static_cast<SQLUSMALLINT>(lineOf(handle).traffic.results);
            return SQL_SUCCESS;
        case SQL_IDENTIFIER_CASE:
            *static_cast<SQLUSMALLINT*>(value) = SQL_IC_MIXED;
            return SQL_SUCCESS;
        default:
            return SQL_ERROR;
    }
}

SQLRETURN SQL_API SQLEndTran(SQLSMALLINT, SQLHANDLE handle, SQLSMALLINT how) {
    Line& line = lineOf(handle);
    if (line.autocommit || line.dead) {
        return SQL_SUCCESS;  // there is nothing to end
    }
    return onLine(line, how == SQL_COMMIT ? "!commit" : "!rollback");
}

SQLRETURN SQL_API SQLGetDiagRecW(SQLSMALLINT kind, SQLHANDLE handle, SQLSMALLINT record,
                                 SQLWCHAR* state, SQLINTEGER* native, SQLWCHAR* text,
                                 SQLSMALLINT room, SQLSMALLINT* length) {
    const std::vector<Report>& reports = reportsOf(kind, handle);
    if (record < 1 || static_cast<std::size_t>(record) > reports.size()) {
        return SQL_NO_DATA;
    }
    const Report& report = reports[static_cast<std::size_t>(record) - 1];
    putText<char16_t, SQLSMALLINT>(wideText(report.state), state, 12, nullptr);
    if (native != nullptr) {
        *native = report.native;
    }
    const std::u16string words = wideText(report.text);
    const SQLRETURN code = putText<char16_t, SQLSMALLINT>(words, text, room * 2, nullptr);
    if (length != nullptr) {
        *length = static_cast<SQLSMALLINT>(words.size());
    }
    return code;
}

// The manager of drivers wants it to be there.
SQLRETURN SQL_API SQLGetDiagFieldW(SQLSMALLINT, SQLHANDLE, SQLSMALLINT, SQLSMALLINT, SQLPOINTER,
                                   SQLSMALLINT, SQLSMALLINT*) {
    return SQL_ERROR;
}

SQLRETURN SQL_API SQLSetStmtAttrW(SQLHSTMT handle, SQLINTEGER name, SQLPOINTER value, SQLINTEGER) {
    Statement& statement = statementOf(handle);
    switch (name) {
        case SQL_ATTR_ROW_ARRAY_SIZE:
            statement.rowsOfBlock = reinterpret_cast<SQLULEN>(value);
            return SQL_SUCCESS;
        case SQL_ATTR_ROWS_FETCHED_PTR:
            statement.fetched = static_cast<SQLULEN*>(value);
            return SQL_SUCCESS;
        case SQL_ATTR_ROW_STATUS_PTR:
            statement.states = static_cast<SQLUSMALLINT*>(value);
            return SQL_SUCCESS;
        default:
            return SQL_SUCCESS;
    }
}

SQLRETURN SQL_API SQLGetStmtAttrW(SQLHSTMT, SQLINTEGER, SQLPOINTER, SQLINTEGER, SQLINTEGER*) {
    return SQL_ERROR;
}

SQLRETURN SQL_API SQLFreeStmt(SQLHSTMT handle, SQLUSMALLINT what) {
    Statement& statement = statementOf(handle);
    if (what == SQL_UNBIND) {
        statement.bound.clear();
    } else if (what == SQL_RESET_PARAMS) {
        statement.parameters.clear();
    } else if (what == SQL_CLOSE) {
        statement.answers.clear();
        statement.now = {};
    }
    return SQL_SUCCESS;
}

SQLRETURN SQL_API SQLCloseCursor(SQLHSTMT handle) {
    return SQLFreeStmt(handle, SQL_CLOSE);
}

SQLRETURN SQL_API SQLBindParameter(SQLHSTMT handle, SQLUSMALLINT number, SQLSMALLINT,
                                   SQLSMALLINT form, SQLSMALLINT type, SQLULEN, SQLSMALLINT,
                                   SQLPOINTER value, SQLLEN, SQLLEN* length) {
    statementOf(handle).parameters[number] = {form, type, value, length};
    return SQL_SUCCESS;
}

SQLRETURN SQL_API SQLExecDirectW(SQLHSTMT handle, SQLWCHAR* text, SQLINTEGER length) {
    return run(statementOf(handle), plainText(text, length));
}

SQLRETURN SQL_API SQLPrepareW(SQLHSTMT handle, SQLWCHAR* text, SQLINTEGER length) {
    statementOf(handle).prepared = plainText(text, length);
    return SQL_SUCCESS;
}

SQLRETURN SQL_API SQLExecute(SQLHSTMT handle) {
    return run(statementOf(handle), statementOf(handle).prepared);
}

SQLRETURN SQL_API SQLTablesW(SQLHSTMT handle, SQLWCHAR*, SQLSMALLINT, SQLWCHAR*, SQLSMALLINT,
                             SQLWCHAR* name, SQLSMALLINT length, SQLWCHAR*, SQLSMALLINT) {
    return aboutTable(handle, "!tables", name, length);
}

SQLRETURN SQL_API SQLColumnsW(SQLHSTMT handle, SQLWCHAR*, SQLSMALLINT, SQLWCHAR*, SQLSMALLINT,
                              SQLWCHAR* name, SQLSMALLINT length, SQLWCHAR*, SQLSMALLINT) {
    return aboutTable(handle, "!columns", name, length);
}

SQLRETURN SQL_API SQLPrimaryKeysW(SQLHSTMT handle, SQLWCHAR*, SQLSMALLINT, SQLWCHAR*, SQLSMALLINT,
                                  SQLWCHAR* name, SQLSMALLINT length) {
    return aboutTable(handle, "!keys", name, length);
}

SQLRETURN SQL_API SQLStatisticsW(SQLHSTMT handle, SQLWCHAR*, SQLSMALLINT, SQLWCHAR*, SQLSMALLINT,
                                 SQLWCHAR* name, SQLSMALLINT length, SQLUSMALLINT, SQLUSMALLINT) {
    return aboutTable(handle, "!indexes", name, length);
}

SQLRETURN SQL_API SQLGetTypeInfoW(SQLHSTMT handle, SQLSMALLINT) {
    return run(statementOf(handle), "!types");
}

SQLRETURN SQL_API SQLNumResultCols(SQLHSTMT handle, SQLSMALLINT* count) {
    *count = static_cast<SQLSMALLINT>(statementOf(handle).now.columns.size());
    return SQL_SUCCESS;
}

SQLRETURN SQL_API SQLRowCount(SQLHSTMT handle, SQLLEN* count) {
    *count = statementOf(handle).now.count;
    return SQL_SUCCESS;
}

SQLRETURN SQL_API SQLCancel(SQLHSTMT handle) {
    Statement& statement = statementOf(handle);
    const std::lock_guard lock(statement.guard);
    statement.cancelled = true;
    statement.changed.notify_all();
    return SQL_SUCCESS;
}

SQLRETURN SQL_API SQLMoreResults(SQLHSTMT handle) {
    return next(statementOf(handle));
}

SQLRETURN SQL_API SQLDescribeColW(SQLHSTMT handle, SQLUSMALLINT number, SQLWCHAR* name,
                                  SQLSMALLINT room, SQLSMALLINT* length, SQLSMALLINT* type,
                                  SQLULEN* size, SQLSMALLINT* scale, SQLSMALLINT* nullable) {
    const Column& column = columnOf(handle, number);
    putText<char16_t, SQLSMALLINT>(wideText(column.name), name, room * 2, nullptr);
    *length = static_cast<SQLSMALLINT>(column.name.size());
    *type = typeCode(column.type);
    *size = static_cast<SQLULEN>(column.size);
    *scale = static_cast<SQLSMALLINT>(column.scale);
    *nullable = SQL_NULLABLE;
    return SQL_SUCCESS;
}

SQLRETURN SQL_API SQLColAttributeW(SQLHSTMT handle, SQLUSMALLINT number, SQLUSMALLINT what,
                                   SQLPOINTER text, SQLSMALLINT room, SQLSMALLINT* length,
                                   SQLLEN* value) {
    if (what == SQL_DESC_TYPE_NAME) {
        return putText(wideText(columnOf(handle, number).type), text, room, length);
    }
    if (text != nullptr && room > 1) {
        return putText(std::u16string(), text, room, length);
    }
    if (value != nullptr) {
        *value = 0;
    }
    return SQL_SUCCESS;
}

SQLRETURN SQL_API SQLBindCol(SQLHSTMT handle, SQLUSMALLINT number, SQLSMALLINT form,
                             SQLPOINTER target, SQLLEN room, SQLLEN* lengths) {
    statementOf(handle).bound[number] = {form, static_cast<char*>(target), room, lengths};
    return SQL_SUCCESS;
}

SQLRETURN SQL_API SQLFetch(SQLHSTMT handle) {
    Statement& statement = statementOf(handle);
    const std::size_t first = statement.row;
    const std::size_t last = std::min(statement.now.rows.size(), first + statement.rowsOfBlock);
    if (statement.fetched != nullptr) {
        *statement.fetched = last - first;
    }
    if (statement.now.breaks && last - first < statement.rowsOfBlock) {
        statement.reports = {*statement.now.breaks};
        statement.line->dead = true;
        return SQL_ERROR;
    }
    if (first == last) {
        return SQL_NO_DATA;
    }
    statement.offsets.clear();
    for (std::size_t row = first; row < last; ++row) {
        const auto place = static_cast<SQLLEN>(row - first);
        for (const auto& [number, bound] : statement.bound) {
            std::size_t offset = 0;
            (void)putCell(statement.now.rows[row].at(static_cast<std::size_t>(number) - 1),
                          bound.form, bound.target + place * bound.room, bound.room,
                          bound.lengths + place, offset);
        }
        if (statement.states != nullptr) {
            statement.states[place] = SQL_ROW_SUCCESS;
        }
    }
    statement.row = last;
    return SQL_SUCCESS;
}

SQLRETURN SQL_API SQLGetData(SQLHSTMT handle, SQLUSMALLINT number, SQLSMALLINT form,
                             SQLPOINTER target, SQLLEN room, SQLLEN* length) {
    Statement& statement = statementOf(handle);
    const auto& row = statement.now.rows.at(statement.row - 1);
    return putCell(row.at(static_cast<std::size_t>(number) - 1), form, target, room, length,
                   statement.offsets[number]);
}

}  // extern "C"
