#include "engine/executor/database_check.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string_view>
#include <vector>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "base/hexadecimal.hpp"
#include "base/unicode.hpp"
#include "engine/catalog/global_tables.hpp"
#include "engine/sqlite/functions/c_border.hpp"
#include "engine/values/exact.hpp"
#include "engine/values/fine_dates.hpp"
#include "engine/values/variant.hpp"
#include "tsql/lexer.hpp"
#include "tsql/parser.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {
namespace {

using tsql::SqlType;

constexpr const char* kIsText = "kap_check_text";

// Whether a text is UTF-8, as SQL.
void isTextFunction(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
    ErrorSlot none;
    atCBorder(context, none,
              [&] { sqlite3_result_int(context, unicode::isUtf8(textBytes(values[0])) ? 1 : 0); });
}

constexpr const char* kIsSingle = "kap_check_single";

// Whether a number is one of single precision, as SQL.
void isSingleFunction(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
    const double value = sqlite3_value_double(values[0]);
    const bool fits = std::fabs(value) <= std::numeric_limits<float>::max();
    sqlite3_result_int(context,
                       fits && static_cast<double>(static_cast<float>(value)) == value ? 1 : 0);
}

constexpr const char* kIsInstant = "kap_check_instant";
constexpr const char* kIsVariant = "kap_check_variant";

// Whether a text is a sql_variant as it is stored, as SQL.
void isVariantFunction(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
    ErrorSlot none;
    atCBorder(context, none,
              [&] { sqlite3_result_int(context, isVariantText(textBytes(values[0])) ? 1 : 0); });
}

// Whether a text is a datetimeoffset of the packed type as it is stored, as SQL.
void isInstantFunction(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
    ErrorSlot none;
    atCBorder(context, none, [&] {
        const Value stored = std::string(textBytes(values[0]));
        const tsql::TypeSpec type = unpackType(sqlite3_value_int64(values[1]));
        bool whole = false;
        try {
            whole = fitInstant(instantFrom(stored, type), type, type) == stored;
        } catch (const tsql::ServerError&) {
            // What cannot be read is none.
        }
        sqlite3_result_int(context, whole ? 1 : 0);
    });
}

std::string whole(const std::string& column, const std::string& least, const std::string& most) {
    return "typeof(" + column + ") = 'integer' AND " + column + " BETWEEN " + least + " AND " +
           most;
}

std::string date(const std::string& column, const std::string& first, const std::string& behind) {
    return "typeof(" + column + ") IN ('real', 'integer') AND " + column + " >= " + first +
           " AND " + column + " < " + behind;
}

// Days are counted in so many parts, and times fall on one of them. What a sum of days and parts
// loses is far less than a thousandth of a part.
std::string inParts(const std::string& column, const char* parts) {
    const std::string counted = column + " * " + parts;
    return " AND abs(" + counted + " - round(" + counted + ")) < 0.001";
}

// Values of a fixed length are filled up to it.
std::string exactly(const std::string& column, int length) {
    return " AND length(" + column + ") = " + plain::text(length);
}

// A character beyond the first 65,536 counts for two, and SQLite counts one.
std::string exactlyUnits(const std::string& column, int length) {
    return " AND (length(" + column + ") = " + plain::text(length) + " OR (length(" + column +
           ") < " + plain::text(length) + " AND " + column +
           " GLOB '*[' || char(65536) || '-' || char(1114111) || ']*'))";
}

std::string identifierPattern() {
    std::string pattern;
    for (const int digits : {8, 4, 4, 4, 12}) {
        pattern += pattern.empty() ? "" : "-";
        for (int i = 0; i < digits; ++i) {
            pattern += "[0-9A-Fa-f]";
        }
    }
    return pattern;
}

// Of texts and binaries: the longest, where there is one.
std::string atMost(const std::string& column, int length) {
    return length <= 0 ? std::string() : " AND length(" + column + ") <= " + plain::text(length);
}

std::string decimal(const std::string& column, const tsql::TypeSpec& type) {
    const int precision = type.precision;
    if (tsql::isWideDecimal(type)) {
        const Wide most = powerOfTen(precision) - 1;
        return "typeof(" + column + ") = 'blob'" + exactly(column, tsql::kWideLength) + " AND " +
               column + " BETWEEN " + sqlLiteral(wideBytes(-most)) + " AND " +
               sqlLiteral(wideBytes(most));
    }
    if (precision <= 0 || precision > tsql::kNarrowDigits) {
        return "typeof(" + column + ") = 'integer'";
    }
    const std::string most(static_cast<std::size_t>(precision), '9');
    return whole(column, "-" + most, most);
}

// Of times in units of 100 nanoseconds: no more decimals of the second than their type has.
std::string decimals(const std::string& column, int count) {
    constexpr std::size_t kAll = 7;
    const std::string unit = "1" + std::string(kAll - static_cast<std::size_t>(count), '0');
    return " AND " + column + " % " + unit + " = 0";
}

// What holds for every value of a column but Null. Days are counted from 30 December 1899.
std::string conditionOf(const std::string& column, const tsql::TypeSpec& type) {
    switch (type.type) {
        case SqlType::Bit:
            return whole(column, "0", "1");
        case SqlType::TinyInt:
            return whole(column, "0", "255");
        case SqlType::SmallInt:
            return whole(column, "-32768", "32767");
        case SqlType::Int:
        case SqlType::SmallMoney:
            return whole(column, "-2147483648", "2147483647");
        case SqlType::BigInt:
        case SqlType::Money:
            return "typeof(" + column + ") = 'integer'";
        case SqlType::Decimal:
        case SqlType::Numeric:
            return decimal(column, type);
        case SqlType::Float:
            return "typeof(" + column + ") IN ('real', 'integer')";
        case SqlType::Real:
            return "typeof(" + column + ") IN ('real', 'integer') AND " + kIsSingle + "(" + column +
                   ")";
        case SqlType::Date:
            return date(column, "-693593", "2958466") + inParts(column, "1");
        case SqlType::DateTime:
            return date(column, "-53690", "2958466") + inParts(column, "25920000.0");
        case SqlType::SmallDateTime:
            return date(column, "2", "65538") + inParts(column, "1440.0");
        case SqlType::Char:
        case SqlType::NChar:
            return "typeof(" + column + ") = 'text' AND " + kIsText + "(" + column + ")" +
                   exactlyUnits(column, type.length);
        case SqlType::VarChar:
        case SqlType::NVarChar:
        case SqlType::Text:
        case SqlType::NText:
            return "typeof(" + column + ") = 'text' AND " + kIsText + "(" + column + ")" +
                   atMost(column, type.length);
        case SqlType::Binary:
            return "typeof(" + column + ") = 'blob'" + exactly(column, type.length);
        case SqlType::VarBinary:
        case SqlType::Image:
            return "typeof(" + column + ") = 'blob'" + atMost(column, type.length);
        case SqlType::Timestamp:
            return "typeof(" + column + ") = 'blob' AND length(" + column + ") = 8";
        case SqlType::Time:
            return whole(column, "0", "863999999999") + decimals(column, type.scale);
        case SqlType::DateTime2:
            return whole(column, "0", "3155378975999999999") + decimals(column, type.scale);
        case SqlType::DateTimeOffset:
            return "typeof(" + column + ") = 'text' AND " + kIsInstant + "(" + column + ", " +
                   plain::text(packType(type)) + ")";
        case SqlType::SqlVariant:
            return "typeof(" + column + ") = 'text' AND " + kIsVariant + "(" + column + ")";
        case SqlType::UniqueIdentifier:
            break;
    }
    return "(typeof(" + column + ") = 'text' AND " + column + " GLOB '" + identifierPattern() +
           "') OR (typeof(" + column + ") = 'blob' AND length(" + column + ") = 16)";
}

class Check {
public:
    Check(FileConnection& connection, SchemaCatalogue& catalogue, Counters& counters,
          const Finding& found)
        : connection_(connection), catalogue_(catalogue), counters_(counters), found_(found) {
        sqlite3_create_function_v2(connection_.handle(), kIsText, 1,
                                   SQLITE_UTF8 | SQLITE_DETERMINISTIC, nullptr, &isTextFunction,
                                   nullptr, nullptr, nullptr);
        sqlite3_create_function_v2(connection_.handle(), kIsSingle, 1,
                                   SQLITE_UTF8 | SQLITE_DETERMINISTIC, nullptr, &isSingleFunction,
                                   nullptr, nullptr, nullptr);
        sqlite3_create_function_v2(connection_.handle(), kIsInstant, 2,
                                   SQLITE_UTF8 | SQLITE_DETERMINISTIC, nullptr, &isInstantFunction,
                                   nullptr, nullptr, nullptr);
        sqlite3_create_function_v2(connection_.handle(), kIsVariant, 1,
                                   SQLITE_UTF8 | SQLITE_DETERMINISTIC, nullptr, &isVariantFunction,
                                   nullptr, nullptr, nullptr);
    }

    void run() {
        structure();
        references();
        for (const Table* table : catalogue_.tables()) {
            if (counters_.find(*table)) {  // nothing is known of what others made
                values(*table);
            }
        }
        counters();
        storedObjects();
    }

private:
    void structure() {
        PreparedStatement lines(connection_.handle(), "PRAGMA main.integrity_check");
        while (lines.step()) {
            checkRead(lines.text(0));
            if (lines.text(0) != "ok") {
                found_(tsql::Message::StructureFault, lines.text(0));
            }
        }
    }

    // SQLite tells a page that cannot be read among those that are damaged: "Page 20: unable to get
    // the page. error code=266".
    void checkRead(std::string_view line) const {
        constexpr std::string_view kCode = "error code=";
        for (std::size_t at = line.find(kCode); at != std::string_view::npos;
             at = line.find(kCode, at)) {
            at += kCode.size();
            const std::size_t end = line.find_first_not_of("0123456789", at);
            const auto code = plain::readInt(line.substr(at, end - at));
            if (code && (*code & 0xFF) == SQLITE_IOERR) {
                throw SqliteError(*code, sqlite3_errstr(SQLITE_IOERR),
                                  takeReadFailure(connection_.handle()));
            }
        }
    }

    void references() {
        PreparedStatement keys(connection_.handle(), "PRAGMA main.foreign_key_check");
        while (keys.step()) {
            found_(tsql::Message::ReferenceFault, "a row of table '" + keys.text(0) +
                                                      "' refers to a row of table '" +
                                                      keys.text(2) + "' that is not there.");
        }
    }

    void values(const Table& table) {
        std::vector<const Column*> columns;
        std::string sums;
        for (const Column& column : table.columns) {
            if (!column.computed) {
                const std::string name = sqlName(column.name);
                sums += (columns.empty() ? "" : ", ") + std::string("total(") + name +
                        " IS NOT NULL AND NOT (" + conditionOf(name, column.type) + "))";
                columns.push_back(&column);
            }
        }
        PreparedStatement counts(connection_.handle(),
                                 "SELECT " + sums + " FROM main." + sqlName(table.name));
        if (!counts.step()) {
            return;
        }
        for (std::size_t i = 0; i < columns.size(); ++i) {
            const std::int64_t wrong = counts.integer(static_cast<int>(i));
            if (wrong > 0) {
                found_(tsql::Message::ValueFault, plain::text(wrong) + " values of column '" +
                                                      columns[i]->name + "' of table '" +
                                                      table.name + "' are no values of type " +
                                                      tsql::typeText(columns[i]->type) + ".");
            }
        }
        const auto version = std::ranges::find_if(table.columns, &Column::isRowVersion);
        if (version != table.columns.end()) {
            rowVersions(table, *version);
        }
    }

    // None is ahead of the counter, and none stands twice.
    void rowVersions(const Table& table, const Column& column) {
        const std::string name = sqlName(column.name);
        PreparedStatement counts(
            connection_.handle(),
            "SELECT total(" + name + " > x'" +
                hex::ofNumber(static_cast<std::uint64_t>(counters_.currentRowVersion()),
                              hex::Case::Upper, 16) +
                "'), count(" + name + ") - count(DISTINCT " + name + ") FROM main." +
                sqlName(table.name));
        if (counts.step() && counts.integer(0) + counts.integer(1) > 0) {
            found_(tsql::Message::ValueFault, "row versions of table '" + table.name +
                                                  "' are ahead of their counter or there twice.");
        }
    }

    // Each counter is that of a table and of its identity column.
    void counters() {
        std::vector<const Table*> tables = catalogue_.tables();
        const auto tableOf = [&](const std::string& name) {
            const auto found = std::ranges::find(tables, name, &Table::name);
            return found == tables.end() ? nullptr : *found;
        };
        if (tables.empty()) {
            return;
        }
        PreparedStatement rows(
            connection_.handle(),
            std::string("SELECT owner, identity_column, identity_type, increment "
                        "FROM main.") +
                kCountersTable + " WHERE owner <> ''");
        while (rows.step()) {
            if (isGlobalTable(rows.text(0))) continue;
            const Table* table = tableOf(rows.text(0));
            if (table == nullptr && catalogue_.findSequence(rows.text(0)) != nullptr) continue;
            if (table == nullptr) {
                found_(tsql::Message::ReferenceFault,
                       "there is a counter of '" + rows.text(0) + "', and no such table.");
            } else if (!isCounterOf(*table, rows)) {
                found_(tsql::Message::ReferenceFault, "the counter of table '" + table->name +
                                                          "' is not that of its identity column.");
            }
        }
    }

    static bool isCounterOf(const Table& table, const PreparedStatement& row) {
        const std::string name = row.text(1);
        try {
            return name.empty() || (table.find(name) != nullptr && row.integer(3) != 0 &&
                                    tsql::parseType(row.text(2)).type != SqlType::Timestamp);
        } catch (const tsql::ServerError&) {
            return false;
        }
    }

    void storedObjects() {
        for (const StoredObject& object : catalogue_.objects()) {
            try {
                readObject(object);
            } catch (const tsql::ServerError& error) {
                found_(tsql::Message::StoredTextFault,
                       "the text of '" + object.name + "' cannot be read: " + error.message());
            } catch (const SqliteError& error) {
                found_(tsql::Message::StoredTextFault, error.what() + std::string("."));
            }
        }
    }

    // Raises an error when an object's text is not one of its kind and name, or when the table that
    // it belongs to is not there.
    void readObject(const StoredObject& object) {
        switch (object.kind) {
            case StoredKind::View:
                static_cast<void>(catalogue_.findView(object.name));
                return;
            case StoredKind::Trigger:
                requireParent(object);
                [[fallthrough]];
            case StoredKind::Procedure:
            case StoredKind::Function:
            case StoredKind::NumberedProcedure:
                static_cast<void>(catalogue_.findModule(object.kind, object.name));
                return;
            case StoredKind::Type:
                if (!isTableType(object)) static_cast<void>(tsql::parseType(object.text));
                return;
            case StoredKind::Sequence:
                static_cast<void>(sequenceOf(object));
                return;
            case StoredKind::Synonym:
                static_cast<void>(tsql::parseObjectName(object.text));
                return;
            case StoredKind::Default:
            case StoredKind::Rule:
                static_cast<void>(tsql::tokenize(object.text));
                return;
            case StoredKind::Schema:
            case StoredKind::Setting:
            case StoredKind::GlobalTable:
                return;
            case StoredKind::PrimaryKey:
            case StoredKind::UniqueKey:
            case StoredKind::DisabledConstraint:
            case StoredKind::TriggerOrder:
                requireParent(object);
                return;
        }
        throw SqliteError(SQLITE_CORRUPT, "'" + object.name + "' is of no kind", 0);
    }

    void requireParent(const StoredObject& object) {
        const auto isParent = [&](const Table* table) {
            return sameName(table->name, object.parent);
        };
        if (std::ranges::none_of(catalogue_.tables(), isParent) &&
            catalogue_.findView(object.parent) == nullptr) {
            throw SqliteError(
                SQLITE_CORRUPT,
                "'" + object.name + "' belongs to '" + object.parent + "', which is not there", 0);
        }
    }

    FileConnection& connection_;
    SchemaCatalogue& catalogue_;
    Counters& counters_;
    const Finding& found_;
};

}  // namespace

void checkDatabase(FileConnection& connection, SchemaCatalogue& catalogue, Counters& counters,
                   const Finding& found) {
    Check(connection, catalogue, counters, found).run();
}

}  // namespace kap::engine
