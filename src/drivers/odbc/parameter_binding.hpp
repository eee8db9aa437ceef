#pragma once

#include <deque>
#include <string>

#include "data/driver.hpp"
#include "drivers/odbc/odbc_connection.hpp"

namespace kap::ado::odbc {

// The parameters of one statement, bound in the order in which they are added. They must live until
// the statement has run and all of its results have been read.
class ParameterBinding {
public:
    ParameterBinding(OdbcConnection& connection, const Handle& statement)
        : connection_(connection), statement_(statement) {}

    void add(DataTypeEnum type, std::uint8_t numericScale, const Value& value);
    void add(const RequestParameter& parameter);
    // What came back for the parameter added at this place.
    [[nodiscard]] Value result(std::size_t place, const RequestParameter& parameter) const;

private:
    struct Bound {
        SQLSMALLINT direction = SQL_PARAM_INPUT;
        SQLSMALLINT form = SQL_C_WCHAR;
        SQLSMALLINT type = SQL_WVARCHAR;
        SQLULEN size = 1;
        SQLSMALLINT decimals = 0;
        SQLBIGINT whole = 0;
        double real = 0;
        unsigned char bit = 0;
        SQL_TIMESTAMP_STRUCT stamp{};
        SQL_DATE_STRUCT date{};
        std::u16string wideText;
        std::string bytes;
        void* value = nullptr;
        SQLLEN room = 0;
        SQLLEN length = 0;
    };

    static void put(Bound& bound, DataTypeEnum type, std::uint8_t scale, const Value& value);
    static void putWhole(Bound& bound, DataTypeEnum type, std::uint8_t scale, std::int64_t value);
    static void putReal(Bound& bound, DataTypeEnum type, std::uint8_t scale, double value);
    static void putText(Bound& bound, DataTypeEnum type, const std::string& value);
    static void putDigits(Bound& bound, const std::string& value);
    static void putBinary(Bound& bound, const std::string& value);
    static void putNull(Bound& bound, DataTypeEnum type, std::uint8_t scale);
    void makeRoom(Bound& bound, const RequestParameter& parameter) const;
    void bind(Bound& bound, const std::string& name);

    OdbcConnection& connection_;
    const Handle& statement_;
    std::deque<Bound> bound_;  // addresses stay as they are
};

}  // namespace kap::ado::odbc
